// The list of errors of a transfer as a table: the lines are the control's, the columns are cut out
// of them.
#pragma once

#include <QStringList>

#include "desktop/bindings/bind.h"

namespace pelvan::desktop {

/// A table of the lines of `list`, bound to it both ways as a list would be.
[[nodiscard]] QTableView* make_error_table(const BindContext& context, ListBox& list,
                                           const QStringList& titles);

} // namespace pelvan::desktop
