// One curve on its way to the screen: points become lines as long as they are in sight, whatever
// far places a zoom puts the others at, and a reading that stands alone becomes a spot.
#pragma once

#include <QPolygonF>
#include <QRectF>

class QPainter;

namespace pelvan::desktop {

class TrendLine {
  public:
    /// Paints with the painter's pen and brush what lies in the area.
    TrendLine(QPainter& painter, const QRectF& area);

    /// Marks each point with a spot of this size, 0 for none.
    void spot_every_point(double size) { spot_ = size; }
    void add(const QPointF& point);
    /// The points before a gap are complete; a single one becomes a spot of this size.
    void end(double spot);

  private:
    void flush();
    void paint_spot(const QPointF& point, double size);

    QPainter& painter_;
    QRectF area_; // a little more than is in sight
    double spot_ = 0;
    int count_ = 0; // points since the last gap
    QPointF last_;
    QPolygonF run_; // points in sight, joined
};

} // namespace pelvan::desktop
