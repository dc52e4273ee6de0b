// Serves a simulated controller, or the loop-back plug, on a pseudo-terminal, so that this or any
// other program can open it as a serial device. The pace is the baud rate that the program has set
// on its end. Linux only: elsewhere serving ends at once with a report.
#pragma once

#include <atomic>
#include <functional>
#include <string>

#include "simulator/line/device_text.h"

namespace pelvan::simulator {

struct PtyServerOptions {
    SimulatedDevice device;
    /// Symbolic link to make to the pseudo-terminal while it is served; none when empty. One that
    /// leads to a pseudo-terminal is replaced; anything else of that name is left alone and ends
    /// the serving.
    std::string link;
};

/// Serves until `stop` is set (looked at every 100 ms). `report` gets one line when the device can
/// be opened ("Serving ... on ...") or one that says why it cannot be. Returns 0, or 1 when it
/// could not serve. Clients may come, go and come back; a restarting client finds the controller as
/// it left it.
int serve_on_pty(const PtyServerOptions& options, std::atomic<bool>& stop,
                 const std::function<void(const std::string&)>& report);

} // namespace pelvan::simulator
