// "Serial Devices": what each of the 16 port numbers stands for on this machine, and the assigning
// of another device.
#pragma once

#include "forms/form.h"
#include "settings/device_picker_panel.h"

namespace pelvan {

class frm_SerialDevices : public Form {
  public:
    frm_SerialDevices(Services& services, const ConfigState& config, ChannelTable& channels,
                      DeviceLookup lookup = {});

    Label lbl_Ports{"lbl_Ports", "&Port Numbers"};
    /// One line a port number, from 1 on.
    ListBox lst_Ports{"lst_Ports", "", "What each port number stands for."};
    DevicePickerPanel picker;
    Button cmd_Close{"cmd_Close", "&Close", "Assign what was chosen and close the window."};

    void Form_Load() override;
    /// Asks about what was chosen and is not assigned yet.
    bool Form_Unload() override;

    void lst_Ports_Click();
    void cmd_Close_Click();

  private:
    void list_ports();

    Services& services_;
    Subscription picker_changed_;
};

} // namespace pelvan
