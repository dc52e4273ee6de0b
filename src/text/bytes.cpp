#include "text/bytes.h"

#include <cstdint>

#include "text/numbers.h"

namespace pelvan {
namespace {

constexpr std::uint8_t kDelete = 0x7F;

bool is_control(std::uint8_t byte) {
    return byte < ' ' || byte == kDelete;
}

bool is_printable_ascii(std::uint8_t byte) {
    return !is_control(byte) && byte < kDelete;
}

template <class Number> std::string spaced(std::string_view bytes, Number number) {
    std::string out;
    for (const char byte : bytes) {
        if (!out.empty()) out += ' ';
        out += number(static_cast<std::uint8_t>(byte));
    }
    return out;
}

template <class Passes>
std::string replaced(std::string_view bytes, Passes passes, const char* before, const char* after) {
    std::string out;
    for (const char each : bytes) {
        const auto byte = static_cast<std::uint8_t>(each);
        if (passes(byte))
            out += each;
        else
            out.append(before).append(hex_text(byte, 2)).append(after);
    }
    return out;
}

} // namespace

std::string hex_bytes(std::string_view bytes) {
    return spaced(bytes, [](std::uint8_t byte) { return hex_text(byte, 2); });
}

std::string decimal_bytes(std::string_view bytes) {
    return spaced(bytes, [](std::uint8_t byte) { return std::to_string(byte); });
}

std::string ascii_in_brackets(std::string_view bytes) {
    return replaced(bytes, is_printable_ascii, "<", ">");
}

std::string controls_in_brackets(std::string_view bytes) {
    return replaced(
        bytes, [](std::uint8_t byte) { return !is_control(byte); }, "<", ">");
}

std::string ascii_with_escapes(std::string_view bytes) {
    return replaced(bytes, is_printable_ascii, "\\x", "");
}

} // namespace pelvan
