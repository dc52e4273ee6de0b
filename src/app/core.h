// What every front end stands on: the session's state, the link, and the tools' engines. No control
// and no form: the terminal's commands work with this alone, the windows with `Application`, which
// puts the forms on top of it.
#pragma once

#include <set>

#include "app/error_boundary.h"
#include "app/session.h"
#include "console/repeat.h"
#include "console/senders.h"
#include "listen/listen_monitor.h"
#include "logging/data_logger.h"
#include "network/network_lines.h"
#include "platform/adapter_follower.h"
#include "platform/line_port.h"
#include "platform/message_router.h"
#include "platform/services.h"
#include "scan/bus_scan.h"
#include "serial/link.h"
#include "settings/port_devices.h"
#include "simulator/line/simulator_registry.h"

namespace pelvan {

class Core {
  public:
    /// `opener` opens the devices of this machine.
    Core(Services services, LineOpener opener);
    Core(const Core&) = delete;
    Core& operator=(const Core&) = delete;

    MessageRouter messages;
    Services services; // its dialogs are the router
    Session session;
    ErrorBoundary events;
    simulator::SimulatorRegistry simulators;
    NetworkLines network;
    AdapterFollower adapters;
    ErrorLog error_log;
    frm_Comms comms;
    ChannelTable channels;
    CountdownPool countdowns;
    /// One a tool, so that whoever is refused is told which of them has the line.
    Link link; // the console's
    Link listen_link;
    Link logging_link;
    Link transfer_link;
    Link profile_link;
    Link scan_link;
    Link bad_request_link;
    Modbus modbus;
    Senders senders;
    Repeat repeat; // of the console, and of the terminal's `send`
    ListenMonitor listen_monitor;
    DataLogger data_logger;
    BusScan bus_scan;

    /// The machine's devices, and what became of ports over the network.
    [[nodiscard]] DeviceLookup device_lookup();
    /// A device of this machine is not opened for want of a permission, or because another adapter
    /// has taken its name: which one, and what helps. Raised once until it opens.
    Event<const std::string&> device_refused;

  private:
    [[nodiscard]] std::unique_ptr<SerialPort> make_port();
    [[nodiscard]] std::unique_ptr<SerialLine> open_device(const std::string& device,
                                                          const LineSettings& settings);
    LineOpener opener_;
    [[nodiscard]] std::string refusal_of(const std::string& device) const;
    std::set<std::string> refused_; // told
};

} // namespace pelvan
