// The grammar of sectioned key=value files, on text in memory: finding a value, and the text with a
// value set. Files, defaults and integers are left to sectioned_file.cpp.
//
// A section begins with a line "[name]"; only the first section of a name counts, and in it only
// the first key of a name. A line that begins with ";" is a comment. Lines end in LF or CR LF.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace pelvan {

/// The value without surrounding spaces and without one pair of quotes round it; nothing when the
/// section or the key is missing.
[[nodiscard]] std::optional<std::string> find_value(std::string_view text, std::string_view section,
                                                    std::string_view key);

/// The text with the key created or replaced; every other line stays byte for byte.
[[nodiscard]] std::string with_value(std::string_view text, std::string_view section,
                                     std::string_view key, std::string_view value);

} // namespace pelvan
