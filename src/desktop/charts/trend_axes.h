// Axes and grid of the trend: lays them out round the plot and paints them. Which scales there are
// and what they reach over is TrendScales' business.
#pragma once

#include <QRectF>
#include <vector>

#include "logging/trend_scales.h"

class QFontMetricsF;
class QPainter;
class QPalette;

namespace pelvan::desktop {

class TrendAxes {
  public:
    /// Axes at most, the other scales have none.
    static constexpr std::size_t kMost = 4;

    /// Round parts that scales of this height have room for.
    [[nodiscard]] static int parts_for(double height, const QFontMetricsF& metrics);

    /// Makes room for the axes in the area; `row` is the one whose scale has an axis in any case.
    void lay_out(const QRectF& area, const TrendScales& scales, int row, const TrendSpan& visible,
                 const QFontMetricsF& metrics);
    [[nodiscard]] const QRectF& plot() const { return plot_; }

    void paint(QPainter& painter, const QPalette& palette) const;

  private:
    struct ValueAxis {
        TrendScale scale;
        std::vector<AxisTick> ticks;
        double width = 0;
        double x = 0; // of its line
        bool left = true;
    };
    void paint_times(QPainter& painter, const QPalette& palette) const;
    void paint_axis(QPainter& painter, const QPalette& palette, const ValueAxis& axis) const;
    void paint_head(QPainter& painter, const ValueAxis& axis, bool dark) const;
    [[nodiscard]] double x_at(double time_ms) const;
    [[nodiscard]] double y_at(const ValueAxis& axis, double value) const;

    QRectF plot_;
    TrendSpan visible_;
    std::vector<ValueAxis> axes_;
    std::vector<AxisTick> times_;
};

} // namespace pelvan::desktop
