// Colours of the trend, from the palette of the desktop: dark on light or light on dark.
#pragma once

#include <QColor>

class QPalette;

namespace pelvan::desktop {

[[nodiscard]] bool is_dark(const QPalette& palette);

/// Of a row's curve; neighbours in the legend differ.
[[nodiscard]] QColor curve_color(int row, bool dark);

/// Part of the way from one colour to another.
[[nodiscard]] QColor mixed(const QColor& from, const QColor& to, double part);

} // namespace pelvan::desktop
