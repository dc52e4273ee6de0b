// What the port numbers stand for on this machine, and which devices they may stand for. Nothing is
// opened here: an opening pulses the lines of equipment that somebody else may be working with.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "config/ini.h"
#include "platform/serial_devices.h"
#include "platform/serial_port.h"
#include "serial/channel_table.h"

namespace pelvan {

struct DeviceChoice {
    std::string device; // as it is written into the file; empty ends an assignment
    std::string text;
};

/// What a port number may stand for, and which of it it stands for now.
struct DeviceChoices {
    std::vector<DeviceChoice> list;
    std::size_t present = 0;
};

class PortDevices {
  public:
    using DeviceList = std::function<std::vector<SerialDevice>()>;

    /// `list` looks at the machine; `config` and `channels` are borrowed.
    PortDevices(const ConfigState& config, ChannelTable& channels, DeviceList list)
        : config_(config), channels_(channels), list_(std::move(list)) {}

    /// Looks again which devices are there.
    void refresh() { devices_ = list_(); }
    /// "/dev/ttyS0: may be opened", "no device"; for any number.
    [[nodiscard]] std::string meaning(int number) const;
    /// A device that is assigned, but not among those that are there, is a choice, too.
    [[nodiscard]] DeviceChoices choices(int number) const;
    /// Why nothing may be assigned now, in a sentence: a tool has claimed the lines. Else empty.
    [[nodiscard]] std::string refusal() const { return channels_.line_use().refusal(nullptr); }
    /// Lets a port number stand for a device from now on and rebuilds all channels: an open port
    /// would go on with the device that it was opened on. False when it could not be written.
    [[nodiscard]] bool assign(int number, const std::string& device);

  private:
    [[nodiscard]] std::string assigned(int number) const;

    const ConfigState& config_;
    ChannelTable& channels_;
    DeviceList list_;
    std::vector<SerialDevice> devices_;
};

} // namespace pelvan
