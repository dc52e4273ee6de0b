// The way to the trend window, whose code lies in a library that is loaded when it is first asked
// for. Nothing of Qt Charts is in the program itself.
#pragma once

#include <QString>

#include "logging/trend.h"

class QWidget;

namespace pelvan::desktop {

struct TrendWindow {
    QWidget* window = nullptr; // null when the library is missing
    QString error;
};

/// Loads the library from the directory and makes a window of the readings, which it follows while
/// they come in. `trend` must outlive the window.
[[nodiscard]] TrendWindow make_trend_window(const QString& directory, Trend& trend,
                                            QWidget* parent);

} // namespace pelvan::desktop
