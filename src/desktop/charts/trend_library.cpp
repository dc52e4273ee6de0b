#include "desktop/charts/trend_library.h"

#include "desktop/system/module.h"

namespace pelvan::desktop {

TrendWindow make_trend_window(const QString& directory, Trend& trend, QWidget* parent) {
    using Maker = QWidget* (*)(Trend*, QWidget*);
    const ModuleEntry entry =
        find_in_module(directory, "libpelvan7_trend", "pelvan_make_trend_window");
    if (entry.address == nullptr) return {nullptr, entry.error};
    return {reinterpret_cast<Maker>(entry.address)(&trend, parent), {}};
}

} // namespace pelvan::desktop
