// The look-ups of serial_devices.h below directories of one's choice. Internal to the serial
// devices of Linux; tests hand in a tree of their own.
#pragma once

#include "platform/serial_devices.h"

namespace pelvan {

struct DeviceRoots {
    std::string dev = "/dev";
    std::string sys = "/sys";
};

[[nodiscard]] std::vector<SerialDevice> list_serial_devices(const DeviceRoots& roots);
[[nodiscard]] DeviceState probe_device(const std::string& path, const DeviceRoots& roots);
[[nodiscard]] std::optional<int> latency_timer_ms(const std::string& path,
                                                  const DeviceRoots& roots);
[[nodiscard]] std::optional<std::string> built_in_device(int number, const DeviceRoots& roots);

} // namespace pelvan
