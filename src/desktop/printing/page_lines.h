// The document as lines of a fixed number of characters: two columns side by side, long lines going
// on below themselves in their column.
#pragma once

#include <QStringList>

#include "console/history_document.h"

namespace pelvan::desktop {

/// `width` is what fits on the paper, in characters; the first line holds the columns' titles.
[[nodiscard]] QStringList page_lines(const HistoryDocument& document, int width);

} // namespace pelvan::desktop
