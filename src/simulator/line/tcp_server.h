// Serves a simulated controller, or the loop-back plug, on a TCP port, as a serial server with a
// controller behind it does: bytes alone, at the pace of a baud rate of its own.
#pragma once

#include <atomic>
#include <functional>
#include <string>

#include "platform/serial_line.h"
#include "simulator/line/device_text.h"

namespace pelvan::simulator {

struct TcpServerOptions {
    SimulatedDevice device;
    std::string address = "127.0.0.1"; // to listen on: this machine alone
    int port = 0;                      // 0: one that is free
    LineSettings settings;             // of the line behind it
};

/// Serves until `stop` is set (looked at every 100 ms). `report` gets one line when clients can
/// connect ("Serving ... on tcp://127.0.0.1:4001 ...") or one that says why they cannot. Returns 0,
/// or 1 when it could not serve. Clients may come and go, several at a time; all reach the same
/// controller, each on a line of its own.
int serve_on_tcp(const TcpServerOptions& options, std::atomic<bool>& stop,
                 const std::function<void(const std::string&)>& report);

} // namespace pelvan::simulator
