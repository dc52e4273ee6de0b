#include <limits>

#include "platform/run_time_error.h"
#include "protocols/modbus/modbus.h"
#include "text/numbers.h"

namespace pelvan {

std::string SplitLongToWords(const std::string& text) {
    if (text.empty()) return text;
    constexpr double kRange = 4294967296.0;
    double number = round_half_even(leading_number(text));
    if (number > std::numeric_limits<std::int32_t>::max() && number < kRange) number -= kRange;
    const std::int32_t whole = int32_from(number);
    // The shift rounds down, towards minus infinity: -1 is "-1 -1".
    return std::to_string(whole >> 16) + " " + std::to_string(static_cast<std::int16_t>(whole));
}

std::int32_t join_words(std::int16_t high, std::int16_t low) {
    return std::int32_t{high} * 65536 + static_cast<std::uint16_t>(low);
}

} // namespace pelvan
