#include "desktop/charts/trend_look.h"

#include <QPalette>

namespace pelvan::desktop {

bool is_dark(const QPalette& palette) {
    return palette.color(QPalette::Base).lightness() < palette.color(QPalette::Text).lightness();
}

QColor curve_color(int row, bool dark) {
    // Golden-angle steps round the colour circle.
    const int hue = (row * 137 + 210) % 360;
    const bool even = row % 2 == 0;
    if (dark) return QColor::fromHsv(hue, even ? 150 : 100, even ? 255 : 225);
    return QColor::fromHsv(hue, 230, even ? 190 : 140);
}

QColor mixed(const QColor& from, const QColor& to, double part) {
    const auto blend = [part](int one, int two) { return qRound(one + part * (two - one)); };
    return {blend(from.red(), to.red()), blend(from.green(), to.green()),
            blend(from.blue(), to.blue())};
}

} // namespace pelvan::desktop
