// Simulated devices behind the ports of a rig.
#pragma once

#include "config/device_map.h"
#include "platform/line_port.h"
#include "simulator/line/simulator_registry.h"
#include "support/configuration.h"
#include "support/serial_rig.h"

namespace pelvan::testing {

struct SimulatedPorts {
    /// From the next table on; `rig` must build none when this is gone.
    explicit SimulatedPorts(SerialRig& rig) : simulators(rig.tick) {
        rig.make_port = [this, &rig] {
            return std::make_unique<LinePort>(
                [&rig](int port) { return device_for_port(port, rig.config.gIniFile); },
                [this](const std::string& device, const LineSettings& settings) {
                    return open_line(device, settings);
                });
        };
    }

    simulator::SimulatorRegistry simulators;
    LineOpener open_line = [this](const std::string& device, const LineSettings& settings) {
        return simulators.open(device, settings);
    };
};

} // namespace pelvan::testing
