// The trend as files: the picture with a legend of every row, and the readings as CSV.
#pragma once

#include <QString>

#include "logging/trend.h"

class QPixmap;
class QTableWidget;
class QWidget;

namespace pelvan::desktop {

/// The chart with the legend's lines (colour, name, value) and a title below it, as PNG. False when
/// the file could not be written.
[[nodiscard]] bool save_trend_picture(const QPixmap& chart, const QTableWidget& legend,
                                      const QString& title, const QString& path);

/// Every pass as CSV, with progress and Cancel when that takes more than a moment; logging goes on
/// meanwhile. Cancelled or failed, no file is left. False when it could not be written.
[[nodiscard]] bool save_trend_csv(const Trend& trend, const QString& path, QWidget* parent);

} // namespace pelvan::desktop
