// What keeps a log set from being polled: a text in a row that would be read as another number than
// it says, and a log file that is one of the program's own. Set files may hold any text.
#pragma once

#include <string>
#include <vector>

#include "logging/log_set.h"

namespace pelvan {

/// What is wrong with the row's numbers first, without the row's number; empty when each of them is
/// read as it stands. Nothing is said of numbers that are out of range: they are refused, or
/// answered, as what they are. An empty column of decimals means none.
[[nodiscard]] std::string row_objection(const LogSetRow& row);

/// The sentence that lines of data must not go into this file because it is the set file or the
/// configuration file, under whatever name; else empty.
[[nodiscard]] std::string log_file_objection(const std::string& log_file,
                                             const std::string& set_file,
                                             const std::string& configuration);

/// A sentence for each row in use that has one, in the order of the rows.
[[nodiscard]] std::vector<std::string> row_objections(const LogSet& set);

} // namespace pelvan
