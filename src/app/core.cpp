#include "app/core.h"

#include "config/application_directory.h"
#include "config/device_map.h"

namespace pelvan {
namespace {

/// Beside the program. Where that is, is found out when it is needed.
OpenNetworkLine own_network_module(std::string& error) {
    return network_module_in(find_own_installation().modules)(error);
}

} // namespace

Core::Core(Services given, LineOpener opener)
    : messages(given.dialogs), services{given.tick, given.clock, messages, given.desktop,
                                        std::move(given.application_directory)},
      events(services.dialogs), simulators(services.tick),
      network(services.tick, own_network_module), error_log(services.clock),
      comms([this] { return make_port(); }),
      channels(session.serial, session.config, comms, services.dialogs, error_log),
      countdowns(session.serial, services.tick),
      link(channels, countdowns, services.dialogs, error_log, "Command Center"),
      listen_link(channels, countdowns, services.dialogs, error_log, "Listening Mode"),
      logging_link(channels, countdowns, services.dialogs, error_log, "Data Logging"),
      transfer_link(channels, countdowns, services.dialogs, error_log, "Save/Restore Setup"),
      profile_link(channels, countdowns, services.dialogs, error_log, "Profile Logic"),
      scan_link(channels, countdowns, services.dialogs, error_log, "Bus Scan"),
      bad_request_link(channels, countdowns, services.dialogs, error_log, "Bad Requests"),
      modbus(session.modbus), senders(link, modbus, services.clock, services.dialogs),
      repeat(link, services.tick, messages),
      listen_monitor(listen_link, modbus, session.listen, services.clock,
                     services.application_directory),
      data_logger(services, messages, session.config, logging_link, modbus, session.logging),
      bus_scan(
          scan_link, [this] { return make_port(); }, services.tick, services.dialogs, error_log),
      opener_(std::move(opener)) {}

std::unique_ptr<SerialPort> Core::make_port() {
    return std::make_unique<LinePort>(
        [this](int number) { return device_for_port(number, session.config.gIniFile); },
        [this](const std::string& device, const LineSettings& settings) {
            if (simulator::is_simulated(device)) return simulators.open(device, settings);
            if (is_network(device)) return network.open(device, settings);
            return open_device(device, settings);
        });
}

std::unique_ptr<SerialLine> Core::open_device(const std::string& device,
                                              const LineSettings& settings) {
    const std::string path = adapters.path_of(device);
    try {
        auto line = opener_(path, settings);
        adapters.opened(device);
        refused_.erase(device);
        return line;
    } catch (const RunTimeError&) {
        const std::string refusal = refusal_of(device);
        if (!refusal.empty() && refused_.insert(device).second) device_refused.raise(refusal);
        throw;
    }
}

std::string Core::refusal_of(const std::string& device) const {
    if (const std::string other = adapters.another_at(device); !other.empty())
        return device + " is another adapter now (" + other + "), which is not used instead of " +
               adapters.path_of(device) +
               ": plug that in; to use this one, save the port settings or start again";
    const std::string path = adapters.path_of(device);
    const DeviceState state = probe_device(path);
    return state == DeviceState::NoPermission ? path + ": " + device_state_text(state, path) : "";
}

DeviceLookup Core::device_lookup() {
    DeviceLookup lookup;
    lookup.stranger = [this](const std::string& device) { return adapters.another_at(device); };
    lookup.adopt = [this](const std::string& device) { adapters.forget(device); };
    lookup.network_trouble = [this](const std::string& device) { return network.trouble(device); };
    return lookup;
}

} // namespace pelvan
