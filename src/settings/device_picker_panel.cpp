#include "settings/device_picker_panel.h"

namespace pelvan {

DevicePickerPanel::DevicePickerPanel(Services& services, const ConfigState& config,
                                     ChannelTable& channels, PortDevices::DeviceList devices)
    : cmb_Device("cmb_Device", {}, -1, false, "Devices that the port number may stand for."),
      services_(services), config_(config), devices_(config, channels, std::move(devices)) {
    cmd_AssignDevice.Click = [this] { assign(); };
    cmd_RefreshDevices.Click = [this] { refresh(); };
}

void DevicePickerPanel::refresh() {
    devices_.refresh();
    show_port(number_);
    changed.raise();
}

void DevicePickerPanel::show_port(int number) {
    number_ = number;
    const bool is_port = is_port_number(number);
    cmd_AssignDevice.set_Enabled(is_port);
    cmb_Device.set_Enabled(is_port);
    lbl_DeviceState.set_Caption(is_port ? "Port " + std::to_string(number) + ": " +
                                              devices_.meaning(number)
                                        : "Port numbers run from 1 to 16.");
    DeviceChoices choices = devices_.choices(number);
    choices_ = std::move(choices.list);
    std::vector<std::string> texts;
    for (const DeviceChoice& choice : choices_)
        texts.push_back(choice.text);
    cmb_Device.set_items(std::move(texts));
    cmb_Device.set_ListIndex(static_cast<int>(choices.present));
}

void DevicePickerPanel::assign() {
    if (!is_port_number(number_) || cmb_Device.ListIndex() < 0) return;
    if (const std::string refusal = devices_.refusal(); !refusal.empty()) {
        services_.dialogs.message_box(refusal);
        return;
    }
    if (!devices_.assign(number_,
                         choices_[static_cast<std::size_t>(cmb_Device.ListIndex())].device))
        services_.dialogs.message_box("The assignment could not be written to " + config_.gIniFile +
                                      ".");
    show_port(number_);
    changed.raise();
}

} // namespace pelvan
