#include "settings/device_picker.h"

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

std::string assigned_device(int number, const std::string& ini_file) {
    return ini_read_string(ini_key::kDevicesSection, ini_key::serial_device(number), "", ini_file);
}

std::string choice_text(const SerialDevice& device) {
    std::string text = device.path;
    if (device.path != device.node) text += " (" + device.node + ")";
    if (!device.description.empty()) text += ", " + device.description;
    return text;
}

} // namespace

std::string port_meaning(int number, const std::string& ini_file) {
    const auto device = device_for_port(number, ini_file);
    return device ? *device + ": " + device_meaning(*device) : "no device";
}

DevicePicker::DevicePicker(Services& services, const ConfigState& config, ChannelTable& channels,
                           DeviceList devices)
    : cmb_Device("cmb_Device", {}, -1, false, "Devices that the port number may stand for."),
      services_(services), config_(config), channels_(channels), list_devices_(std::move(devices)) {
    cmd_AssignDevice.Click = [this] { assign(); };
    cmd_RefreshDevices.Click = [this] { refresh(); };
}

void DevicePicker::refresh() {
    devices_ = list_devices_();
    show_port(number_);
}

bool DevicePicker::is_port() const {
    return number_ >= kLowestPortNumber && number_ <= kHighestPortNumber;
}

void DevicePicker::show_port(int number) {
    number_ = number;
    cmd_AssignDevice.set_Enabled(is_port());
    cmb_Device.set_Enabled(is_port());
    lbl_DeviceState.set_Caption(is_port() ? "Port " + std::to_string(number) + ": " +
                                                port_meaning(number, config_.gIniFile)
                                          : "Port numbers run from 1 to 16.");
    fill_choices();
}

void DevicePicker::fill_choices() {
    const std::string present = is_port() ? assigned_device(number_, config_.gIniFile) : "";
    choices_ = {{"", "(no assignment)"}};
    for (const SerialDevice& device : devices_)
        choices_.push_back({device.path, choice_text(device)});
    for (const char* simulated : {"simulated:742", "simulated:730"})
        choices_.push_back({simulated, std::string(simulated) + ", a simulated controller"});
    choices_.push_back({"simulated:loopback", "simulated:loopback, a loop-back plug"});
    const auto is_present = [&](const Choice& choice) { return choice.device == present; };
    auto found = std::find_if(choices_.begin(), choices_.end(), is_present);
    // Assigned, but written by hand or not plugged in now: it stays in the list.
    if (found == choices_.end()) found = choices_.insert(found, {present, present});
    std::vector<std::string> texts;
    for (const Choice& choice : choices_)
        texts.push_back(choice.text);
    const auto index = static_cast<int>(found - choices_.begin());
    cmb_Device.set_items(std::move(texts));
    cmb_Device.set_ListIndex(index);
}

void DevicePicker::assign() {
    if (!is_port() || cmb_Device.ListIndex() < 0) return;
    const std::string device = choices_[static_cast<std::size_t>(cmb_Device.ListIndex())].device;
    const std::string& file = config_.gIniFile;
    ini_write_string(ini_key::kDevicesSection, ini_key::serial_device(number_), device, file);
    if (assigned_device(number_, file) != device)
        services_.dialogs.message_box("The assignment could not be written to " + file + ".");
    // A port that is open would go on with the device that it was opened on.
    channels_.init_comms();
    show_port(number_);
    if (assigned) assigned();
}

} // namespace pelvan
