#include "protocols/modbus/modbus.h"

namespace pelvan {

void Modbus::ModbusCrc(std::string_view frame) {
    constexpr std::uint32_t kReflectedPolynomial = 0xA001;
    std::uint32_t crc = 0xFFFF;
    // Bit by bit and without a table, as required. The mask stands for the test of bit 0: a branch
    // on bits that are as good as random would cost several times the arithmetic.
    for (const char byte : frame) {
        crc ^= static_cast<std::uint8_t>(byte);
        for (int bit = 0; bit < 8; ++bit)
            crc = (crc >> 1) ^ (kReflectedPolynomial & (0U - (crc & 1U)));
    }
    state_.gCrcLow = static_cast<std::int16_t>(crc & 0xFFU);
    state_.gCrcHigh = static_cast<std::int16_t>(crc >> 8);
}

} // namespace pelvan
