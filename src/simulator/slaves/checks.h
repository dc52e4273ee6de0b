// Check sums of the simulated end of a line, written apart from the program's own end, so that an
// error in one is found by the other.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace pelvan::simulator {

/// CRC-16 with the reflected polynomial 0xA001.
[[nodiscard]] std::uint16_t crc16(std::string_view bytes, std::uint16_t start);

/// The bytes with their Modbus CRC behind them, low byte first.
[[nodiscard]] std::string with_modbus_crc(std::string bytes);

/// Whether the last two bytes are the Modbus CRC of those before.
[[nodiscard]] bool modbus_crc_fits(std::string_view frame);

/// One character of a frame as a number 0..255.
[[nodiscard]] inline unsigned byte_at(std::string_view bytes, std::size_t index) {
    return static_cast<unsigned char>(bytes[index]);
}
[[nodiscard]] inline std::uint16_t word_at(std::string_view bytes, std::size_t index) {
    return static_cast<std::uint16_t>(byte_at(bytes, index) << 8U | byte_at(bytes, index + 1));
}
/// A number's low eight bits as a character.
[[nodiscard]] inline char as_char(unsigned value) {
    return static_cast<char>(static_cast<unsigned char>(value & 0xFFU));
}
/// High byte first.
inline void append_word(std::string& bytes, std::uint16_t word) {
    bytes += as_char(word >> 8U);
    bytes += as_char(word);
}

} // namespace pelvan::simulator
