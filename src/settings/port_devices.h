// What the port numbers stand for on this machine, and which devices they may stand for. Nothing is
// opened here: an opening pulses the lines of equipment that somebody else may be working with.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "config/device_map.h"
#include "config/ini.h"
#include "platform/serial_devices.h"
#include "platform/serial_port.h"
#include "serial/channel_table.h"

namespace pelvan {

struct DeviceChoice {
    std::string device; // as it is written into the file; empty ends an assignment
    std::string text;
};

/// What is asked of the machine.
struct DeviceLookup {
    std::function<std::vector<SerialDevice>()> list = [] { return list_serial_devices(); };
    std::function<DeviceState(const std::string& path)> probe = [](const std::string& path) {
        return probe_device(path);
    };
    BuiltInDevice built_in = [](int number) { return built_in_device(number); };
    /// Why a port over the network did not open the last time; empty when nobody knows.
    std::function<std::string(const std::string& device)> network_trouble = [](const std::string&) {
        return std::string();
    };
    /// The adapter that has taken the name of the one that a device was so far, empty when none
    /// has; and that it is the device from now on.
    std::function<std::string(const std::string& device)> stranger = [](const std::string&) {
        return std::string();
    };
    std::function<void(const std::string& device)> adopt = [](const std::string&) {};
};

/// Why a port number should not, or cannot, stand for a device.
struct DeviceObjection {
    std::string sentence; // empty when nothing speaks against it
    bool lasting = true;  // whatever happens; else the device may only be away now
};

class PortDevices {
  public:
    /// `config` and `channels` are borrowed.
    PortDevices(const ConfigState& config, ChannelTable& channels, DeviceLookup lookup)
        : config_(config), channels_(channels), lookup_(std::move(lookup)) {}

    /// Looks again which devices are there.
    void refresh() { devices_ = lookup_.list(); }
    /// "/dev/ttyS0: may be opened", "no device"; for any number.
    [[nodiscard]] std::string meaning(int number) const;
    /// "not there", "simulated, may be opened"; for the text of any device. Nobody is asked over
    /// the network.
    [[nodiscard]] std::string state(const std::string& device) const;
    /// ", used by Full and Modbus", or nothing.
    [[nodiscard]] std::string users(int number) const;
    /// The device that the file assigns, and the one that the number stands for with or without
    /// that; empty when there is none.
    [[nodiscard]] std::string assigned(int number) const;
    [[nodiscard]] std::string standing(int number) const;
    /// The number that stands for a device under whichever of its names, 0 when none does.
    /// Simulated devices have none: every number may stand for the same one.
    [[nodiscard]] int number_of(const std::string& device) const;

    /// What a number may stand for. `device` is among them, whether it is there or not.
    [[nodiscard]] std::vector<DeviceChoice> choices(const std::string& device) const;
    /// The machine's only device, else the only one that was plugged in; empty when there is none
    /// or a choice.
    [[nodiscard]] std::string only_device() const;
    /// A number for another channel: that of the only device, else the lowest that stands for no
    /// device and that no channel has.
    [[nodiscard]] int proposed_number() const;

    /// Whether a number would stand for another device with this one; empty ends an assignment.
    [[nodiscard]] bool is_change(int number, const std::string& device) const;
    [[nodiscard]] DeviceObjection objection(const std::string& device) const;
    /// Why nothing may be assigned now, in a sentence: a tool has claimed the lines. Else empty.
    [[nodiscard]] std::string refusal() const { return channels_.line_use().refusal(nullptr); }
    /// Whether to use the adapter that has taken a device's name meanwhile; empty when none has.
    [[nodiscard]] std::string stranger_question(const std::string& device) const;
    /// Uses it with the next opening.
    void adopt(const std::string& device) const { lookup_.adopt(device); }
    /// Lets a port number stand for a device with the next rebuild. False when the assignment does
    /// not stand in the file then.
    [[nodiscard]] bool write(int number, const std::string& device) const;
    /// Rebuilds all channels: an open port would go on with the device that it was opened on.
    void rebuild() { channels_.init_comms(); }

  private:
    [[nodiscard]] std::string network_state(const std::string& device) const;

    const ConfigState& config_;
    ChannelTable& channels_;
    DeviceLookup lookup_;
    std::vector<SerialDevice> devices_;
};

} // namespace pelvan
