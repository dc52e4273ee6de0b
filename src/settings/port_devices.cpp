#include "settings/port_devices.h"

#include <algorithm>

#include "network/network_address.h"
#include "settings/port_users.h"
#include "simulator/line/device_text.h"
#include "text/strings.h"

namespace pelvan {
namespace {

constexpr std::size_t kMaxDeviceLength = 254; // as much of a value as is read back
constexpr std::size_t kShownLength = 120;

std::string choice_text(const SerialDevice& device, int number) {
    std::string text = device.path;
    if (device.path != device.node) text += " (" + device.node + ")";
    if (!device.description.empty()) text += ", " + device.description;
    if (number > 0) text += ", port " + std::to_string(number);
    return text;
}

bool is_control(char character) {
    const auto byte = static_cast<unsigned char>(character);
    return byte < 0x20 || byte == 0x7F;
}

/// The file takes quotes round a value, and spaces, for no part of it.
bool can_be_written(const std::string& device) {
    const char first = device.front();
    const bool quoted = (first == '"' || first == '\'') && device.back() == first;
    return !quoted && device.size() <= kMaxDeviceLength && device == trim(device) &&
           std::none_of(device.begin(), device.end(), is_control);
}

DeviceObjection path_objection(DeviceState state, const std::string& path) {
    switch (state) {
    case DeviceState::Openable:
        return {};
    case DeviceState::Missing:
        return {path + " is not there.", false};
    case DeviceState::NoHardware:
        return {path + " has no hardware behind it.", false};
    case DeviceState::NotSerial:
        return {path + " is not a serial device."};
    case DeviceState::NoPermission:
        break;
    }
    const std::string joining = joining_text(path);
    return {"You may not open " + path + (joining.empty() ? "." : ": " + joining + "."), false};
}

} // namespace

std::string PortDevices::assigned(int number) const {
    if (!is_port_number(number)) return {};
    return ini_read_string(ini_key::kDevicesSection, ini_key::serial_device(number), "",
                           config_.gIniFile);
}

std::string PortDevices::standing(int number) const {
    return device_for_port(number, config_.gIniFile, lookup_.built_in).value_or("");
}

std::string PortDevices::network_state(const std::string& device) const {
    if (const std::string fault = network_address_fault(device); !fault.empty())
        return "not understood: it " + fault;
    const std::string trouble = lookup_.network_trouble(device);
    return trouble.empty() ? "over the network, asked when it is opened"
                           : "could not be opened: " + trouble;
}

std::string PortDevices::state(const std::string& device) const {
    if (is_network(device)) return network_state(device);
    if (!simulator::is_simulated(device)) {
        const bool strange = !lookup_.stranger(device).empty();
        return strange ? "another adapter has its name"
                       : device_state_text(lookup_.probe(device), device);
    }
    return simulator::parse_simulated_device(device) ? "simulated, may be opened"
                                                     : "not understood";
}

std::string PortDevices::meaning(int number) const {
    const std::string device = standing(number);
    return device.empty() ? "no device" : device + ": " + state(device);
}

std::string PortDevices::users(int number) const {
    const std::vector<int> channels = channels_on_port(number, config_.gIniFile);
    return channels.empty() ? "" : ", used by " + protocol_names(channels);
}

int PortDevices::number_of(const std::string& device) const {
    if (device.empty() || simulator::is_simulated(device)) return 0;
    for (int number = kMinPortNumber; number <= kMaxPortNumber; ++number)
        if (const std::string other = standing(number);
            !other.empty() && same_device(other, device))
            return number;
    return 0;
}

std::vector<DeviceChoice> PortDevices::choices(const std::string& device) const {
    std::vector<DeviceChoice> list{{"", "(no assignment)"}};
    for (const SerialDevice& each : devices_)
        list.push_back({each.path, choice_text(each, number_of(each.path))});
    for (const char* simulated : {"simulated:742", "simulated:730"})
        list.push_back({simulated, std::string(simulated) + ", a simulated controller"});
    list.push_back({"simulated:loopback", "simulated:loopback, a loop-back plug"});
    const auto is_present = [&](const DeviceChoice& choice) { return choice.device == device; };
    // Typed, written by hand or not plugged in now.
    if (std::none_of(list.begin(), list.end(), is_present)) list.push_back({device, device});
    return list;
}

std::string PortDevices::only_device() const {
    if (devices_.size() == 1) return devices_.front().path;
    std::string only;
    for (const SerialDevice& device : devices_) {
        if (device.built_in) continue;
        if (!only.empty()) return {};
        only = device.path;
    }
    return only;
}

int PortDevices::proposed_number() const {
    if (const int number = number_of(only_device()); number > 0) return number;
    int unused = 0;
    for (int number = kMinPortNumber; number <= kMaxPortNumber; ++number) {
        if (!channels_on_port(number, config_.gIniFile).empty()) continue;
        if (standing(number).empty()) return number;
        if (unused == 0) unused = number;
    }
    return unused; // four channels leave some of sixteen numbers
}

bool PortDevices::is_change(int number, const std::string& device) const {
    return is_port_number(number) && device != assigned(number) &&
           (device.empty() || device != standing(number));
}

DeviceObjection PortDevices::objection(const std::string& device) const {
    if (device.empty()) return {};
    const std::string shown = "\"" + shortened(device, kShownLength) + "\"";
    if (!can_be_written(device)) return {"The file cannot hold the device " + shown + "."};
    if (simulator::is_simulated(device))
        return simulator::parse_simulated_device(device)
                   ? DeviceObjection{}
                   : DeviceObjection{"No simulated device is called " + shown + "."};
    if (is_network(device)) {
        const std::string fault = network_address_fault(device);
        return fault.empty() ? DeviceObjection{} : DeviceObjection{shown + " " + fault + "."};
    }
    if (device.find("://") != std::string::npos)
        return {shown + " is no port over the network: these begin with tcp:// or rfc2217://."};
    if (device.front() != '/') return {shown + " is no path: type all of it, as in /dev/ttyUSB0."};
    return path_objection(lookup_.probe(device), device);
}

std::string PortDevices::stranger_question(const std::string& device) const {
    const std::string stranger = lookup_.stranger(device);
    return stranger.empty()
               ? ""
               : device + " is another adapter now than when it was opened: " + stranger +
                     ". Use this one from now on?";
}

bool PortDevices::write(int number, const std::string& device) const {
    ini_write_string(ini_key::kDevicesSection, ini_key::serial_device(number), device,
                     config_.gIniFile);
    return assigned(number) == device;
}

} // namespace pelvan
