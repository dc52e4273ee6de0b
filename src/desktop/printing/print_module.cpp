#include "desktop/printing/print_module.h"

#include "desktop/system/module.h"

namespace pelvan::desktop {

namespace {

constexpr char kUnavailable[] = "Printing is not available: ";

}

QString print_with_module(const QString& directory, const HistoryDocument& document,
                          const PrintRequest& request) {
    const ModuleEntry entry = find_in_module(directory, "pelvan7_print", kPrintFunction);
    if (entry.address == nullptr) return kUnavailable + entry.error;
    const auto print = reinterpret_cast<PrintFunction>(entry.address);
    if (!print(document, request))
        return QStringLiteral("The history could not be printed: the printer or the file refused.");
    return {};
}

QString print_with_module(const QString& directory, const ProfileDocument& document,
                          const PaintCurve& paint_curve, const PrintRequest& request) {
    const ModuleEntry entry = find_in_module(directory, "pelvan7_print", kPrintProfileFunction);
    if (entry.address == nullptr) return kUnavailable + entry.error;
    const auto print = reinterpret_cast<PrintProfileFunction>(entry.address);
    if (!print(document, paint_curve, request))
        return QStringLiteral("The profile could not be printed: the printer or the file refused.");
    return {};
}

} // namespace pelvan::desktop
