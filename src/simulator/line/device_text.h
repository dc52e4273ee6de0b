// The text that stands for a simulated device in the configuration file and on the command line:
// "simulated:742,address=5,lost=0.02,seed=7", "simulated:742?speed=60",
// "simulated:742,line=19200/E/8/1" or "simulated:loopback,jumper=out".
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>

#include "platform/serial_line.h"
#include "simulator/slaves/faults.h"

namespace pelvan::simulator {

struct SimulatedDevice {
    int model = 742;
    unsigned address = 1;
    double delay_ms = 0;                  // from the end of a request to the beginning of its reply
    bool queues = false;                  // requests that come before its reply are answered, too
    int speed = 1;                        // of the controller's clock
    bool echoes = false;                  // the line gives back what the host sends
    int xoff_after = 0;                   // see `Station`
    std::map<std::uint16_t, int> refused; // see `Controller`
    FaultPlan faults;
    /// What it is set to; at other settings of the line it hears nothing. Without, it does not
    /// care.
    std::optional<LineSettings> line;
    bool loopback = false; // then only `jumper_in` counts
    std::optional<bool> jumper_in;
};

/// Whether a device text means a simulated device, well-formed or not.
[[nodiscard]] bool is_simulated(const std::string& text);

/// Nothing when a model, an option or a value is unknown.
[[nodiscard]] std::optional<SimulatedDevice> parse_simulated_device(const std::string& text);

/// Whether the device understands what is sent at these settings; how many stop bits there are, no
/// receiver tells.
[[nodiscard]] bool hears(const SimulatedDevice& device, const LineSettings& settings);

} // namespace pelvan::simulator
