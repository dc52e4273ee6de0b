// The picture of a run: the programmed curve, what the controller said its set points and process
// values were, where the line was lost, and a marker of now.
#pragma once

#include "desktop/profiles/profile_chart.h"

namespace pelvan::desktop {

class RunView : public ProfileChart {
  public:
    /// The desk must outlive the view.
    explicit RunView(RunDesk& desk);

    /// The picture as it stands as PNG; false when the file could not be written.
    [[nodiscard]] bool save(const QString& path);

  protected:
    void drawForeground(QPainter* painter, const QRectF& rect) override;
    void showEvent(QShowEvent* event) override;

  private:
    void draw();
    void draw_points();
    void paint_losses(QPainter& painter) const;

    RunDesk& desk_;
    std::vector<QLineSeries*> programmed_;
    std::vector<QLineSeries*> set_points_;
    std::vector<QLineSeries*> process_;
    Subscription changes_;
};

} // namespace pelvan::desktop
