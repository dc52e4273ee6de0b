// What serial devices this machine has, found without opening any: an opening pulses DTR and RTS,
// which restarts some people's equipment.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace pelvan {

struct SerialDevice {
    std::string path;        // a by-id link where there is one, else the node
    std::string node;        // "/dev/ttyUSB0"
    std::string description; // what the system tells of it, may be empty
    bool built_in = false;   // there whether anybody wants it or not, unlike a plugged adapter
};

/// Devices with hardware behind them, by-id names first.
[[nodiscard]] std::vector<SerialDevice> list_serial_devices();

enum class DeviceState { Openable, Missing, NoHardware, NoPermission, NotSerial };

/// Whether a path could be opened now, asked of the system without opening it. A device that
/// another program has open still counts as openable: only an opening would tell.
[[nodiscard]] DeviceState probe_device(const std::string& path);

/// How a person who may not open the node is let in, as the end of a sentence without its full
/// stop: "join group dialout (sudo usermod -aG dialout anna), then log in again". Empty when there
/// is no group whose members may.
[[nodiscard]] std::string joining_text(const std::string& path);

/// Whether two paths lead to the same node, links followed.
[[nodiscard]] bool same_device(const std::string& one, const std::string& other);

/// Whether an open handle, as of `SerialPort::CommID`, is one on the device that a path leads to.
[[nodiscard]] bool is_open_on(int handle, const std::string& path);

/// For a person: "may be opened", "not there", "no permission: join group dialout (sudo ..." ...
[[nodiscard]] std::string device_state_text(DeviceState state, const std::string& path);

/// For how long a USB adapter gathers bytes before it delivers them, in milliseconds; nothing where
/// the driver does not tell.
[[nodiscard]] std::optional<int> latency_timer_ms(const std::string& path);

/// The device that a port number means where nothing else was agreed: "/dev/ttyS0" for 1 and so on,
/// when there is hardware behind it.
[[nodiscard]] std::optional<std::string> built_in_device(int number);

} // namespace pelvan
