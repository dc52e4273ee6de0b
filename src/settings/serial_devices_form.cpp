#include "settings/serial_devices_form.h"

#include <algorithm>

namespace pelvan {

frm_SerialDevices::frm_SerialDevices(Services& services, const ConfigState& config,
                                     ChannelTable& channels, DeviceLookup lookup)
    : Form("frm_SerialDevices", "Serial Devices"),
      picker(services, config, channels, std::move(lookup), DevicePickerPanel::Purpose::ForNumbers),
      services_(services), picker_changed_(picker.changed.subscribe([this] { list_ports(); })) {
    set_help_page("serial_devices");
    lst_Ports.Click = [this] { lst_Ports_Click(); };
    cmd_Close.Click = [this] { cmd_Close_Click(); };
}

void frm_SerialDevices::Form_Load() {
    picker.forget();
    picker.refresh();
}

void frm_SerialDevices::lst_Ports_Click() {
    picker.show_port(lst_Ports.ListIndex() + 1);
}

void frm_SerialDevices::cmd_Close_Click() {
    if (picker.assign_pending()) Unload();
}

bool frm_SerialDevices::Form_Unload() {
    if (!picker.pending()) return true;
    const MessageAnswer answer = services_.dialogs.message_box(
        picker.pending_question(), {}, MessageButtons::YesNo, MessageIcon::Exclamation);
    return answer != MessageAnswer::Yes || picker.assign_pending();
}

void frm_SerialDevices::list_ports() {
    const int selected = std::max(picker.shown_port(), kMinPortNumber) - kMinPortNumber;
    lst_Ports.Clear();
    for (int number = kMinPortNumber; number <= kMaxPortNumber; ++number)
        lst_Ports.AddItem("PORT " + std::to_string(number) + (number < 10 ? "   " : "  ") +
                          picker.devices().meaning(number) + picker.devices().users(number));
    lst_Ports.set_ListIndex(selected);
}

} // namespace pelvan
