#include "serial/other_parity.h"

#include "platform/run_time_error.h"

namespace pelvan {

SerialPort& port_in_use(ChannelTable& channels, std::int16_t channel) {
    const auto& devices = channels.state().gCommDevice;
    SerialPort& own = *devices[checked_index(channel, devices.size())];
    for (SerialPort* device : devices)
        if (device->PortOpen() && device->CommPort() == own.CommPort() &&
            device->Settings() == own.Settings())
            return *device;
    return own;
}

OtherParity::OtherParity(ChannelTable& channels, std::int16_t channel, char parity)
    : port_(port_in_use(channels, channel)), was_open_(port_.PortOpen()) {
    port_.set_PortOpen(false);
    port_.set_OtherParity(parity);
    try {
        port_.set_PortOpen(true);
    } catch (const RunTimeError&) {
        put_back();
        throw;
    }
}

/// A line that is lost cannot be opened; its own parity is what the next opening takes all the
/// same.
void OtherParity::put_back() {
    port_.set_PortOpen(false);
    port_.set_OtherParity('\0');
    try {
        if (was_open_) port_.set_PortOpen(true);
    } catch (const RunTimeError&) {
    }
}

} // namespace pelvan
