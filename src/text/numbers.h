// Numbers to text and back, by the rules that the classic runtime gave every box, file and frame of
// the program. Nothing here knows what a number stands for; range checks belong to the callers.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace pelvan {

/// The number that a text begins with, 0 when it begins with none.
///
/// Spaces and tabs before it are skipped; then a sign, digits with at most one point, and an
/// exponent are taken as far as they go ("12abc" is 12, "-.5x" is -0.5, "none" is 0).
[[nodiscard]] double leading_number(std::string_view text);

/// Whether the whole text, spaces round it aside, is one decimal number.
[[nodiscard]] bool is_numeric(std::string_view text);

/// The whole text as a decimal number from `min` to `max`: digits, and a minus sign where `min` is
/// below 0; nothing for anything else, spaces round it included.
[[nodiscard]] std::optional<long> whole_number(std::string_view text, long min, long max);

/// Plain decimal text: no exponent, no leading space, at most 15 significant digits ("0.5", "-3").
[[nodiscard]] std::string plain_number(double value);

/// As `plain_number`, with the 7 significant digits that a single-precision number holds.
[[nodiscard]] std::string plain_single(double value);

/// As `plain_number`, with a space instead of a missing minus sign (" 100", "-3").
[[nodiscard]] std::string signed_number(double value);

/// "1 step", "3 steps", for things whose plural is regular.
[[nodiscard]] std::string count_text(std::size_t count, const std::string& thing);

/// Nearest integer, halves to the even neighbour (2.5 is 2, 3.5 is 4).
[[nodiscard]] double round_half_even(double value);

/// The number written in hexadecimal digits (spaces round it allowed, "&H" or "0x" before it too);
/// nothing when there is no digit, another character, or more than eight digits.
[[nodiscard]] std::optional<unsigned long> hex_number(std::string_view text);

/// Upper-case hexadecimal with at least `digits` digits.
[[nodiscard]] std::string hex_text(unsigned long value, int digits);

} // namespace pelvan
