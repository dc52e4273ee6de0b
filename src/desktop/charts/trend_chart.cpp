#include "desktop/charts/trend_chart.h"

#include <QChart>
#include <QDateTime>
#include <QDateTimeAxis>
#include <QGraphicsLineItem>
#include <QPen>
#include <QValueAxis>
#include <algorithm>
#include <cmath>
#include <limits>

namespace pelvan::desktop {
namespace {

constexpr std::size_t kPointBudget = 10000; // over all curves: more only slows the picture
constexpr std::size_t kMinBuckets = 50;
constexpr int kMinWidth = 100;

/// Calendar time as the chart counts it. The chart shows the machine's local time.
qint64 chart_time(double calendar_ms) {
    const QDateTime as_utc = QDateTime::fromMSecsSinceEpoch(std::llround(calendar_ms), Qt::UTC);
    return QDateTime(as_utc.date(), as_utc.time(), Qt::LocalTime).toMSecsSinceEpoch();
}

/// The lowest and the highest value of what is drawn.
struct Extent {
    double low = std::numeric_limits<double>::max();
    double high = std::numeric_limits<double>::lowest();
    void include(double value) {
        if (std::isnan(value)) return;
        low = std::min(low, value);
        high = std::max(high, value);
    }
};

QList<QPointF> curve_of(const std::vector<TrendPoint>& points, double shift, Extent& extent) {
    QList<QPointF> curve;
    curve.reserve(static_cast<qsizetype>(points.size()));
    for (const TrendPoint& point : points) {
        curve.append({point.time_ms + shift, point.value});
        extent.include(point.value);
    }
    return curve;
}

} // namespace

TrendChart::TrendChart()
    : QChartView(new QChart), times_(new QDateTimeAxis(chart())), values_(new QValueAxis(chart())),
      cursor_(new QGraphicsLineItem(chart())),
      curves_(std::make_unique<TrendCurves>(chart(), times_, values_)) {
    setObjectName(QStringLiteral("trend_chart"));
    setAccessibleName(tr("Trend"));
    setToolTip(tr("Wheel or + - zoom, drag or Shift+arrows pan, arrows move the cursor, "
                  "Home shows everything, End follows."));
    setFocusPolicy(Qt::StrongFocus);
    setMouseTracking(true);
    viewport()->setMouseTracking(true);
    chart()->setMargins({4, 4, 4, 4});
    chart()->legend()->hide(); // the table beside it names every row
    times_->setFormat(QStringLiteral("HH:mm:ss"));
    chart()->addAxis(times_, Qt::AlignBottom);
    chart()->addAxis(values_, Qt::AlignLeft);
    cursor_->setPen(QPen(Qt::darkGray, 1, Qt::DashLine));
    cursor_->setZValue(10);
}

void TrendChart::draw(const Trend& trend, const TrendSpan& visible, const std::vector<int>& rows,
                      const std::vector<bool>& hidden) {
    const auto pixels = static_cast<std::size_t>(std::max(width(), kMinWidth));
    const std::size_t buckets =
        std::clamp(kPointBudget / 2 / std::max<std::size_t>(rows.size(), 1), kMinBuckets, pixels);
    const double shift = static_cast<double>(chart_time(visible.to_ms)) - std::round(visible.to_ms);
    Extent extent;
    std::vector<QList<QPointF>> curves(rows.size());
    for (std::size_t i = 0; i < rows.size(); ++i)
        if (!hidden[i])
            curves[i] = curve_of(trend.points(rows[i], visible, buckets), shift, extent);
    curves_->keep(rows);
    curves_->clear();
    times_->setRange(QDateTime::fromMSecsSinceEpoch(chart_time(visible.from_ms)),
                     QDateTime::fromMSecsSinceEpoch(chart_time(visible.to_ms)));
    scale_values(extent.low, extent.high);
    for (std::size_t i = 0; i < rows.size(); ++i)
        curves_->draw(rows[i], curves[i]);
}

void TrendChart::scale_values(double low, double high) {
    if (low > high) low = high = 0;
    const double margin = high > low ? (high - low) * 0.05 : std::max(std::abs(high) * 0.1, 1.0);
    values_->setRange(low - margin, high + margin);
}

void TrendChart::show_cursor(double share) {
    const QRectF plot = chart()->plotArea();
    const double x = plot.left() + share * plot.width();
    cursor_->setVisible(share >= 0 && share <= 1);
    cursor_->setLine(x, plot.top(), x, plot.bottom());
}

void TrendChart::hide_cursor() {
    cursor_->setVisible(false);
}

double TrendChart::plot_width() const {
    return std::max(chart()->plotArea().width(), 1.0);
}

double TrendChart::share_at(double x) const {
    return (x - chart()->plotArea().left()) / plot_width();
}

} // namespace pelvan::desktop
