// What the printing module offers for profiles: the curve above the table of steps, on as many
// pages as it takes.
#pragma once

#include <QRectF>
#include <functional>

#include "desktop/printing/print_history.h"
#include "profile/window/profile_document.h"

class QPainter;

namespace pelvan::desktop {

using PaintCurve = std::function<void(QPainter& painter, const QRectF& target)>;

/// Found in the module by `kPrintProfileFunction`. False when the printer or the file refused.
using PrintProfileFunction = bool (*)(const ProfileDocument&, const PaintCurve&,
                                      const PrintRequest&);
inline constexpr char kPrintProfileFunction[] = "pelvan_print_profile";

} // namespace pelvan::desktop
