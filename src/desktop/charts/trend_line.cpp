#include "desktop/charts/trend_line.h"

#include <QPainter>
#include <optional>

namespace pelvan::desktop {
namespace {

constexpr double kBeyond = 20; // pixels: what a pen may be broad

/// The part of a line that lies in the area.
std::optional<QLineF> clipped(const QPointF& from, const QPointF& to, const QRectF& area) {
    double first = 0;
    double last = 1;
    const QPointF way = to - from;
    const auto cut = [&](double step, double room) {
        if (step == 0) return room >= 0;
        const double at = room / step;
        if (step > 0)
            last = std::min(last, at);
        else
            first = std::max(first, at);
        return first <= last;
    };
    if (!cut(-way.x(), from.x() - area.left()) || !cut(way.x(), area.right() - from.x()) ||
        !cut(-way.y(), from.y() - area.top()) || !cut(way.y(), area.bottom() - from.y()))
        return std::nullopt;
    return QLineF(from + first * way, from + last * way);
}

} // namespace

TrendLine::TrendLine(QPainter& painter, const QRectF& area)
    : painter_(painter), area_(area.adjusted(-kBeyond, -kBeyond, kBeyond, kBeyond)) {}

void TrendLine::add(const QPointF& point) {
    if (++count_ > 1) {
        if (area_.contains(last_) && area_.contains(point)) {
            if (run_.isEmpty()) run_.append(last_);
            run_.append(point);
        } else {
            flush();
            if (const auto part = clipped(last_, point, area_)) painter_.drawLine(*part);
        }
    }
    last_ = point;
    if (spot_ > 0) paint_spot(point, spot_);
}

void TrendLine::end(double spot) {
    flush();
    if (count_ == 1 && spot_ == 0) paint_spot(last_, spot);
    count_ = 0;
}

void TrendLine::flush() {
    if (run_.size() > 1) painter_.drawPolyline(run_);
    run_.clear();
}

void TrendLine::paint_spot(const QPointF& point, double size) {
    if (area_.contains(point)) painter_.drawEllipse(point, size / 2, size / 2);
}

} // namespace pelvan::desktop
