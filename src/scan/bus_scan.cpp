#include "scan/bus_scan.h"

#include "network/network_address.h"
#include "platform/run_time_error.h"
#include "platform/serial_devices.h"
#include "scan/port_loan.h"
#include "scan/scan_run.h"
#include "serial/trap.h"

namespace pelvan {
namespace {

/// The number of the port that has the device open here, 0 when none has.
int number_in_use(const std::string& device, const SerialState& channels) {
    for (const SerialPort* port : channels.gCommDevice)
        if (port->PortOpen() && is_open_on(port->CommID(), device)) return port->CommPort();
    return 0;
}

std::string failure_sentence(const RunTimeError& error, bool opened, std::int16_t port,
                             const SerialState& channels) {
    const std::string number = std::to_string(port);
    switch (error.number()) {
    case error_number::kInvalidPortNumber:
        return "Port " + number + " stands for no device that is there.";
    case error_number::kPortAlreadyOpen:
        if (const int other = number_in_use(error.subject(), channels); other != 0)
            return "Port " + number + " is in use by this program as port " +
                   std::to_string(other) + ": both numbers stand for one device.";
        return "Port " + number + " is in use by another program.";
    case error_number::kHardwareNotAvailable:
        if (is_network(error.subject()))
            return "Port " + number + " does not open: " + error.subject() + ".";
        if (probe_device(error.subject()) == DeviceState::NoPermission)
            return "Port " + number + " does not open: " + error.subject() + ": " +
                   device_state_text(DeviceState::NoPermission, error.subject()) + ".";
        return "Port " + number + " may not be opened: it is locked, or not permitted.";
    default:
        return (opened ? "The line was lost (error "
                       : "Port " + number + " does not open (error ") +
               std::to_string(error.number()) + ").";
    }
}

} // namespace

ScanResult BusScan::run(const ScanOptions& options, ScanListener& listener) {
    ScanResult result;
    const LineClaim claim = link_.claim();
    if (!claim) {
        result.how = ScanEnd::Refused;
        result.reason = link_.refusal();
        return result;
    }
    const PortLoan loan(link_.channels(), options.port);
    const double begun_ms = tick_.precise_ms();
    ScanRun run({link_, tick_, dialogs_}, make_port_(), options, listener, result);
    if (run.empty()) {
        result.how = ScanEnd::Refused;
        result.reason = "Nothing is chosen that could be tried.";
        return result;
    }
    try {
        run.all();
    } catch (const RunTimeError& error) {
        ErrorTrap(log_, dialogs_, "bus_scan").record(error);
        result.how = ScanEnd::Failed;
        result.reason =
            failure_sentence(error, run.opened(), options.port, link_.channels().state());
    }
    result.taken_ms = tick_.precise_ms() - begun_ms;
    return result;
}

} // namespace pelvan
