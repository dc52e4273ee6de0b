#include "settings/port_devices.h"

#include <algorithm>

#include "config/device_map.h"
#include "simulator/line/device_text.h"

namespace pelvan {
namespace {

std::string device_meaning(const std::string& device) {
    if (!simulator::is_simulated(device)) return device_state_text(probe_device(device), device);
    return simulator::parse_simulated_device(device) ? "simulated, may be opened"
                                                     : "not understood";
}

std::string choice_text(const SerialDevice& device) {
    std::string text = device.path;
    if (device.path != device.node) text += " (" + device.node + ")";
    if (!device.description.empty()) text += ", " + device.description;
    return text;
}

} // namespace

std::string PortDevices::assigned(int number) const {
    if (!is_port_number(number)) return {};
    return ini_read_string(ini_key::kDevicesSection, ini_key::serial_device(number), "",
                           config_.gIniFile);
}

std::string PortDevices::meaning(int number) const {
    const auto device = device_for_port(number, config_.gIniFile);
    return device ? *device + ": " + device_meaning(*device) : "no device";
}

DeviceChoices PortDevices::choices(int number) const {
    const std::string present = assigned(number);
    std::vector<DeviceChoice> list{{"", "(no assignment)"}};
    for (const SerialDevice& device : devices_)
        list.push_back({device.path, choice_text(device)});
    for (const char* simulated : {"simulated:742", "simulated:730"})
        list.push_back({simulated, std::string(simulated) + ", a simulated controller"});
    list.push_back({"simulated:loopback", "simulated:loopback, a loop-back plug"});
    const auto is_present = [&](const DeviceChoice& choice) { return choice.device == present; };
    auto found = std::find_if(list.begin(), list.end(), is_present);
    // Assigned, but written by hand or not plugged in now.
    if (found == list.end()) found = list.insert(found, {present, present});
    const auto index = static_cast<std::size_t>(found - list.begin());
    return {std::move(list), index};
}

bool PortDevices::assign(int number, const std::string& device) {
    ini_write_string(ini_key::kDevicesSection, ini_key::serial_device(number), device,
                     config_.gIniFile);
    if (assigned(number) != device) return false;
    channels_.init_comms();
    return true;
}

} // namespace pelvan
