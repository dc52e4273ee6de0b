// From the decoder's text to the text of a row's Value column: exception replies, 32-bit values and
// scaling. Texts in, texts out.
#pragma once

#include <string>
#include <string_view>

namespace pelvan {

/// The number that a decoder's text with "Error:" in it stands for: for an exception of function 3
/// -32000 minus the exception code, for other functions what the same formula gives.
[[nodiscard]] std::string exception_value(const std::string& text);

/// Whether the text begins with a number, spaces before it aside.
[[nodiscard]] bool begins_with_number(std::string_view text);

/// The 32-bit number of two words "high low", each signed; any other text comes back unchanged. 6
/// (overflow) when the number does not fit 32 bits.
[[nodiscard]] std::string join_32_bit(const std::string& text);

/// The number in the text divided by ten to the power of `decimals`, a space instead of a missing
/// sign. A text that begins with no number comes back as it is: what is wrong with a reply must not
/// look like a reading of 0. 6 (overflow) when the result is no number.
[[nodiscard]] std::string scaled_value(const std::string& text, double decimals);

/// A register number for a log line: seven digits, as single precision holds them.
[[nodiscard]] std::string signed_single(float value);

/// Whether a decoder's text is that of an exception reply.
[[nodiscard]] bool is_exception_text(std::string_view text);

} // namespace pelvan
