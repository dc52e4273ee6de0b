#include "text/numbers.h"

#include <algorithm>
#include <array>
#include <cfenv>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>

namespace pelvan {
namespace {

bool is_digit(char c) {
    return c >= '0' && c <= '9';
}

bool is_space(char c) {
    return c == ' ' || c == '\t';
}

std::string_view without_leading_spaces(std::string_view text) {
    while (!text.empty() && is_space(text.front()))
        text.remove_prefix(1);
    return text;
}

std::size_t digits_from(std::string_view text, std::size_t at) {
    while (at < text.size() && is_digit(text[at]))
        ++at;
    return at;
}

/// Length of the number at the start of the text, 0 when no digit is there.
std::size_t number_length(std::string_view text) {
    std::size_t at = !text.empty() && (text[0] == '-' || text[0] == '+') ? 1 : 0;
    const std::size_t whole = digits_from(text, at);
    std::size_t digits = whole - at;
    at = whole;
    if (at < text.size() && text[at] == '.') {
        const std::size_t end = digits_from(text, at + 1);
        digits += end - at - 1;
        at = end;
    }
    if (digits == 0) return 0;
    if (at < text.size() && (text[at] == 'e' || text[at] == 'E')) {
        std::size_t exponent = at + 1;
        if (exponent < text.size() && (text[exponent] == '-' || text[exponent] == '+')) ++exponent;
        const std::size_t end = digits_from(text, exponent);
        if (end > exponent) at = end;
    }
    return at;
}

/// Whether a number that no double holds is too small for one, not too large: that is where its
/// first digit that counts stands, not the sign of its exponent.
bool is_tiny(std::string_view number) {
    const auto mark = std::min(number.find_first_of("eE"), number.size());
    const std::string_view digits = number.substr(0, mark);
    const auto place = static_cast<long>(std::min(digits.find('.'), digits.size())) -
                       static_cast<long>(digits.find_first_of("123456789"));
    std::string_view exponent = number.substr(std::min(mark + 1, number.size()));
    if (exponent.starts_with('+')) exponent.remove_prefix(1);
    const bool negative = exponent.starts_with('-');
    int value = 0;
    if (std::from_chars(exponent.data(), exponent.data() + exponent.size(), value).ec ==
        std::errc::result_out_of_range)
        return negative;
    return place + value < 0;
}

double parse(std::string_view number) {
    if (number.front() == '+') number.remove_prefix(1);
    double value = 0;
    const auto result = std::from_chars(number.data(), number.data() + number.size(), value);
    if (result.ec == std::errc::result_out_of_range) {
        const double magnitude = is_tiny(number) ? 0 : HUGE_VAL;
        return number.front() == '-' ? -magnitude : magnitude;
    }
    return value;
}

/// Fixed notation with `significant` digits and no trailing zeros.
std::string fixed_text(double value, int significant) {
    if (!std::isfinite(value)) return value < 0 ? "-1.#INF" : "1.#INF";
    if (value == 0) return "0";
    // The exponent after rounding decides how many decimals the digits leave.
    std::array<char, 48> scientific{};
    std::snprintf(scientific.data(), scientific.size(), "%.*e", significant - 1, value);
    const std::string_view text(scientific.data());
    const int exponent = std::atoi(scientific.data() + text.find('e') + 1);
    const int decimals = significant - 1 - exponent;
    // The largest numbers round up to none.
    const double nearest = std::strtod(scientific.data(), nullptr);
    const double rounded = std::isfinite(nearest) ? nearest : value;
    std::array<char, 400> fixed{};
    const auto end =
        std::to_chars(fixed.data(), fixed.data() + fixed.size(), rounded, std::chars_format::fixed,
                      decimals > 0 ? std::min(decimals, 40) : 0);
    std::string out(fixed.data(), end.ptr);
    if (decimals > 0) {
        while (out.back() == '0')
            out.pop_back();
        if (out.back() == '.') out.pop_back();
    }
    return out == "-0" ? "0" : out;
}

} // namespace

double leading_number(std::string_view text) {
    text = without_leading_spaces(text);
    const std::size_t length = number_length(text);
    return length == 0 ? 0 : parse(text.substr(0, length));
}

bool is_numeric(std::string_view text) {
    text = without_leading_spaces(text);
    while (!text.empty() && is_space(text.back()))
        text.remove_suffix(1);
    return !text.empty() && number_length(text) == text.size();
}

std::optional<long> whole_number(std::string_view text, long min, long max) {
    long value = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value);
    if (error != std::errc() || stop != end || value < min || value > max) return {};
    return value;
}

std::string plain_number(double value) {
    return fixed_text(value, 15);
}

std::string plain_single(double value) {
    return fixed_text(value, 7);
}

std::string signed_number(double value) {
    std::string text = plain_number(value);
    return text.front() == '-' ? text : " " + text;
}

std::string count_text(std::size_t count, const std::string& thing) {
    return std::to_string(count) + " " + thing + (count == 1 ? "" : "s");
}

double round_half_even(double value) {
    return value - std::remainder(value, 1.0);
}

std::optional<unsigned long> hex_number(std::string_view text) {
    text = without_leading_spaces(text);
    while (!text.empty() && is_space(text.back()))
        text.remove_suffix(1);
    if (text.size() > 2 && (text[0] == '&' || text[0] == '0') &&
        (text[1] == 'h' || text[1] == 'H' || text[1] == 'x' || text[1] == 'X'))
        text.remove_prefix(2);
    unsigned long value = 0;
    if (text.empty() || text.size() > 8) return std::nullopt;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), value, 16);
    if (result.ec != std::errc{} || result.ptr != text.data() + text.size()) return std::nullopt;
    return value;
}

std::string hex_text(unsigned long value, int digits) {
    std::array<char, 24> out{};
    std::snprintf(out.data(), out.size(), "%0*lX", digits, value);
    return out.data();
}

} // namespace pelvan
