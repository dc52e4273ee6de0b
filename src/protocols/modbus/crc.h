// The CRC-16 of Modbus RTU frames, for whoever has to check one: it leaves no trace in the
// session's state, which belongs to the frames that go through `Modbus::ModbusCrc`.
#pragma once

#include <cstdint>
#include <string_view>

namespace pelvan {

inline constexpr std::uint16_t kModbusCrcStart = 0xFFFF;

/// CRC-16 (reflected polynomial 0xA001, start value 0xFFFF) of all bytes; its low byte goes out
/// first. With the CRC of what stands before the bytes as `begin` it goes on from there; over a
/// frame and its CRC it is 0.
[[nodiscard]] std::uint16_t modbus_crc(std::string_view bytes,
                                       std::uint16_t begin = kModbusCrcStart);

/// Whether the last two bytes are the CRC of those before them; false for fewer than two.
[[nodiscard]] bool has_valid_crc(std::string_view frame);

} // namespace pelvan
