#include <algorithm>

#include "protocols/modbus/function_codes.h"
#include "protocols/modbus/modbus.h"
#include "text/numbers.h"

namespace pelvan {
namespace {

constexpr float kMaxRegister = 65535;
constexpr float kMinValue = -32768;
constexpr float kMaxValue = 32767;
constexpr float kWordRange = 65536;
constexpr std::int16_t kMaxAddress = 247;
/// The most words that the one-byte byte count of functions 15 and 16 can announce.
constexpr std::size_t kMaxWords = 127;

constexpr const char* kBadCommand = "Bad COMMAND TYPE selected.";
constexpr const char* kBadAddress = "Bad ADDRESS entered.";
constexpr const char* kBadRegister = "Bad REGISTER entered.";
constexpr const char* kBadValue = "Bad DATA VALUE entered.";

// The comparisons are written so that a value that is not a number is refused, too.
bool within(float value, float lowest, float highest) {
    return value >= lowest && value <= highest;
}

void append_byte(std::string& frame, unsigned byte) {
    frame += static_cast<char>(static_cast<unsigned char>(byte));
}

void append_word(std::string& frame, float value) {
    // The mask catches what rounds up to 65536: -0.3 becomes 65535.7 and must go out as 0.
    const unsigned word = static_cast<unsigned>(round_half_even(value)) & 0xFFFFU;
    append_byte(frame, word >> 8);
    append_byte(frame, word & 0xFFU);
}

/// Appends the values up to the end mark, each as a word; false at one that is out of range.
bool append_values(std::string& data, std::span<float> values) {
    for (float& value : values.subspan(std::min<std::size_t>(1, values.size()))) {
        if (value == kValueListEnd) break;
        // 32768 to 65535 are refused although they fit a word: they are entered as the negative
        // numbers that they stand for. Deliberate.
        if (!within(value, kMinValue, kMaxValue)) return false;
        // The caller sees the rewritten value afterwards, also when a later one is refused.
        if (value < 0) value += kWordRange;
        append_word(data, value);
    }
    return true;
}

} // namespace

std::string Modbus::ModbusBuildRequest(std::int16_t function, std::int16_t address,
                                       float start_register, std::span<float> values) {
    if (!is_known_function(function)) return kBadCommand;
    if (address < 0 || address > kMaxAddress) return kBadAddress;
    if (!within(start_register, 0, kMaxRegister)) return kBadRegister;
    std::string data;
    if (!append_values(data, values)) return kBadValue;

    std::string frame;
    frame.reserve(data.size() + 9);
    append_byte(frame, static_cast<unsigned>(address));
    append_byte(frame, static_cast<unsigned>(function));
    append_word(frame, start_register);
    if (is_write_multiple(function)) {
        // Function 15 carries one word a coil and twice the coil count, not packed bits.
        // Deliberate.
        const std::size_t count = data.size() / 2;
        if (count > kMaxWords) return kBadValue;
        append_byte(frame, 0);
        append_byte(frame, static_cast<unsigned>(count));
        append_byte(frame, static_cast<unsigned>(2 * count));
    }
    frame += data;
    ModbusCrc(frame);
    append_byte(frame, static_cast<unsigned>(state_.gCrcLow));
    append_byte(frame, static_cast<unsigned>(state_.gCrcHigh));
    return frame;
}

bool is_refusal(std::string_view text) {
    return text.substr(0, 3) == "Bad";
}

} // namespace pelvan
