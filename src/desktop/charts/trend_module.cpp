// Entry point of the trend library.
#include <QtGlobal>

#include "desktop/charts/trend_window.h"

extern "C" Q_DECL_EXPORT QWidget* pelvan_make_trend_window(pelvan::Trend* trend, QWidget* parent) {
    return new pelvan::desktop::TrendView(*trend, parent);
}
