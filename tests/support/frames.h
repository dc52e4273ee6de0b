// Frames of the serial protocols as tests write them down. The CRC is worked out here bit by bit,
// apart from the program's own.
#pragma once

#include <string>

#include "text/numbers.h"
#include "text/strings.h"

namespace pelvan::testing {

/// "01 03 0A" as bytes.
inline std::string bytes(const std::string& hex) {
    std::string result;
    for (const std::string& pair : split(hex, ' '))
        if (!pair.empty()) result += static_cast<char>(hex_number(pair).value());
    return result;
}

/// Bytes as "01 03 0A".
inline std::string hex_of(const std::string& text) {
    std::string result;
    for (const char c : text)
        result += (result.empty() ? "" : " ") + hex_text(static_cast<unsigned char>(c), 2);
    return result;
}

/// The bytes with their Modbus CRC behind them.
inline std::string sealed(std::string frame) {
    unsigned crc = 0xFFFF;
    for (const char c : frame) {
        crc ^= static_cast<unsigned char>(c);
        for (int bit = 0; bit < 8; ++bit)
            crc = (crc >> 1U) ^ ((crc & 1U) != 0 ? 0xA001U : 0U);
    }
    frame += static_cast<char>(crc & 0xFFU);
    return frame + static_cast<char>(crc >> 8U);
}

/// "01 03 0A" as bytes with their Modbus CRC.
inline std::string frame(const std::string& hex) {
    return sealed(bytes(hex));
}

/// A Full dialogue as it is on the line: { and } are STX and ETX, ^ ACK, ! NAK, $ EOT, # ENQ, and
/// ~ a line feed.
inline std::string wire(std::string text) {
    const std::string signs = "{}^!$#~";
    for (char& c : text)
        if (const auto at = signs.find(c); at != std::string::npos) c = "\2\3\6\25\4\5\n"[at];
    return text;
}

} // namespace pelvan::testing
