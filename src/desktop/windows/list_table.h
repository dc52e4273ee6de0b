// A list as a table: the lines are the control's, the columns are cut out of them.
#pragma once

#include <QStringList>

#include "desktop/bindings/bind.h"

namespace pelvan::desktop {

/// Cuts a line into as many texts as there are titles.
using LineCutter = std::vector<std::string> (*)(const std::string& line);

/// A table of the lines of `list`, bound to it both ways as a list would be; the column `widest`
/// takes the room that the others leave.
[[nodiscard]] QTableView* make_list_table(const BindContext& context, ListBox& list,
                                          const QStringList& titles, LineCutter cut, int widest);

} // namespace pelvan::desktop
