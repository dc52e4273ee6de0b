// Listen slice of the session state.
#pragma once

#include <cstdint>

#include "platform/serial_port.h"

namespace pelvan {

/// Statistics of a listen session. The single-precision fields are required: a tick above 16777216
/// (some 4.6 hours) is kept to the nearest 2, 4, 8 ... ms, and what is worked out from it with it.
struct ListenStats {
    float start_tick = 0; // ms, of the first burst
    double hit_count = 0;
    std::int16_t spare = 0;  // reset with the others, not otherwise used
    float last_hit_tick = 0; // ms, at which the previous burst began to be processed
    float minimum_gap = 0;   // ms between bursts
};

struct ListenState {
    /// The receive event is passed on only while this is true.
    bool gListening = false;
    /// The statistics of the present session have begun.
    bool gListenStarted = false;
    /// Port that is listened on, borrowed from the channel table; null when none was or it is gone.
    SerialPort* gListenDevice = nullptr;
    std::int16_t gListenChannel = 0;
    float gListenCharTime = 0; // ms
    float gListenTimeout = 0;  // ms
    ListenStats gListenStats;
};

} // namespace pelvan
