#include "desktop/printing/print_module.h"

#include <QLibrary>

namespace pelvan::desktop {

QString print_with_module(const QString& directory, const HistoryDocument& document,
                          const PrintRequest& request) {
    // Stays loaded for the next time.
    QLibrary module(directory + QStringLiteral("/pelvan7_print"));
    // NOLINTNEXTLINE(bugprone-casting-through-void): the way a library's functions are had
    const auto print = reinterpret_cast<PrintFunction>(module.resolve(kPrintFunction));
    if (print == nullptr)
        return QStringLiteral("Printing is not available: ") + module.errorString();
    if (!print(document, request))
        return QStringLiteral("The history could not be printed: the printer or the file refused.");
    return {};
}

} // namespace pelvan::desktop
