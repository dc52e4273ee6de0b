#include "platform/run_time_error.h"
#include "protocols/modbus/modbus.h"
#include "text/numbers.h"

namespace pelvan {

std::string SplitLongToWords(const std::string& text) {
    if (text.empty()) return text;
    const std::int32_t number = int32_from(leading_number(text));
    // The shift rounds down, towards minus infinity: -1 is "-1 -1".
    return std::to_string(number >> 16) + " " + std::to_string(static_cast<std::int16_t>(number));
}

std::int32_t join_words(std::int16_t high, std::int16_t low) {
    return std::int32_t{high} * 65536 + static_cast<std::uint16_t>(low);
}

} // namespace pelvan
