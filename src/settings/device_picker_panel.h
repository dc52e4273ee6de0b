// Shows what a port number stands for on this machine, and a box in which another device for it is
// chosen or typed. Both windows of this folder hold one. What was chosen is kept until it is
// assigned: by the window that saves, or by the button.
#pragma once

#include <map>

#include "forms/lists.h"
#include "platform/event.h"
#include "platform/services.h"
#include "settings/port_devices.h"

namespace pelvan {

class DevicePickerPanel {
  public:
    /// With `ForChannel` a device is chosen for the channel whose number is shown: it goes along to
    /// another number that stands for none, and the machine's only device is proposed. With
    /// `ForNumbers` each number keeps what was chosen for it.
    enum class Purpose { ForChannel, ForNumbers };

    DevicePickerPanel(Services& services, const ConfigState& config, ChannelTable& channels,
                      DeviceLookup lookup, Purpose purpose);

    Frame fram_Device{"fram_Device", "Device of This Port"};
    Label lbl_DeviceState{"lbl_DeviceState"};
    Label lbl_Device{"lbl_Device", "De&vice"};
    ComboBox cmb_Device;
    Button cmd_AssignDevice{"cmd_AssignDevice", "Assi&gn to Port",
                            "Let the port number stand for this device from now on (Enter)."};
    Button cmd_RefreshDevices{"cmd_RefreshDevices", "Re&fresh",
                              "Look again which devices are there."};

    /// Looks again at the machine's devices.
    void refresh();
    /// Shows what this number stands for; any number is allowed.
    void show_port(int number);
    /// The device in the box, empty for none.
    [[nodiscard]] std::string device() const;
    /// Drops what was chosen and not assigned.
    void forget() { chosen_.clear(); }
    /// Whether somebody chose a device that is not assigned yet.
    [[nodiscard]] bool pending() const { return !chosen_.empty(); }
    /// Whether to assign what was chosen, which it names.
    [[nodiscard]] std::string pending_question() const;

    /// Whether the device in the box may be assigned; says what speaks against it, or asks. Asks
    /// whether to use another adapter that has taken its name; without that the device is away.
    [[nodiscard]] bool accept();
    /// Writes the device in the box for the number that is shown, when that is a change; it takes
    /// effect with the next rebuild. False when it does not stand in the file then.
    [[nodiscard]] bool write();
    /// Assigns all that was chosen and rebuilds the channels. False, with a message, when something
    /// of it is not assigned, whose number is shown then.
    bool assign_pending();
    [[nodiscard]] int shown_port() const { return number_; }

    [[nodiscard]] const PortDevices& devices() const { return devices_; }
    /// Raised when any number may stand for something else.
    Event<> changed;
    /// Raised when somebody chose a device from the list (true) or is typing one.
    Event<bool> chosen;

  private:
    [[nodiscard]] std::string wanted(int number);
    void choose(bool listed);
    void fill(const std::string& wanted_device);
    void show_state();
    [[nodiscard]] bool may_assign(const std::string& device);
    void ask_about_stranger();
    bool assign(int number, const std::string& device);

    Services& services_;
    const ConfigState& config_;
    PortDevices devices_;
    Purpose purpose_;
    std::vector<DeviceChoice> choices_;
    std::map<int, std::string> chosen_; // by number; in the file stands something else
    int number_ = 0;                    // 0 when none is shown
    bool filling_ = false;              // the box changes by the program's doing
};

} // namespace pelvan
