#include "desktop/charts/trend_chart.h"

#include <QEvent>
#include <QPainter>
#include <algorithm>
#include <cmath>

#include "desktop/charts/trend_line.h"
#include "desktop/charts/trend_look.h"

namespace pelvan::desktop {
namespace {

constexpr std::size_t kPointBudget = 10000; // over all curves: more only slows the picture
constexpr std::size_t kMinBuckets = 50;
constexpr int kMinWidth = 100;
constexpr std::size_t kMaxBroadCurves = 8; // as many are drawn with a broad pen
constexpr double kMargin = 4;
constexpr double kSpot = 4; // a reading
constexpr double kMark = 7; // a reading at the cursor

} // namespace

TrendChart::TrendChart() {
    setObjectName(QStringLiteral("trend_chart"));
    setAccessibleName(tr("Trend"));
    // No tool tip: it would cover the curves whenever the cursor rests.
    setAccessibleDescription(tr("Plus and minus zoom the time and with Ctrl the values, Shift and "
                                "the arrows pan, the arrows move the cursor, Home fits "
                                "everything, End follows the newest readings."));
    setFocusPolicy(Qt::StrongFocus);
    setMouseTracking(true);
    setBackgroundRole(QPalette::Base);
    setAutoFillBackground(true);
    setMinimumSize(kMinWidth, kMinWidth);
}

void TrendChart::draw(const Trend& trend, const TrendSpan& visible, const std::vector<int>& rows,
                      int current) {
    visible_ = visible;
    current_ = current;
    marks_.clear(); // their scales may go
    read(trend, rows);
    lay_out();
}

void TrendChart::read(const Trend& trend, const std::vector<int>& rows) {
    const auto pixels = static_cast<std::size_t>(std::max(width(), kMinWidth));
    const std::size_t buckets =
        std::clamp(kPointBudget / 2 / std::max<std::size_t>(rows.size(), 1), kMinBuckets, pixels);
    curves_.clear();
    ranges_.clear();
    for (const int row : rows) {
        Curve curve{row, trend.points(row, visible_, buckets)};
        CurveRange range{row, trend.label(row).unit, {}, trend.extent(row)};
        for (const TrendPoint& point : curve.points)
            range.visible.include(point.value);
        if (range.ever.low > range.ever.high) continue; // never read: there is nothing to draw
        curves_.push_back(std::move(curve));
        ranges_.push_back(std::move(range));
    }
    scales_.update(ranges_, TrendAxes::parts_for(height(), QFontMetricsF(font(), this)));
}

void TrendChart::rescale() {
    if (scales_.fits())
        scales_.update(ranges_, TrendAxes::parts_for(height(), QFontMetricsF(font(), this)));
    lay_out();
}

void TrendChart::lay_out() {
    axes_.lay_out(QRectF(rect()).adjusted(kMargin, kMargin, -kMargin, -kMargin), scales_, current_,
                  visible_, QFontMetricsF(font(), this));
    picture_ = QPixmap();
    update();
}

QPointF TrendChart::place_of(const TrendScale& scale, const TrendPoint& point) const {
    const QRectF& area = plot();
    return {area.left() + (point.time_ms - visible_.from_ms) / (visible_.to_ms - visible_.from_ms) *
                              area.width(),
            area.bottom() - scale.share_of(point.value) * area.height()};
}

void TrendChart::render() {
    picture_ = QPixmap(size() * devicePixelRatioF());
    picture_.setDevicePixelRatio(devicePixelRatioF());
    picture_.fill(palette().color(QPalette::Base));
    QPainter painter(&picture_);
    painter.setFont(font());
    if (curves_.empty()) {
        painter.setPen(palette().color(QPalette::Text));
        painter.drawText(rect(), Qt::AlignCenter | Qt::TextWordWrap,
                         tr("No curve yet: load a set in Data Logging (Ctrl+O) and start logging "
                            "(F5), or tick a row in the table."));
        return;
    }
    axes_.paint(painter, palette());
    painter.setClipRect(plot());
    painter.setRenderHint(QPainter::Antialiasing, curves_.size() <= kMaxBroadCurves);
    for (const Curve& curve : curves_)
        if (curve.row != current_) paint_curve(painter, curve);
    for (const Curve& curve : curves_)
        if (curve.row == current_) paint_curve(painter, curve); // above the others
}

void TrendChart::paint_curve(QPainter& painter, const Curve& curve) const {
    const QColor color = curve_color(curve.row, is_dark(palette()));
    // A thin pen is quicker, and among many curves it shows more.
    const double thin = curves_.size() <= kMaxBroadCurves ? 1.5 : 1;
    painter.setPen(QPen(color, curve.row == current_ ? thin + 1 : thin));
    painter.setBrush(color);
    const TrendScale& scale = scales_.scale_of(curve.row);
    TrendLine line(painter, plot());
    // Few readings are seen one by one.
    const double room = plot().width() / static_cast<double>(curve.points.size() + 1);
    line.spot_every_point(room > 3 * kSpot ? kSpot : 0);
    for (const TrendPoint& point : curve.points) {
        if (std::isnan(point.value))
            line.end(kSpot);
        else
            line.add(place_of(scale, point));
    }
    line.end(kSpot);
}

void TrendChart::paintEvent(QPaintEvent*) {
    if (size().isEmpty()) return;
    if (picture_.isNull() || picture_.devicePixelRatio() != devicePixelRatioF()) render();
    QPainter painter(this);
    painter.drawPixmap(0, 0, picture_);
    const QColor text = palette().color(QPalette::Text);
    if (hasFocus()) {
        painter.setPen(QPen(palette().color(QPalette::Highlight), 1));
        painter.drawRect(rect().adjusted(0, 0, -1, -1));
    }
    if (curves_.empty()) return;
    painter.setClipRect(plot().adjusted(-1, -1, 1, 1));
    if (has_cursor_) {
        const double x = place_of({}, {cursor_ms_, 0}).x();
        painter.setPen(QPen(text, 1, Qt::DashLine));
        painter.drawLine(QPointF(x, plot().top()), QPointF(x, plot().bottom()));
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(QPen(palette().color(QPalette::Base), 1));
        for (const Mark& mark : marks_) {
            painter.setBrush(curve_color(mark.row, is_dark(palette())));
            painter.drawEllipse(place_of(scales_.scale_of(mark.row), {cursor_ms_, mark.value}),
                                kMark / 2, kMark / 2);
        }
    }
    if (frame_.isEmpty()) return;
    QColor wash = palette().color(QPalette::Highlight);
    painter.setPen(wash);
    wash.setAlphaF(0.2F);
    painter.setBrush(wash);
    painter.drawRect(frame_);
}

void TrendChart::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange || event->type() == QEvent::FontChange) lay_out();
}

void TrendChart::show_cursor(double time_ms, std::vector<Mark> marks) {
    has_cursor_ = true;
    cursor_ms_ = time_ms;
    // A row that was read for the first time since is drawn with the next picture.
    std::erase_if(marks, [this](const Mark& mark) {
        return std::none_of(curves_.begin(), curves_.end(),
                            [&](const Curve& curve) { return curve.row == mark.row; });
    });
    marks_ = std::move(marks);
    update();
}

void TrendChart::hide_cursor() {
    has_cursor_ = false;
    update();
}

void TrendChart::show_frame(const QRectF& frame) {
    frame_ = frame;
    update();
}

double TrendChart::across(double x) const {
    return (x - plot().left()) / std::max(plot().width(), 1.0);
}

double TrendChart::up(double y) const {
    return (plot().bottom() - y) / std::max(plot().height(), 1.0);
}

} // namespace pelvan::desktop
