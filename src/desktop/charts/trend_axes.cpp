#include "desktop/charts/trend_axes.h"

#include <QFontMetricsF>
#include <QPainter>
#include <QPalette>
#include <algorithm>

#include "desktop/charts/trend_look.h"

namespace pelvan::desktop {
namespace {

constexpr double kTick = 4;
constexpr double kGap = 6;
constexpr double kSwatch = 7; // a curve of the axis, above it
constexpr int kMostSwatches = 6;
constexpr double kGridShare = 0.15; // of the way from the ground to the text
constexpr double kLineShare = 0.6;

QString shown(const std::string& text) {
    return QString::fromStdString(text);
}

} // namespace

int TrendAxes::parts_for(double height, const QFontMetricsF& metrics) {
    constexpr double kLinesApart = 3;
    return std::clamp(static_cast<int>(height / (kLinesApart * metrics.height())), 2, 10);
}

void TrendAxes::lay_out(const QRectF& area, const TrendScales& scales, int row,
                        const TrendSpan& visible, const QFontMetricsF& metrics) {
    visible_ = visible;
    axes_.clear();
    const double line = metrics.height();
    plot_ = area.adjusted(0, line + kGap, 0, -(2 * line + kTick + 2));
    for (const std::size_t position : scales.shown(row, kMost)) {
        ValueAxis axis;
        axis.scale = scales.scales()[position];
        axis.left = axes_.size() % 2 == 0;
        axis.ticks = value_ticks(axis.scale.range, parts_for(plot_.height(), metrics));
        double width = metrics.horizontalAdvance(shown(axis.scale.unit));
        for (const AxisTick& tick : axis.ticks)
            width = std::max(width, metrics.horizontalAdvance(shown(tick.text)));
        axis.width = width + kTick + 2 * kGap;
        axes_.push_back(std::move(axis));
    }
    double left = area.left() + (axes_.empty() ? kGap : 0);
    double right = area.right() - kGap;
    // The first one stands beside the plot, a third one outside of it.
    for (auto axis = axes_.rbegin(); axis != axes_.rend(); ++axis)
        (axis->left ? left : right) += axis->left ? axis->width : -axis->width;
    plot_.setLeft(left);
    plot_.setRight(std::max(right, left + 1));
    plot_.setHeight(std::max(plot_.height(), 1.0));
    for (ValueAxis& axis : axes_) {
        axis.x = axis.left ? left : right;
        (axis.left ? left : right) += axis.left ? -axis.width : axis.width;
    }
    const double label = metrics.horizontalAdvance(QStringLiteral("2026-11-15")) + 3 * kGap;
    times_ = time_ticks(visible, std::max(1, static_cast<int>(plot_.width() / label)));
}

double TrendAxes::x_at(double time_ms) const {
    return plot_.left() +
           (time_ms - visible_.from_ms) / (visible_.to_ms - visible_.from_ms) * plot_.width();
}

double TrendAxes::y_at(const ValueAxis& axis, double value) const {
    return plot_.bottom() - axis.scale.share_of(value) * plot_.height();
}

void TrendAxes::paint(QPainter& painter, const QPalette& palette) const {
    const QColor ground = palette.color(QPalette::Base);
    const QColor text = palette.color(QPalette::Text);
    painter.setPen(QPen(mixed(ground, text, kGridShare), 0));
    if (!axes_.empty())
        for (const AxisTick& tick : axes_.front().ticks) {
            const double y = y_at(axes_.front(), tick.at);
            painter.drawLine(QPointF(plot_.left(), y), QPointF(plot_.right(), y));
        }
    paint_times(painter, palette);
    for (const ValueAxis& axis : axes_)
        paint_axis(painter, palette, axis);
    painter.setPen(QPen(mixed(ground, text, kLineShare), 0));
    painter.setBrush(Qt::NoBrush);
    painter.drawRect(plot_);
}

void TrendAxes::paint_times(QPainter& painter, const QPalette& palette) const {
    const QColor ground = palette.color(QPalette::Base);
    const QColor text = palette.color(QPalette::Text);
    const double line = painter.fontMetrics().height();
    for (const AxisTick& tick : times_) {
        const double x = x_at(tick.at);
        painter.setPen(QPen(mixed(ground, text, kGridShare), 0));
        painter.drawLine(QPointF(x, plot_.top()), QPointF(x, plot_.bottom()));
        painter.setPen(text);
        painter.drawLine(QPointF(x, plot_.bottom()), QPointF(x, plot_.bottom() + kTick));
        const auto write = [&](const std::string& label, double top) {
            const double width = painter.fontMetrics().horizontalAdvance(shown(label)) + 2;
            painter.drawText(QRectF(x - width / 2, top, width, line), Qt::AlignCenter,
                             shown(label));
        };
        write(tick.text, plot_.bottom() + kTick);
        write(tick.date, plot_.bottom() + kTick + line);
    }
}

void TrendAxes::paint_axis(QPainter& painter, const QPalette& palette,
                           const ValueAxis& axis) const {
    const bool dark = is_dark(palette);
    const bool single = axis.scale.rows.size() == 1;
    painter.setPen(single ? curve_color(axis.scale.rows.front(), dark)
                          : palette.color(QPalette::Text));
    const double outwards = axis.left ? -1 : 1;
    const double line = painter.fontMetrics().height();
    painter.drawLine(QPointF(axis.x, plot_.top()), QPointF(axis.x, plot_.bottom()));
    for (const AxisTick& tick : axis.ticks) {
        const double y = y_at(axis, tick.at);
        painter.drawLine(QPointF(axis.x, y), QPointF(axis.x + outwards * kTick, y));
        const double room = axis.width - kTick - kGap;
        const double from = axis.left ? axis.x - kTick - 2 - room : axis.x + kTick + 2;
        painter.drawText(
            QRectF(from, y - line / 2, room, line),
            static_cast<int>((axis.left ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignVCenter),
            shown(tick.text));
    }
    paint_head(painter, axis, dark);
}

/// The unit, or a spot of each curve's colour where they have none in common.
void TrendAxes::paint_head(QPainter& painter, const ValueAxis& axis, bool dark) const {
    const double line = painter.fontMetrics().height();
    const double top = plot_.top() - line - kGap / 2;
    if (!axis.scale.unit.empty()) {
        const double from = axis.left ? axis.x - axis.width + kGap : axis.x;
        painter.drawText(QRectF(from, top, axis.width - kGap, line),
                         axis.left ? Qt::AlignRight : Qt::AlignLeft, shown(axis.scale.unit));
        return;
    }
    const int spots = std::min(static_cast<int>(axis.scale.rows.size()), kMostSwatches);
    const double step = std::min(kSwatch + 1, (axis.width - kGap) / std::max(spots, 1));
    const double from = axis.left ? axis.x - spots * step : axis.x;
    for (int i = 0; i < spots; ++i)
        painter.fillRect(QRectF(from + i * step, top + (line - kSwatch) / 2, step - 1, kSwatch),
                         curve_color(axis.scale.rows[static_cast<std::size_t>(i)], dark));
}

} // namespace pelvan::desktop
