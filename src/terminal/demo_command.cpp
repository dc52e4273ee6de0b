#include "terminal/commands.h"

namespace pelvan {
namespace {

struct DemoStep {
    const char* what;
    std::size_t type; // row of modbus_command_types()
    const char* start_register;
    const char* values;
    DataFormat format;
};

constexpr DemoStep kSteps[] = {
    {"Model, serial number (two registers), software number and revision", 2, "0", "5",
     DataFormat::SmartDec},
    {"The same, the complete packet in decimal", 2, "0", "5", DataFormat::Decimal},
    {"The same in hexadecimal", 2, "0", "5", DataFormat::Hex},
    {"A register that no controller has, to see an exception", 2, "65000", "1",
     DataFormat::SmartDec},
    {"Loop-back of a test pattern", 11, "0", "1234", DataFormat::Decimal},
};

int demo(TerminalEnvironment& environment) {
    TerminalApplication terminal(environment);
    if (!terminal.start()) return exit_code::kFailed;
    for (const DemoStep& step : kSteps) {
        environment.out << step.what << "\n";
        const ModbusEntry entry{step.type, "1", step.start_register, step.values, false};
        // One of the steps is there to show a refusal.
        if (!print_outcome(terminal.app().senders.modbus.send(entry, {step.format, false}),
                           environment))
            return exit_code::kFailed;
        environment.out << "\n";
    }
    return exit_code::kDone;
}

} // namespace

void add_demo_command(CLI::App& cli, ChosenCommand& chosen) {
    CLI::App* command = cli.add_subcommand(
        "demo", "Send a handful of Modbus commands to the controller at address 1");
    command->callback([&chosen] { chosen = demo; });
}

} // namespace pelvan
