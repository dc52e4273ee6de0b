#include "settings/serial_devices_form.h"

namespace pelvan {

frm_SerialDevices::frm_SerialDevices(Services& services, const ConfigState& config,
                                     ChannelTable& channels, PortDevices::DeviceList devices)
    : Form("frm_SerialDevices", "Serial Devices"),
      picker(services, config, channels, std::move(devices)),
      picker_changed_(picker.changed.subscribe([this] { list_ports(); })) {
    set_help_page("serial_devices");
    lst_Ports.Click = [this] { lst_Ports_Click(); };
    cmd_Close.Click = [this] { Unload(); };
}

void frm_SerialDevices::Form_Load() {
    picker.refresh();
}

void frm_SerialDevices::lst_Ports_Click() {
    picker.show_port(lst_Ports.ListIndex() + 1);
}

void frm_SerialDevices::list_ports() {
    const int selected = lst_Ports.ListIndex() < 0 ? 0 : lst_Ports.ListIndex();
    lst_Ports.Clear();
    for (int number = kMinPortNumber; number <= kMaxPortNumber; ++number)
        lst_Ports.AddItem("PORT " + std::to_string(number) + (number < 10 ? "   " : "  ") +
                          picker.devices().meaning(number));
    lst_Ports.set_ListIndex(selected);
}

} // namespace pelvan
