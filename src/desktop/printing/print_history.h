// What the printing module offers: a library of its own that is loaded when somebody prints,
// because the toolkit's printing would cost every start of the program memory and time.
#pragma once

#include <QString>

#include "console/history_document.h"

class QWidget;

namespace pelvan::desktop {

enum class PrintAction { Print, Preview, WritePdf };

struct PrintRequest {
    PrintAction action = PrintAction::Print;
    QWidget* parent = nullptr; // of the dialogs
    QString pdf_file;          // for WritePdf, which asks nothing
};

/// The module's one function, found by `kPrintFunction`. False when the printer or the file
/// refused.
using PrintFunction = bool (*)(const HistoryDocument&, const PrintRequest&);
inline constexpr char kPrintFunction[] = "pelvan_print_history";

} // namespace pelvan::desktop
