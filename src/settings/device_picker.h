// What a port number stands for on this machine, and the list from which another device is assigned
// to it. Both windows of this folder hold one. Nothing is opened here: an opening pulses the lines
// of equipment that somebody else may be working with.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "forms/lists.h"
#include "platform/serial_devices.h"
#include "platform/services.h"
#include "serial/channel_table.h"

namespace pelvan {

inline constexpr int kLowestPortNumber = 1;
inline constexpr int kHighestPortNumber = 16;

/// "/dev/ttyS0: may be opened", "no device"; for any number.
[[nodiscard]] std::string port_meaning(int number, const std::string& ini_file);

class DevicePicker {
  public:
    using DeviceList = std::function<std::vector<SerialDevice>()>;

    DevicePicker(Services& services, const ConfigState& config, ChannelTable& channels,
                 DeviceList devices);

    Frame fram_Device{"fram_Device", "Device of This Port"};
    Label lbl_DeviceState{"lbl_DeviceState"};
    Label lbl_Device{"lbl_Device", "De&vice"};
    ComboBox cmb_Device;
    Button cmd_AssignDevice{"cmd_AssignDevice", "Assi&gn to Port",
                            "Let the port number stand for this device from now on."};
    Button cmd_RefreshDevices{"cmd_RefreshDevices", "Re&fresh",
                              "Look again which devices are there."};

    /// Looks at the machine's devices anew.
    void refresh();
    /// Shows what this number stands for; any number is allowed.
    void show_port(int number);
    /// Called after an assignment.
    std::function<void()> assigned;

  private:
    struct Choice {
        std::string device; // as it is written into the file; empty ends an assignment
        std::string text;
    };
    [[nodiscard]] bool is_port() const;
    void fill_choices();
    void assign();

    Services& services_;
    const ConfigState& config_;
    ChannelTable& channels_;
    DeviceList list_devices_;
    std::vector<SerialDevice> devices_;
    std::vector<Choice> choices_;
    int number_ = 0;
};

} // namespace pelvan
