// How the line of a channel is doing, for whoever shows it. It is found out from the port objects
// and from the system's files: nothing is opened, read or driven for it, so that it may be asked
// for several times a second, also while a tool is at work on the line.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "serial/channel_table.h"

namespace pelvan {

struct LineStatus {
    /// No such channel; a port number that stands for no device; a device that cannot be opened
    /// now; one that waits for the first command; one that is open.
    enum class State { NoPort, NoDevice, Away, Closed, Open };
    State state = State::NoPort;
    int port = 0;
    std::string device; // as it is assigned: "/dev/serial/by-id/...", "simulated:742"
    std::string settings;
    std::string
        trouble; // why it cannot be opened: "not there", "no permission: join group dialout"
    std::optional<LineErrors> errors; // of the open line, where the hardware counts them
    std::string echo; // what was wrong with it in the last exchange: "no echo", "echo differs"
    std::string user; // the tool that uses it, empty when none does
};

/// "Modbus | Port 3 | ttyUSB0 | 9600,N,8,1 | open | in use by Data Logging", or what is missing.
[[nodiscard]] std::string line_text(const std::string& protocol, const LineStatus& status);

/// What a device is called for short: without the directory that all devices lie in, and long names
/// without their middle.
[[nodiscard]] std::string device_name(const std::string& device);

class LineObserver {
  public:
    /// Why a device cannot be opened, in words; empty when it can.
    using DeviceTrouble = std::function<std::string(const std::string& device)>;

    /// `channels` and `config` are borrowed.
    LineObserver(ChannelTable& channels, const ConfigState& config, DeviceTrouble trouble)
        : channels_(channels), config_(config), trouble_(std::move(trouble)) {}

    /// Looks at a channel's line; ports whose line is gone are given up, because the system gives
    /// an adapter another name while its old one is held. The assignments are read anew after each
    /// rebuild of the channels alone. Takes some microseconds.
    [[nodiscard]] LineStatus look(int channel);

  private:
    [[nodiscard]] const std::string& device_of(int port);
    void look_at_open(int channel, std::size_t index, LineStatus& status) const;
    [[nodiscard]] std::optional<std::size_t> open_port(const SerialPort& wanted) const;

    struct Assignment {
        int port = 0;
        std::string device;
    };
    ChannelTable& channels_;
    const ConfigState& config_;
    DeviceTrouble trouble_;
    std::optional<Assignment> known_; // of the port that was looked at last
    Subscription rebuilding_ = channels_.before_rebuild.subscribe([this] { known_.reset(); });
};

} // namespace pelvan
