// Frames for tests, written as numbers.
#pragma once

#include <initializer_list>
#include <string>

#include "protocols/modbus/modbus.h"

namespace pelvan::testing {

inline std::string bytes(std::initializer_list<int> values) {
    std::string out;
    for (const int value : values)
        out += static_cast<char>(value);
    return out;
}

/// The bytes with their CRC behind them.
inline std::string sealed(std::string frame) {
    ModbusState state;
    Modbus(state).ModbusCrc(frame);
    frame += static_cast<char>(state.gCrcLow);
    frame += static_cast<char>(state.gCrcHigh);
    return frame;
}

} // namespace pelvan::testing
