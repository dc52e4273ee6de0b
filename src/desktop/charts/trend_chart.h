// The trend's picture: curves over a line of local time, a scale that fits them, and the line of
// the cursor. What is in sight, and what the keys and the mouse do, is TrendView's.
#pragma once

#include <QChartView>
#include <memory>
#include <vector>

#include "desktop/charts/trend_curves.h"
#include "logging/trend.h"

class QDateTimeAxis;
class QGraphicsLineItem;
class QValueAxis;

namespace pelvan::desktop {

class TrendChart : public QChartView {
  public:
    TrendChart();

    /// Draws the rows' readings in the span; a row in `hidden` keeps its colour and is left out.
    void draw(const Trend& trend, const TrendSpan& visible, const std::vector<int>& rows,
              const std::vector<bool>& hidden);
    /// Puts the cursor at a share of the width; outside 0 to 1 it is not to be seen.
    void show_cursor(double share);
    void hide_cursor();

    /// The share of the width at which a point of the view lies.
    [[nodiscard]] double share_at(double x) const;
    [[nodiscard]] double plot_width() const;

  private:
    void scale_values(double low, double high);

    QDateTimeAxis* times_;
    QValueAxis* values_;
    QGraphicsLineItem* cursor_;
    std::unique_ptr<TrendCurves> curves_;
};

} // namespace pelvan::desktop
