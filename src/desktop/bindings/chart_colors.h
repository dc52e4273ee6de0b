// The colours of a chart, from the palette of the widget that shows it: light, dark, or paper.
#pragma once

#include <QAbstractAxis>
#include <QChart>
#include <QLegend>
#include <QPalette>

namespace pelvan::desktop {

inline bool is_dark(const QPalette& palette) {
    constexpr int kMiddle = 128;
    return palette.color(QPalette::Base).lightness() < kMiddle;
}

/// Of pictures that leave the screen, whatever its theme is.
inline QPalette paper_palette() {
    QPalette palette(Qt::white);
    palette.setColor(QPalette::Base, Qt::white);
    for (const auto role : {QPalette::Text, QPalette::WindowText})
        palette.setColor(role, Qt::black);
    return palette;
}

/// Everything but the curves. To be called again when the palette has changed or an axis was added.
inline void dress_chart(QChart& chart, const QPalette& palette) {
    constexpr int kGridAlpha = 40;
    constexpr int kLineAlpha = 110;
    const QColor text = palette.color(QPalette::Text);
    const auto faint = [&text](int alpha) {
        QColor color = text;
        color.setAlpha(alpha);
        return color;
    };
    chart.setBackgroundBrush(palette.brush(QPalette::Base));
    chart.setTitleBrush(text);
    chart.legend()->setLabelColor(text);
    for (QAbstractAxis* axis : chart.axes()) {
        axis->setLabelsColor(text);
        axis->setTitleBrush(text);
        axis->setGridLineColor(faint(kGridAlpha));
        axis->setLinePenColor(faint(kLineAlpha));
    }
}

} // namespace pelvan::desktop
