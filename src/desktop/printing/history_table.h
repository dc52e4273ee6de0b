// The history as a document: a table with commands and responses side by side, whose head line
// stands on every page. Long lines go on below themselves in their column.
#pragma once

#include <QPaintDevice>
#include <QSizeF>
#include <QTextDocument>
#include <memory>

#include "console/history_document.h"

namespace pelvan::desktop {

[[nodiscard]] QFont print_font();

/// Laid out in pages of `page` device pixels.
[[nodiscard]] std::unique_ptr<QTextDocument>
history_table(const HistoryDocument& document, QPaintDevice& device, const QSizeF& page);

} // namespace pelvan::desktop
