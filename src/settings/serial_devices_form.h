// "Serial Devices": what each of the 16 port numbers stands for on this machine, and the assigning
// of another device.
#pragma once

#include "forms/form.h"
#include "settings/device_picker_panel.h"

namespace pelvan {

class frm_SerialDevices : public Form {
  public:
    frm_SerialDevices(
        Services& services, const ConfigState& config, ChannelTable& channels,
        PortDevices::DeviceList devices = [] { return list_serial_devices(); });

    Label lbl_Ports{"lbl_Ports", "&Port Numbers"};
    /// One line a port number, from 1 on.
    ListBox lst_Ports{"lst_Ports", "", "What each port number stands for."};
    DevicePickerPanel picker;
    Button cmd_Close{"cmd_Close", "&Close"};

    void Form_Load() override;

    void lst_Ports_Click();

  private:
    void list_ports();

    Subscription picker_changed_;
};

} // namespace pelvan
