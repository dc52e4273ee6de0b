#include "config/device_map.h"
#include "config/ini.h"
#include "console/protocol_number.h"
#include "console/start_up.h"
#include "platform/serial_devices.h"
#include "platform/serial_port.h"
#include "serial/frame_exchange.h"
#include "simulator/line/device_text.h"
#include "terminal/commands.h"

namespace pelvan {
namespace {

std::string state_of(const std::string& device) {
    if (simulator::is_simulated(device))
        return simulator::parse_simulated_device(device) ? "simulated controller"
                                                         : "no simulated controller is called so";
    return device_state_text(probe_device(device), device);
}

/// The channels of the configuration file, as they will be built.
void list_channels(std::ostream& out, const std::string& ini) {
    out << "Channels:\n";
    const auto text = [&](const std::string& key) {
        return ini_read_string(ini_key::kCommsSection, key, {}, ini);
    };
    int n = 0;
    for (; n < protocol::kCount; ++n) {
        const std::string port = text(ini_key::comm_port(n));
        if (port.empty() || port == "0") break;
        const std::string settings = text(ini_key::port_setting(n));
        const bool complete = exchange_way(text(ini_key::exchange(n)), settings).complete;
        out << "  DEVICE " << n << ": PORT " << port << ", " << settings << ", replies end "
            << (complete ? "with their frame (COMPLETE)" : "with a pause (QUIET)") << "\n";
    }
    if (n == 0) out << "  none is configured\n";
}

void list_details(std::ostream& out, const SerialDevice& device) {
    if (!device.description.empty()) out << "    " << device.description << "\n";
    const auto latency = latency_timer_ms(device.path);
    out << "    latency timer: ";
    if (latency)
        out << *latency << " ms\n";
    else
        out << "not told by its driver\n";
}

int list_ports(TerminalEnvironment& environment, bool verbose) {
    std::ostream& out = environment.out;
    const std::string ini = configuration_path(environment.directory);
    out << "Serial devices of this machine:\n";
    const auto devices = list_serial_devices();
    for (const SerialDevice& device : devices) {
        out << "  " << device.path;
        if (device.path != device.node) out << " (" << device.node << ")";
        out << ": " << state_of(device.path) << "\n";
        if (verbose) list_details(out, device);
    }
    if (devices.empty()) out << "  none\n";
    out << "Port numbers (section \"SERIAL DEVICES\" of " << ini << "):\n";
    bool any = false;
    for (int number = kMinPortNumber; number <= kMaxPortNumber; ++number) {
        const auto device = device_for_port(number, ini);
        if (!device) continue;
        any = true;
        out << "  PORT " << number << " = " << *device << ": " << state_of(*device) << "\n";
    }
    if (!any) out << "  none stands for a device yet\n";
    list_channels(out, ini);
    return exit_code::kDone;
}

} // namespace

void add_ports_command(CLI::App& cli, ChosenCommand& chosen) {
    CLI::App* command = cli.add_subcommand(
        "ports", "List serial devices and what port numbers stand for, opening none");
    const auto verbose = std::make_shared<bool>(false);
    command->add_flag("--verbose", *verbose,
                      "Also what the system tells of each device and its latency timer");
    command->callback([&chosen, verbose] {
        chosen = [verbose](TerminalEnvironment& environment) {
            return list_ports(environment, *verbose);
        };
    });
}

} // namespace pelvan
