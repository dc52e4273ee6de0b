// What the program and the library for ports over the network know of each other. The library is
// loaded on first use: what it links costs memory, and not every machine has it.
#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <string>

#include "network/network_address.h"
#include "platform/serial_line.h"

namespace pelvan {

/// How far an opening has come, for whoever loses patience.
enum class NetworkPhase { LookingUp, Connecting, Setting };

struct NetworkAttempt {
    NetworkAddress address;
    LineSettings settings;
    int timeout_ms = 0; // for connecting and setting together
    /// The host's addresses, as the library has found them: an attempt that has them from one
    /// before asks nobody.
    std::shared_ptr<const void> looked_up;
    /// Called by a line that finds itself lost, with the reason, by the thread that uses it.
    std::function<void(const std::string& reason)> lost;
    std::atomic<NetworkPhase> phase{NetworkPhase::LookingUp};
};

/// A line, or why there is none: an error number of serial_port.h and the reason in words.
struct NetworkOpening {
    std::unique_ptr<SerialLine> line;
    int error = 0;
    std::string reason;
    bool late = false; // nobody has answered in time
};

/// Opens a line. May block for as long as the system looks for a name and for some seconds more;
/// throws nothing. The line may then be used by another thread, by one at a time.
using OpenNetworkLine = void (*)(NetworkAttempt& attempt, NetworkOpening& opening);

inline constexpr char kNetworkModule[] = "libpelvan7_network.so";
inline constexpr char kOpenNetworkLine[] = "pelvan_open_network_line";

} // namespace pelvan
