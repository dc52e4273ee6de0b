// Prints histories and profiles through the printing module, which is loaded when it is first
// needed.
#pragma once

#include <QString>

#include "desktop/printing/print_history.h"
#include "desktop/printing/print_profile.h"

namespace pelvan::desktop {

/// `directory` holds the module. Empty when all went well (or was cancelled), else what went wrong
/// in words.
[[nodiscard]] QString print_with_module(const QString& directory, const HistoryDocument& document,
                                        const PrintRequest& request);
[[nodiscard]] QString print_with_module(const QString& directory, const ProfileDocument& document,
                                        const PaintCurve& paint_curve, const PrintRequest& request);

} // namespace pelvan::desktop
