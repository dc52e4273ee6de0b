#include "serial/line_status.h"

#include "config/device_map.h"

namespace pelvan {
namespace {

constexpr char kSetUp[] = ": F9 sets it up";
constexpr std::size_t kShownDevice =
    48; // more than adapters' names by maker and serial number have

std::string state_text(const LineStatus& status) {
    switch (status.state) {
    case LineStatus::State::Open:
        return "open";
    case LineStatus::State::Closed:
        return "closed";
    default:
        return status.trouble;
    }
}

} // namespace

std::string device_name(const std::string& device) {
    std::string name = device;
    for (const char* directory : {"/dev/serial/by-id/", "/dev/"}) {
        if (!name.starts_with(directory)) continue;
        name.erase(0, std::string(directory).size());
        break;
    }
    if (name.size() <= kShownDevice) return name;
    // The end tells two adapters of a kind apart.
    constexpr std::size_t kHalf = (kShownDevice - 3) / 2;
    return name.substr(0, kHalf) + "..." + name.substr(name.size() - kHalf);
}

std::string line_text(const std::string& protocol, const LineStatus& status) {
    if (status.state == LineStatus::State::NoPort) return "No port for " + protocol + kSetUp;
    std::string text = protocol + " | Port " + std::to_string(status.port);
    if (status.state == LineStatus::State::NoDevice)
        text += std::string(" stands for no device") + kSetUp;
    else
        text += " | " + device_name(status.device) + " | " + status.settings + " | " +
                state_text(status) + (status.echo.empty() ? "" : " | " + status.echo);
    if (!status.user.empty()) text += " | in use by " + status.user;
    return text;
}

LineStatus LineObserver::look(int channel) {
    const auto& devices = channels_.state().gCommDevice;
    for (SerialPort* port : devices)
        static_cast<void>(port->lost());
    LineStatus status;
    status.user = channels_.line_use().holder();
    if (channel < 0 || static_cast<std::size_t>(channel) >= devices.size()) return status;
    const SerialPort& port = *devices[static_cast<std::size_t>(channel)];
    status.port = port.CommPort();
    status.settings = port.Settings();
    status.device = device_of(status.port);
    if (status.device.empty()) {
        status.state = LineStatus::State::NoDevice;
    } else if (const auto open = open_port(port)) {
        look_at_open(channel, *open, status);
    } else {
        status.trouble = trouble_(status.device);
        status.state = status.trouble.empty() ? LineStatus::State::Closed : LineStatus::State::Away;
    }
    return status;
}

const std::string& LineObserver::device_of(int port) {
    if (!known_ || known_->port != port)
        known_ = {port, device_for_port(port, config_.gIniFile).value_or("")};
    return known_->device;
}

void LineObserver::look_at_open(int channel, std::size_t index, LineStatus& status) const {
    status.state = LineStatus::State::Open;
    status.errors = channels_.state().gCommDevice[index]->line_errors();
    if (channels_.exchange_way(static_cast<std::int16_t>(channel)).echo)
        status.echo =
            echo_trouble(channels_.line_record(static_cast<std::int16_t>(index)).echo.echo());
}

/// Its own object's index, or that of a channel that has the same port open for both.
std::optional<std::size_t> LineObserver::open_port(const SerialPort& wanted) const {
    const auto& devices = channels_.state().gCommDevice;
    for (std::size_t i = 0; i < devices.size(); ++i)
        if (devices[i]->CommPort() == wanted.CommPort() &&
            devices[i]->Settings() == wanted.Settings() && devices[i]->PortOpen() &&
            !devices[i]->lost())
            return i;
    return {};
}

} // namespace pelvan
