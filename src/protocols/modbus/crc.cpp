#include "protocols/modbus/crc.h"

#include "protocols/modbus/modbus.h"

namespace pelvan {

std::uint16_t modbus_crc(std::string_view bytes, std::uint16_t begin) {
    constexpr std::uint32_t kReflectedPolynomial = 0xA001;
    std::uint32_t crc = begin;
    // Bit by bit and without a table, as required. The mask stands for the test of bit 0: a branch
    // on bits that are as good as random would cost several times the arithmetic.
    for (const char byte : bytes) {
        crc ^= static_cast<std::uint8_t>(byte);
        for (int bit = 0; bit < 8; ++bit)
            crc = (crc >> 1) ^ (kReflectedPolynomial & (0U - (crc & 1U)));
    }
    return static_cast<std::uint16_t>(crc);
}

bool has_valid_crc(std::string_view frame) {
    if (frame.size() < 2) return false;
    const std::string_view check = frame.substr(frame.size() - 2);
    const unsigned crc = static_cast<std::uint8_t>(check[0]) |
                         static_cast<unsigned>(static_cast<std::uint8_t>(check[1])) << 8U;
    return crc == modbus_crc(frame.substr(0, frame.size() - 2));
}

void Modbus::ModbusCrc(std::string_view frame) {
    const std::uint16_t crc = modbus_crc(frame);
    state_.gCrcLow = static_cast<std::int16_t>(crc & 0xFFU);
    state_.gCrcHigh = static_cast<std::int16_t>(crc >> 8);
}

} // namespace pelvan
