// The trend: the readings that are kept as curves, live while logging runs. It reads `Trend` and
// changes nothing. Everything can be done with the keyboard: + and - zoom, Shift and the arrows
// pan, the arrows move the cursor, Home shows everything, End follows the newest readings.
#pragma once

#include <QTimer>
#include <QWidget>
#include <functional>

#include "desktop/charts/trend_chart.h"
#include "desktop/charts/trend_legend.h"
#include "desktop/charts/visible_range.h"

class QBoxLayout;
class QLabel;

namespace pelvan::desktop {

class TrendView : public QWidget {
  public:
    TrendView(Trend& trend, QWidget* parent);

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

  private:
    void lay_out();
    [[nodiscard]] QBoxLayout* make_buttons();
    /// Draws again when passes came in.
    void look_for_news();
    /// Draws what is visible again.
    void refresh();
    void zoom(double factor, double anchor_ms);
    void pan(double share);
    void show_all();
    void follow();
    void set_cursor(double time_ms);
    void show_cursor();
    bool key_pressed(int key, bool shift);
    bool mouse_used(QEvent* event);
    void ask_and_save(bool png);
    [[nodiscard]] double time_at(double x) const;

    Trend& trend_;
    VisibleRange range_;
    TrendChart* chart_;
    TrendLegend* legend_;
    QLabel* cursor_time_;
    QTimer timer_;
    double cursor_ms_ = 0;
    double drag_from_ = -1; // x of a mouse button that is held; below 0 when none is
    unsigned long seen_passes_ = 0;
};

} // namespace pelvan::desktop
