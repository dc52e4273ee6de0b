#include "desktop/charts/trend_library.h"

#include <QLibrary>

namespace pelvan::desktop {

TrendWindow make_trend_window(const QString& directory, Trend& trend, QWidget* parent) {
    using Maker = QWidget* (*)(Trend*, QWidget*);
    QLibrary library(directory + QStringLiteral("/libpelvan7_trend"));
    const auto make = reinterpret_cast<Maker>(library.resolve("pelvan_make_trend_window"));
    if (make == nullptr) return {nullptr, library.errorString()};
    return {make(&trend, parent), {}};
}

} // namespace pelvan::desktop
