#include "logging/row_value.h"

#include <algorithm>
#include <cmath>

#include "platform/run_time_error.h"
#include "text/numbers.h"
#include "text/strings.h"

namespace pelvan {
namespace {

constexpr std::string_view kErrorMark = "Error:";
/// "Exception Error: 131 2": the function byte stands at position 18, the code at position 22.
constexpr std::size_t kFunctionAt = 17;
constexpr std::size_t kFunctionLength = 3;
constexpr std::size_t kCodeAt = 21;
constexpr double kWordRange = 65536;
constexpr std::size_t kMinPairLength = 3;

std::string_view piece(std::string_view text, std::size_t at, std::size_t length) {
    return at < text.size() ? text.substr(at, length) : std::string_view();
}

} // namespace

bool is_exception_text(std::string_view text) {
    return text.find(kErrorMark) != text.npos;
}

std::string exception_value(const std::string& text) {
    // Only one digit of the code is read: code 11 counts as 1. A text that ends before the numbers
    // counts as two zeros.
    const double function = leading_number(piece(text, kFunctionAt, kFunctionLength));
    const double code = leading_number(piece(text, kCodeAt, 1));
    return plain_number(function * 256 - code - kWordRange);
}

bool begins_with_number(std::string_view text) {
    const auto is_digit = [](char c) { return c >= '0' && c <= '9'; };
    text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
    if (!text.empty() && text.front() == '-') text.remove_prefix(1);
    if (!text.empty() && text.front() == '.') text.remove_prefix(1);
    return !text.empty() && is_digit(text.front());
}

std::string join_32_bit(const std::string& text) {
    const std::string trimmed = trim(text);
    const std::size_t space = trimmed.find(' ');
    if (space == trimmed.npos || text.size() < kMinPairLength) return text;
    if (!begins_with_number(text)) return text; // words that say what is wrong with the reply
    // Required: the length of the low word is counted on the untrimmed text. One outer space widens
    // it by the space between the words, which changes nothing.
    const std::size_t position = space + 1;
    const std::size_t low_length = std::min(text.size() - position, trimmed.size());
    const double high = leading_number(std::string_view(trimmed).substr(0, space));
    double low = leading_number(std::string_view(trimmed).substr(trimmed.size() - low_length));
    if (low < 0) low += kWordRange;
    return plain_number(int32_from(high * kWordRange + low));
}

std::string scaled_value(const std::string& text, double decimals) {
    if (!begins_with_number(text)) return text;
    const double value = leading_number(text) / std::pow(10.0, decimals);
    if (!std::isfinite(value)) throw RunTimeError(error_number::kOverflow);
    return signed_number(value);
}

std::string signed_single(float value) {
    const std::string text = plain_single(static_cast<double>(value));
    return text.front() == '-' ? text : " " + text;
}

} // namespace pelvan
