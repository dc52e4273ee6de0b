// The trend: the readings that are kept as curves, live while logging runs. It reads `Trend` and
// changes nothing. Everything can be done with the keyboard: + and - zoom, Shift and the arrows
// pan, the arrows move the cursor, Home shows everything, End follows the newest readings.
#pragma once

#include <QTimer>
#include <QWidget>
#include <memory>
#include <set>
#include <vector>

#include "desktop/charts/trend_curves.h"
#include "logging/trend.h"

class QChart;
class QChartView;
class QDateTimeAxis;
class QGraphicsLineItem;
class QLabel;
class QTableWidget;
class QTableWidgetItem;
class QValueAxis;

namespace pelvan::desktop {

class TrendView : public QWidget {
  public:
    TrendView(Trend& trend, QWidget* parent);

    /// Draws what is visible anew.
    void refresh();
    /// Factor below 1 zooms in; the moment under `anchor_ms` stays where it is.
    void zoom(double factor, double anchor_ms);
    void pan(double share);
    void show_all();
    void follow();
    void set_cursor(double time_ms);

    [[nodiscard]] const TrendSpan& visible_span() const { return visible_; }

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

  private:
    void build();
    void add_button(QLayout& layout, const QString& text, const QString& tip,
                    const std::function<void()>& action);
    void look_for_news();
    void build_legend();
    void show_rows();
    void draw_curves();
    void take_tick(const QTableWidgetItem& item);
    void scale_values(double low, double high);
    void show_cursor();
    bool key_pressed(int key, bool shift);
    bool mouse_used(QEvent* event);
    void ask_and_save(bool png);
    [[nodiscard]] double time_at(double x) const;

    Trend& trend_;
    QChart* chart_ = nullptr;
    QChartView* view_ = nullptr;
    QDateTimeAxis* times_ = nullptr;
    QValueAxis* values_ = nullptr;
    QGraphicsLineItem* line_ = nullptr;
    QLabel* cursor_time_ = nullptr;
    QTableWidget* legend_ = nullptr;
    std::unique_ptr<TrendCurves> curves_;
    std::vector<int> shown_; // row of each line of the legend
    std::set<int> hidden_;
    QTimer timer_;
    TrendSpan visible_;
    double cursor_ms_ = 0;
    double drag_from_ = -1; // x of a mouse button that is held; below 0 when none is
    bool whole_ = true;     // the whole span stays visible as it grows
    bool following_ = false;
    unsigned long seen_passes_ = 0;
};

} // namespace pelvan::desktop
