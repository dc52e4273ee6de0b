// Shows what a port number stands for on this machine, and a list from which another device is
// assigned to it. Both windows of this folder hold one.
#pragma once

#include "forms/lists.h"
#include "platform/event.h"
#include "platform/services.h"
#include "settings/port_devices.h"

namespace pelvan {

class DevicePickerPanel {
  public:
    DevicePickerPanel(Services& services, const ConfigState& config, ChannelTable& channels,
                      PortDevices::DeviceList devices);

    Frame fram_Device{"fram_Device", "Device of This Port"};
    Label lbl_DeviceState{"lbl_DeviceState"};
    Label lbl_Device{"lbl_Device", "De&vice"};
    ComboBox cmb_Device;
    Button cmd_AssignDevice{"cmd_AssignDevice", "Assi&gn to Port",
                            "Let the port number stand for this device from now on."};
    Button cmd_RefreshDevices{"cmd_RefreshDevices", "Re&fresh",
                              "Look again which devices are there."};

    /// Looks again at the machine's devices.
    void refresh();
    /// Shows what this number stands for; any number is allowed.
    void show_port(int number);
    [[nodiscard]] const PortDevices& devices() const { return devices_; }
    /// Raised when any number may stand for something else.
    Event<> changed;

  private:
    void assign();

    Services& services_;
    const ConfigState& config_;
    PortDevices devices_;
    std::vector<DeviceChoice> choices_;
    int number_ = 0;
};

} // namespace pelvan
