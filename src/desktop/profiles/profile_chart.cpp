#include "desktop/profiles/profile_chart.h"

#include <QChart>
#include <QLegend>
#include <QLegendMarker>
#include <QLineSeries>
#include <QPainter>
#include <QValueAxis>
#include <algorithm>
#include <bit>
#include <cmath>

#include "desktop/bindings/chart_colors.h"
#include "desktop/bindings/qt_text.h"

namespace pelvan::desktop {
namespace {

constexpr double kMinute = 60;
constexpr double kHour = 3600;
constexpr int kMargin = 4;
constexpr double kLegendShare = 0.8;
constexpr int kLane = 9; // pixels of an event output
constexpr int kMaxEvents = 16;
constexpr double kRoom = 0.06; // above and below the curves

/// What the line of time counts, so that its numbers stay short.
double unit_for(double to_s) {
    constexpr double kMaxMinutes = 180;
    if (to_s <= 3 * kMinute) return 1;
    return to_s <= kMaxMinutes * kMinute ? kMinute : kHour;
}

QString unit_name(double unit_s) {
    if (unit_s == 1) return QStringLiteral("seconds");
    return unit_s == kMinute ? QStringLiteral("minutes") : QStringLiteral("hours");
}

constexpr int kParts = 6;       // of an axis, about
constexpr int kLinesAround = 6; // of text, above and below the plot
constexpr int kLabelRoom = 10;  // beside the height of a number

/// 1, 2 or 5 times a power of ten, so that there are some so many of them in the range.
double nice_interval(double range, int parts = kParts) {
    const double wanted = range / parts;
    const double power = std::pow(10, std::floor(std::log10(wanted)));
    for (const double factor : {1.0, 2.0, 5.0})
        if (wanted <= factor * power) return factor * power;
    return 10 * power;
}

void grow(double value, double& low, double& high) {
    if (std::isnan(value)) return;
    low = std::min(low, value);
    high = std::max(high, value);
}

int events_of(const std::vector<CurvePiece>& pieces) {
    int all = 0;
    for (const CurvePiece& piece : pieces)
        all |= piece.events;
    return all;
}

} // namespace

ProfileChart::ProfileChart()
    : QChartView(new QChart), times_(new QValueAxis(chart())), values_(new QValueAxis(chart())) {
    setFocusPolicy(Qt::StrongFocus);
    setRenderHint(QPainter::Antialiasing);
    setViewportUpdateMode(QGraphicsView::FullViewportUpdate);
    chart()->setMargins({kMargin, kMargin, kMargin, kMargin});
    chart()->setBackgroundRoundness(0);
    chart()->legend()->setAlignment(Qt::AlignTop);
    QFont small = chart()->legend()->font();
    small.setPointSizeF(kLegendShare * small.pointSizeF());
    chart()->legend()->setFont(small); // six names beside one another
    chart()->addAxis(times_, Qt::AlignBottom);
    chart()->addAxis(values_, Qt::AlignLeft);
    for (QValueAxis* axis : {times_, values_})
        axis->setTickType(QValueAxis::TicksDynamic);
    // Short heads: the picture has to fit beside a table.
    for (QValueAxis* axis : {times_, values_})
        axis->setLabelFormat(QStringLiteral("%.5g"));
    dress();
}

void ProfileChart::changeEvent(QEvent* event) {
    QChartView::changeEvent(event);
    if (event->type() == QEvent::PaletteChange) dress();
}

void ProfileChart::dress() {
    dress_chart(*chart(), palette());
    for (const Line& line : dressed_)
        dress(line);
}

void ProfileChart::dress(const Line& line) const {
    QColor shade = color(line.set_point, line.process);
    shade.setAlpha(line.alpha);
    line.series->setPen(QPen(shade, line.width));
}

QColor ProfileChart::color(int set_point, bool process) const {
    if (is_dark(palette())) {
        if (set_point == 0) return process ? QColor(190, 220, 255) : QColor(85, 155, 255);
        return process ? QColor(255, 205, 165) : QColor(255, 105, 90);
    }
    if (set_point == 0) return process ? QColor(90, 165, 230) : QColor(0, 60, 140);
    return process ? QColor(240, 150, 90) : QColor(165, 30, 20);
}

QLineSeries* ProfileChart::add_line(int set_point, bool process, int width, int alpha) {
    auto* line = new QLineSeries(chart());
    chart()->addSeries(line);
    dressed_.push_back({line, set_point, process, width, alpha});
    dress(dressed_.back());
    line->attachAxis(times_);
    line->attachAxis(values_);
    line->setVisible(false);
    return line;
}

void ProfileChart::show_line(QLineSeries& line, const QList<QPointF>& points, const QString& name) {
    line.replace(points);
    if (line.name() != name) line.setName(name);
    line.setVisible(!points.isEmpty());
}

void ProfileChart::show_set_points(const CurvePicture& picture,
                                   const std::vector<QLineSeries*>& lines) {
    for (std::size_t i = 0; i < lines.size(); ++i) {
        QList<QPointF> points;
        for (const CurvePiece& piece : picture.pieces) {
            if (std::isnan(piece.from[i]) || std::isnan(piece.to[i])) continue;
            const QPointF from(piece.from_s / unit_s_, piece.from[i]);
            if (points.isEmpty() || points.back() != from) points.append(from);
            points.append({piece.to_s / unit_s_, piece.to[i]});
        }
        show_line(*lines[i], points, to_qt(picture.names[i]));
    }
}

void ProfileChart::include(const CurvePicture& picture, double& to_s, double& low, double& high) {
    for (const CurvePiece& piece : picture.pieces) {
        to_s = std::max(to_s, piece.to_s);
        for (int i = 0; i < kSetPoints; ++i) {
            const auto at = static_cast<std::size_t>(i);
            grow(piece.from[at], low, high);
            grow(piece.to[at], low, high);
        }
    }
}

void ProfileChart::fit(double to_s, double low, double high) {
    if (low > high) low = high = 0;
    const double room = high > low ? kRoom * (high - low) : 1;
    low = low >= 0 ? std::max(low - room, 0.0) : low - room;
    high += room;
    if (to_s <= 0) to_s = kMinute;
    unit_s_ = unit_for(to_s);
    times_->setTitleText(unit_name(unit_s_));
    times_->setTickInterval(nice_interval(to_s / unit_s_));
    times_->setRange(0, to_s / unit_s_);
    low_ = low;
    high_ = high;
    scale_values();
}

/// A number that lacks the room for its height is three dots: on a small screen there are fewer.
void ProfileChart::scale_values() {
    const int line = fontMetrics().height();
    const int room = height() - kLinesAround * line - events_ * kLane;
    const int most_labels = std::max(room / (line + kLabelRoom), 2);
    for (int parts = kParts; parts > 0; --parts) {
        const double step = nice_interval(high_ - low_, parts);
        const double first = std::floor(low_ / step);
        const double last = std::ceil(high_ / step);
        if (last - first + 1 > most_labels && parts > 1) continue;
        values_->setTickInterval(step);
        values_->setRange(first * step, last * step);
        return;
    }
}

void ProfileChart::resizeEvent(QResizeEvent* event) {
    QChartView::resizeEvent(event);
    scale_values();
}

QRectF ProfileChart::plot() const {
    return chart()->plotArea();
}

QPointF ProfileChart::place_of(double time_s, double value) const {
    const QRectF area = plot();
    const double across = time_s / unit_s_ / std::max(times_->max(), 1e-9);
    const double up = (value - values_->min()) / std::max(values_->max() - values_->min(), 1e-9);
    return {area.left() + across * area.width(), area.bottom() - up * area.height()};
}

double ProfileChart::time_at(double scene_x) const {
    const QRectF area = plot();
    return (scene_x - area.left()) / std::max(area.width(), 1.0) * times_->max() * unit_s_;
}

double ProfileChart::value_at(double scene_y) const {
    const QRectF area = plot();
    const double up = (area.bottom() - scene_y) / std::max(area.height(), 1.0);
    return values_->min() + up * (values_->max() - values_->min());
}

void ProfileChart::reserve_events(const std::vector<CurvePiece>& pieces) {
    const int events = events_of(pieces);
    if (std::popcount(static_cast<unsigned>(events)) !=
        std::popcount(static_cast<unsigned>(events_))) {
        const int lanes = std::popcount(static_cast<unsigned>(events));
        chart()->setMargins({kMargin, kMargin, kMargin, kMargin + lanes * kLane});
    }
    events_ = events;
}

void ProfileChart::paint_events(QPainter& painter, const std::vector<CurvePiece>& pieces) const {
    const QRectF area = plot();
    double top = chart()->geometry().bottom() - kMargin -
                 kLane * std::popcount(static_cast<unsigned>(events_));
    QFont font = painter.font();
    font.setPixelSize(kLane);
    painter.setFont(font);
    for (int event = 0; event < kMaxEvents; ++event) {
        if ((events_ >> event & 1) == 0) continue;
        painter.setPen(palette().color(QPalette::Text));
        painter.drawText(QRectF(0, top, area.left() - kMargin, kLane),
                         Qt::AlignRight | Qt::AlignVCenter, tr("event %1").arg(event + 1));
        for (const CurvePiece& piece : pieces) {
            if ((piece.events >> event & 1) == 0) continue;
            const double left = place_of(piece.from_s, 0).x();
            const double right = std::min(place_of(piece.to_s, 0).x(), area.right());
            painter.fillRect(QRectF(left, top + 1, std::max(right - left, 1.0), kLane - 2),
                             QColor(70, 140, 70));
        }
        top += kLane;
    }
}

} // namespace pelvan::desktop
