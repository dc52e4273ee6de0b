#include "simulator/slaves/checks.h"

#include <array>

namespace pelvan::simulator {
namespace {

// Table of the CRC of each byte value.
constexpr std::array<std::uint16_t, 256> make_table() {
    std::array<std::uint16_t, 256> table{};
    for (unsigned i = 0; i < 256; ++i) {
        unsigned rest = i;
        for (int bit = 0; bit < 8; ++bit)
            rest = (rest & 1U) != 0 ? rest >> 1U ^ 0xA001U : rest >> 1U;
        table[i] = static_cast<std::uint16_t>(rest);
    }
    return table;
}

constexpr std::array<std::uint16_t, 256> kTable = make_table();

} // namespace

std::uint16_t crc16(std::string_view bytes, std::uint16_t start) {
    unsigned crc = start;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        crc = crc >> 8U ^ kTable[(crc ^ byte_at(bytes, i)) & 0xFFU];
    }
    return static_cast<std::uint16_t>(crc);
}

std::string with_modbus_crc(std::string bytes) {
    const std::uint16_t crc = crc16(bytes, 0xFFFF);
    bytes += as_char(crc);
    bytes += as_char(crc >> 8U);
    return bytes;
}

bool modbus_crc_fits(std::string_view frame) {
    if (frame.size() < 4) return false;
    return with_modbus_crc(std::string(frame.substr(0, frame.size() - 2))) == frame;
}

} // namespace pelvan::simulator
