// Which device a port number 1..16 stands for: the assignment in section "SERIAL DEVICES" of the
// configuration file, else the system's own device of that number, else none. The first hit wins
// and nothing is guessed, so that a technician never writes into the wrong furnace.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "platform/serial_devices.h"

namespace pelvan {

/// The system's own device of a port number.
using BuiltInDevice = std::function<std::optional<std::string>(int number)>;

/// Nothing when the number is outside 1..16 or no device is assigned to it.
[[nodiscard]] std::optional<std::string> device_for_port(
    int number, const std::string& ini_file,
    const BuiltInDevice& built_in = [](int port) { return built_in_device(port); });

} // namespace pelvan
