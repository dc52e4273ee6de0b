// The curve of the profile that is edited: the chosen step lit, with its end to take hold of. With
// the mouse an end is dragged; with the keys Page Up and Page Down choose a step, the arrows move
// its end (with Shift in small steps), and the space bar says which set point they move.
#pragma once

#include <optional>

#include "desktop/bindings/binding.h"
#include "desktop/profiles/profile_chart.h"

namespace pelvan::desktop {

class CurveView : public ProfileChart {
  public:
    /// The desk must outlive the view.
    CurveView(CurveDesk& desk, EventRunner run);

    /// The curve as it stands, without what is only for editing.
    void paint_plain(QPainter& painter, const QRectF& target);

  protected:
    void drawForeground(QPainter* painter, const QRectF& rect) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

  private:
    struct Handle {
        std::size_t piece = 0;
        int set_point = 0;
    };

    void draw();
    void paint_chosen(QPainter& painter) const;
    void paint_handles(QPainter& painter) const;
    [[nodiscard]] bool is_chosen(const CurvePiece& piece) const;
    [[nodiscard]] QPointF place_of_end(const Handle& handle) const;
    [[nodiscard]] std::vector<Handle> handles() const;
    [[nodiscard]] std::optional<Handle> handle_at(const QPointF& scene) const;
    [[nodiscard]] std::optional<Handle> chosen_handle() const;
    void choose_at(const QPointF& scene);
    void choose_beside(int distance);
    [[nodiscard]] bool move_end(int key, bool fine);
    void show_cursor(const QPointF& scene);

    CurveDesk& desk_;
    EventRunner run_;
    std::vector<QLineSeries*> lines_;
    std::optional<Handle> dragged_;
    int keys_move_ = 0; // set point
    bool plain_ = false;
    Subscription changes_;
    Subscription choices_;
};

} // namespace pelvan::desktop
