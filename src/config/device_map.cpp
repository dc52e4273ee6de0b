#include "config/device_map.h"

#include "config/ini.h"
#include "platform/serial_port.h"

namespace pelvan {

std::optional<std::string> device_for_port(int number, const std::string& ini_file,
                                           const BuiltInDevice& built_in) {
    if (!is_port_number(number)) return std::nullopt;
    const std::string assigned =
        ini_read_string(ini_key::kDevicesSection, ini_key::serial_device(number), "", ini_file);
    if (!assigned.empty()) return assigned;
    return built_in(number);
}

} // namespace pelvan
