// The trend's picture: curves over a line of calendar time, each on its scale, and the cursor. What
// is in sight, and what the keys and the mouse do, is TrendView's. The curves are kept as a
// picture, so that moving the cursor draws none of them again.
#pragma once

#include <QPixmap>
#include <QWidget>
#include <vector>

#include "desktop/charts/trend_axes.h"
#include "logging/trend.h"

namespace pelvan::desktop {

class TrendChart : public QWidget {
  public:
    TrendChart();

    /// Draws the rows' readings in the span; `current` is drawn broader, and its scale has an axis.
    void draw(const Trend& trend, const TrendSpan& visible, const std::vector<int>& rows,
              int current);
    /// Draws what was read again, after the scales were moved.
    void rescale();
    [[nodiscard]] TrendScales& scales() { return scales_; }

    struct Mark {
        int row = 0;
        double value = 0;
    };
    /// Puts the cursor at a moment, with a spot on each curve.
    void show_cursor(double time_ms, std::vector<Mark> marks);
    void hide_cursor();
    /// A frame that is being dragged, in the widget's coordinates; an empty one is not seen.
    void show_frame(const QRectF& frame);

    /// Shares of the plot's width from its left edge, and of its height from its lower one.
    [[nodiscard]] double across(double x) const;
    [[nodiscard]] double up(double y) const;
    [[nodiscard]] const QRectF& plot() const { return axes_.plot(); }

  protected:
    void paintEvent(QPaintEvent* event) override;
    void changeEvent(QEvent* event) override;

  private:
    struct Curve {
        int row = 0;
        std::vector<TrendPoint> points;
    };
    void read(const Trend& trend, const std::vector<int>& rows);
    void lay_out();
    void render();
    void paint_curve(QPainter& painter, const Curve& curve) const;
    [[nodiscard]] QPointF place_of(const TrendScale& scale, const TrendPoint& point) const;

    TrendScales scales_;
    TrendAxes axes_;
    TrendSpan visible_;
    std::vector<Curve> curves_;
    std::vector<CurveRange> ranges_;
    int current_ = -1;
    QPixmap picture_; // null: to be drawn again
    bool has_cursor_ = false;
    double cursor_ms_ = 0;
    std::vector<Mark> marks_;
    QRectF frame_;
};

} // namespace pelvan::desktop
