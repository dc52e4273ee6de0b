// Frames written down as hexadecimal text, the Modbus CRC put behind them.
#pragma once

#include <string>

#include "simulator/checks.h"
#include "text/numbers.h"
#include "text/strings.h"

namespace pelvan::testing {

/// "01 03 0A" as bytes.
inline std::string bytes(const std::string& hex) {
    std::string result;
    for (const std::string& pair : split(hex, ' ')) {
        if (!pair.empty()) result += static_cast<char>(hex_number(pair).value());
    }
    return result;
}

/// The same with a Modbus CRC.
inline std::string frame(const std::string& hex) {
    return simulator::with_modbus_crc(bytes(hex));
}

/// Bytes as "01 03 0A".
inline std::string hex_of(const std::string& text) {
    std::string result;
    for (const char c : text) {
        result += (result.empty() ? "" : " ") + hex_text(static_cast<unsigned char>(c), 2);
    }
    return result;
}

} // namespace pelvan::testing
