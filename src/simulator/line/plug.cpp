#include "simulator/line/plug.h"

namespace pelvan::simulator {

std::string served_device_text(const SimulatedDevice& device) {
    if (device.loopback) return "a loop-back plug";
    return "model " + std::to_string(device.model) + " at address " +
           std::to_string(device.address);
}

} // namespace pelvan::simulator
