// Bytes of a line or a file as text that a person can read: one function a rule. Numbers as text
// are numbers.h's.
#pragma once

#include <string>
#include <string_view>

namespace pelvan {

/// Two hexadecimal digits a byte with a space between: "01 FF".
[[nodiscard]] std::string hex_bytes(std::string_view bytes);

/// Decimal numbers with a space between: "1 255".
[[nodiscard]] std::string decimal_bytes(std::string_view bytes);

/// As it stands, but every byte that is no printable ASCII character as "<0D>".
[[nodiscard]] std::string ascii_in_brackets(std::string_view bytes);

/// As it stands, but ASCII control characters as "<0D>"; bytes from 0x80 up pass unchanged.
[[nodiscard]] std::string controls_in_brackets(std::string_view bytes);

/// As it stands, but every byte that is no printable ASCII character as "\x0D": what a terminal
/// may be given, whatever the bytes are.
[[nodiscard]] std::string ascii_with_escapes(std::string_view bytes);

} // namespace pelvan
