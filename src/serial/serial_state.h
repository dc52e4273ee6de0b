// Serial-link slice of the session state.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

#include "platform/serial_port.h"

namespace pelvan {

inline constexpr std::size_t kChannelLimit = 4;

struct SerialState {
    /// One port object a configured channel, borrowed from `frm_Comms`.
    std::vector<SerialPort*> gCommDevice;
    std::array<bool, kChannelLimit> gRtsToggle{};
    /// Settle times in ms: 15000 / baud rate, rounded.
    std::array<std::int16_t, kChannelLimit> gCharTime{};
    /// The millisecond tick as last read.
    std::uint32_t gLastTick = 0;
    /// The countdown pool: when a slot was started or last checked, what it has left, whether it is
    /// busy.
    std::vector<double> gTimerStart;
    std::vector<double> gTimerRemaining;
    std::vector<bool> gTimerInUse;
    bool gTimersInitialised = false;
};

} // namespace pelvan
