#include "desktop/charts/trend_curves.h"

#include <QChart>
#include <QLineSeries>
#include <QPen>
#include <algorithm>
#include <cmath>

namespace pelvan::desktop {
namespace {

constexpr std::size_t kMaxPieces = 400;    // over all curves: each is an object of the chart
constexpr std::size_t kMinPieces = 4;      // of one curve
constexpr std::size_t kMaxBroadCurves = 8; // as many are drawn with a broad pen

/// Positions of the gaps that break the curve, in order; the last position is the points' end.
std::vector<qsizetype> breaks_of(const QList<QPointF>& points, std::size_t max_breaks) {
    std::vector<qsizetype> gaps;
    for (qsizetype i = 1; i + 1 < points.size(); ++i)
        if (std::isnan(points[i].y())) gaps.push_back(i);
    if (gaps.size() > max_breaks) {
        const auto width = [&](qsizetype i) { return points[i + 1].x() - points[i - 1].x(); };
        const auto end = gaps.begin() + static_cast<std::ptrdiff_t>(max_breaks);
        std::nth_element(gaps.begin(), end, gaps.end(),
                         [&](qsizetype a, qsizetype b) { return width(a) > width(b); });
        gaps.erase(end, gaps.end());
        std::sort(gaps.begin(), gaps.end());
    }
    gaps.push_back(points.size());
    return gaps;
}

QList<QPointF> with_values(const QList<QPointF>& points, qsizetype first, qsizetype end) {
    QList<QPointF> out;
    out.reserve(end - first + 1);
    for (qsizetype i = first; i < end; ++i)
        if (!std::isnan(points[i].y())) out.append(points[i]);
    // A line needs two ends, also the line of a single reading.
    if (out.size() == 1) out.append(out.front());
    return out;
}

} // namespace

QColor TrendCurves::color(int row) {
    // Golden-angle steps round the colour circle: neighbours in the legend differ.
    return QColor::fromHsv(row * 137 % 360, 220, row % 2 == 0 ? 190 : 140);
}

void TrendCurves::keep(const std::vector<int>& rows) {
    std::erase_if(curves_, [&](const auto& entry) {
        if (std::binary_search(rows.begin(), rows.end(), entry.first)) return false;
        for (QLineSeries* series : entry.second) {
            chart_->removeSeries(series);
            delete series;
        }
        return true;
    });
    for (const int row : rows)
        curves_[row];
    // A thin pen is quicker, and among many curves it shows more.
    const int width = rows.size() <= kMaxBroadCurves ? 2 : 1;
    if (width == pen_width_) return;
    pen_width_ = width;
    for (const auto& [row, pieces] : curves_)
        for (QLineSeries* series : pieces)
            series->setPen(QPen(color(row), pen_width_));
}

void TrendCurves::clear() {
    for (const auto& [row, pieces] : curves_)
        for (QLineSeries* series : pieces)
            if (series->count() > 0) series->replace(QList<QPointF>());
}

void TrendCurves::draw(int row, const QList<QPointF>& points) {
    const std::size_t max_pieces =
        std::max(kMinPieces, kMaxPieces / std::max<std::size_t>(curves_.size(), 1));
    qsizetype first = 0;
    std::size_t number = 0;
    for (const qsizetype end : breaks_of(points, max_pieces - 1)) {
        piece(row, number++)->replace(with_values(points, first, end));
        first = end;
    }
}

QLineSeries* TrendCurves::piece(int row, std::size_t number) {
    Pieces& pieces = curves_[row];
    while (pieces.size() <= number) {
        auto* series = new QLineSeries(chart_);
        chart_->addSeries(series);
        series->setPen(QPen(color(row), pen_width_));
        series->attachAxis(times_);
        series->attachAxis(values_);
        pieces.push_back(series);
    }
    return pieces[number];
}

} // namespace pelvan::desktop
