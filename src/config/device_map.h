// Which device a port number 1..16 stands for: the assignment in section "SERIAL DEVICES" of the
// configuration file, else the system's own device of that number, else none. The first hit wins
// and nothing is guessed, so that a technician never writes into the wrong furnace.
#pragma once

#include <optional>
#include <string>

namespace pelvan {

/// Nothing when the number is outside 1..16 or no device is assigned to it.
[[nodiscard]] std::optional<std::string> device_for_port(int number, const std::string& ini_file);

} // namespace pelvan
