// Small operations on texts that several folders need. ASCII only: bytes from 0x80 up pass
// unchanged.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace pelvan {

/// The text without spaces at both ends (spaces only: a tab is content).
[[nodiscard]] std::string trim(std::string_view text);

/// ASCII letters in upper case.
[[nodiscard]] std::string upper_case(std::string_view text);

/// The text itself, or as much of it as `length` bytes hold with "..." behind; a character of
/// several bytes is not cut.
[[nodiscard]] std::string shortened(std::string_view text, std::size_t length);

/// The pieces between the separators, empty ones included; an empty text is one empty piece.
[[nodiscard]] std::vector<std::string> split(std::string_view text, char separator);

} // namespace pelvan
