#include "app/core.h"

#include "config/device_map.h"

namespace pelvan {

Core::Core(Services given, LineOpener opener)
    : messages(given.dialogs), services{given.tick, given.clock, messages, given.desktop,
                                        std::move(given.application_directory)},
      events(services.dialogs), simulators(services.tick), error_log(services.clock),
      comms([this] { return make_port(); }),
      channels(session.serial, session.config, comms, services.dialogs, error_log),
      countdowns(session.serial, services.tick),
      link(channels, countdowns, services.dialogs, error_log, "Command Center"),
      listen_link(channels, countdowns, services.dialogs, error_log, "Listening Mode"),
      logging_link(channels, countdowns, services.dialogs, error_log, "Data Logging"),
      transfer_link(channels, countdowns, services.dialogs, error_log, "Save/Restore Setup"),
      profile_link(channels, countdowns, services.dialogs, error_log, "Profile Logic"),
      scan_link(channels, countdowns, services.dialogs, error_log, "Bus Scan"),
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
            return opener_(device, settings);
        });
}

} // namespace pelvan
