#include "config/device_map.h"
#include "console/start_up.h"
#include "platform/serial_devices.h"
#include "platform/serial_port.h"
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

int list_ports(TerminalEnvironment& environment) {
    std::ostream& out = environment.out;
    const std::string ini = configuration_path(environment.directory);
    out << "Serial devices of this machine:\n";
    const auto devices = list_serial_devices();
    for (const SerialDevice& device : devices) {
        out << "  " << device.path;
        if (device.path != device.node) out << " (" << device.node << ")";
        out << ": " << state_of(device.path) << "\n";
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
    return exit_code::kDone;
}

} // namespace

void add_ports_command(CLI::App& cli, ChosenCommand& chosen) {
    CLI::App* command = cli.add_subcommand(
        "ports", "List serial devices and what port numbers stand for, opening none");
    command->callback([&chosen] { chosen = list_ports; });
}

} // namespace pelvan
