#include <map>

#include "terminal/commands.h"

namespace pelvan {
namespace {

struct SendOptions {
    int function = 3;
    ModbusEntry entry{2, "1", "0", "1", false};
    std::vector<std::string> values{"1"};
    bool long_values = false;
    DataFormat format = DataFormat::Decimal;
};

/// Row of the command types for a function code; nothing for a code that none has.
std::optional<std::size_t> type_of(int function, bool long_values) {
    const auto& types = modbus_command_types();
    for (std::size_t i = 0; i < types.size(); ++i) {
        const bool is_long =
            types[i].command == ModbusCommand::Read32 || types[i].command == ModbusCommand::Write32;
        if (types[i].function == function && is_long == long_values) return i;
    }
    return std::nullopt;
}

int send(const SendOptions& options, TerminalEnvironment& environment) {
    TerminalApplication terminal(environment);
    ModbusEntry entry = options.entry;
    const auto type = type_of(options.function, options.long_values);
    if (!type) {
        environment.err << "pelvan7: Bad COMMAND TYPE selected.\n";
        return exit_code::kFailed;
    }
    entry.type = *type;
    entry.values.clear();
    for (const std::string& value : options.values)
        entry.values += value + " ";
    if (!terminal.start()) return exit_code::kFailed;
    terminal.app().console.modbus.set_entry(entry);
    return send_and_print(terminal, environment, options.format);
}

} // namespace

int send_and_print(TerminalApplication& terminal, TerminalEnvironment& environment,
                   DataFormat format) {
    Application& app = terminal.app();
    const SendOutcome outcome = app.console.modbus.send(format);
    // A refusal was shown as a message already.
    if (outcome.kind == SendOutcome::Kind::Refused) return exit_code::kFailed;
    const int last = app.history.frmCommand.list.ListCount() - 1;
    environment.out << app.history.frmCommand.list.List(last) << "\n";
    const std::string& response = app.history.frmResponse.list.List(last);
    if (outcome.kind == SendOutcome::Kind::NoReply) {
        environment.err << "pelvan7: " << response << "\n";
        return exit_code::kFailed;
    }
    environment.out << response << "\n";
    return exit_code::kDone;
}

void add_send_command(CLI::App& cli, ChosenCommand& chosen) {
    auto options = std::make_shared<SendOptions>();
    CLI::App* command = cli.add_subcommand("send", "Send one command and print it and its reply");
    const std::map<std::string, DataFormat> formats{{"decimal", DataFormat::Decimal},
                                                    {"hex", DataFormat::Hex},
                                                    {"smart", DataFormat::SmartDec}};
    command->add_option("--address", options->entry.address, "Controller address, 0 to 247")
        ->capture_default_str();
    command->add_option("--function", options->function, "Modbus function: 1-6, 8, 15 or 16")
        ->capture_default_str();
    command->add_option("--register", options->entry.start_register, "Start register, 0 to 65535")
        ->capture_default_str();
    command
        ->add_option("--values", options->values,
                     "Count to read, or values to write, separated by commas or blanks")
        ->delimiter(',');
    command->add_flag("--hexadecimal", options->entry.hexadecimal, "Values are hexadecimal");
    command->add_flag("--long", options->long_values,
                      "32-bit values in two registers each, with functions 3 and 16");
    command->add_option("--format", options->format, "decimal, hex or smart")
        ->transform(CLI::CheckedTransformer(formats, CLI::ignore_case));
    command->callback([options, &chosen] {
        chosen = [options](TerminalEnvironment& environment) {
            return send(*options, environment);
        };
    });
}

} // namespace pelvan
