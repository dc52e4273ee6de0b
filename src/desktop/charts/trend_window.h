// The trend: the readings that are kept as curves, live while logging runs. It reads `Trend` and
// changes nothing. Everything can be done with the keyboard: + and - zoom the time and with Ctrl
// the values, Shift and the arrows pan, the arrows move the cursor, Home fits everything, End
// follows the newest readings.
#pragma once

#include <QTimer>
#include <QWidget>
#include <functional>

#include "desktop/charts/trend_chart.h"
#include "desktop/charts/trend_legend.h"
#include "desktop/charts/visible_range.h"

class QBoxLayout;
class QComboBox;
class QLabel;

namespace pelvan::desktop {

class TrendView : public QWidget {
  public:
    TrendView(Trend& trend, QWidget* parent);

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    /// What a held mouse button does.
    enum class Drag { None, Pan, Frame };

    void lay_out();
    [[nodiscard]] QBoxLayout* make_buttons();
    /// Draws again when something came in.
    void look_for_news();
    /// Draws what is visible again.
    void refresh();
    void zoom(double factor, double anchor_ms);
    void pan(double share);
    void zoom_values(double factor, double share);
    void pan_values(double share);
    void zoom_into(const QRectF& frame);
    void show_all();
    void follow();
    void set_cursor(double time_ms);
    void show_cursor();
    bool key_pressed(int key, Qt::KeyboardModifiers modifiers);
    bool arrow_pressed(int key, bool shift);
    bool mouse_used(QEvent* event);
    bool wheel_turned(const QWheelEvent& wheel);
    bool mouse_moved(const QMouseEvent& mouse);
    bool mouse_released();
    void ask_and_save(bool png);
    [[nodiscard]] double time_at(double x) const;
    /// A moment in sight that the keys zoom about.
    [[nodiscard]] double anchor() const;

    Trend& trend_;
    VisibleRange range_;
    TrendChart* chart_;
    TrendLegend* legend_;
    QLabel* cursor_time_;
    QComboBox* scales_;
    QTimer timer_;
    double cursor_ms_ = 0; // 0: at the newest reading
    Drag drag_ = Drag::None;
    QPointF drag_from_;
    QPointF dragged_to_;
    unsigned long seen_changes_ = 0;
};

} // namespace pelvan::desktop
