#include <algorithm>
#include <utility>

#include "console/protocol_number.h"
#include "protocols/full/full_protocol.h"
#include "terminal/commands.h"
#include "text/numbers.h"

namespace pelvan {
namespace {

/// How long one wait lasts at most, so that an interrupt is noticed soon.
constexpr int kWaitMs = 50;
constexpr double kMsPerSecond = 1000;

/// What the command line says, for whichever protocol.
struct SendOptions {
    int protocol = protocol::kModbus;
    std::string address = "1";
    std::string text; // Full, Xon
    int function = 3;
    std::string start_register = "0";
    std::vector<std::string> values{"1"};
    bool hexadecimal = false;
    bool long_values = false;
    ModbusSendOptions modbus;
    TelluraEntry tellura;
    long repeat = 0; // 0: until interrupted
    double interval_s = 1;
    CLI::Option* repeat_option = nullptr;
    CLI::Option* text_option = nullptr;
    CLI::Option* write_option = nullptr;
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

/// What is missing in the options, or too much.
std::optional<std::string> complaint(const SendOptions& options) {
    const bool has_text = options.protocol == protocol::kFull || options.protocol == protocol::kXon;
    if (has_text != (options.text_option->count() > 0))
        return has_text ? "the command text is missing"
                        : "a command text goes with the protocols full and xon only";
    // The protocol would say so and go on with controller 1: nobody stands here to read that first.
    if (options.protocol == protocol::kFull && !whole_number(options.address, 0, kFullMaxAddress))
        return "--address: give a whole number from 0 to " + std::to_string(kFullMaxAddress);
    if (options.protocol == protocol::kModbus && !type_of(options.function, options.long_values))
        return "Bad COMMAND TYPE selected.";
    return std::nullopt;
}

SendOutcome send_modbus(const SendOptions& options, ModbusSender& sender) {
    ModbusEntry entry{*type_of(options.function, options.long_values), options.address,
                      options.start_register, "", options.hexadecimal};
    for (const std::string& value : options.values)
        entry.values += value + " ";
    return sender.send(entry, options.modbus);
}

SendOutcome send_tellura(const SendOptions& options, TelluraSender& sender) {
    TelluraEntry entry = options.tellura;
    entry.device_address = options.address;
    entry.write = options.write_option->count() > 0;
    return sender.send(entry);
}

SendOutcome send_with(const SendOptions& options, Senders& senders) {
    switch (options.protocol) {
    case protocol::kFull:
        return senders.text.send(TextProtocol::Full, {options.address, options.text});
    case protocol::kXon:
        return senders.text.send(TextProtocol::Xon, {options.address, options.text});
    case protocol::kTellura:
        return send_tellura(options, senders.tellura);
    default:
        return send_modbus(options, senders.modbus);
    }
}

/// Prints command, reply and what is against it; 0 when the controller did what it was asked.
int print_judged(const SendOutcome& outcome, TerminalEnvironment& environment) {
    const bool answered = print_outcome(outcome, environment);
    if (answered && !outcome.accepted) environment.err << "pelvan7: " << outcome.objection << "\n";
    environment.out.flush();
    if (outcome.kind == SendOutcome::Kind::Refused) return exit_code::kBadOption;
    return answered && outcome.accepted ? exit_code::kDone : exit_code::kFailed;
}

/// Sends at the interval until it was often enough or an interrupt comes; 0 when every sending, one
/// at least, was answered.
int send_repeatedly(const SendOptions& options, Core& app, TerminalEnvironment& environment) {
    Repeat& repeat = app.repeat;
    const auto enough = [&] {
        return options.repeat > 0 && repeat.counts().sent() >= options.repeat;
    };
    repeat.start([&] { return send_with(options, app.senders); },
                 options.interval_s * kMsPerSecond);
    std::string told; // why a port was not open, once
    while (repeat.running() && !environment.stop && !enough()) {
        if (const auto outcome = repeat.tick()) {
            const std::string& reason = repeat.counts().last_failure;
            const int code = print_judged(*outcome, environment);
            if (code == exit_code::kBadOption) return code;
            if (code != exit_code::kDone && outcome->kind == SendOutcome::Kind::NotSent &&
                reason != outcome->status && std::exchange(told, reason) != reason)
                environment.err << "pelvan7: " << reason << "\n";
        } else {
            environment.wait_ms(std::clamp(static_cast<int>(repeat.wait_ms()), 1, kWaitMs));
        }
    }
    const bool ended = options.repeat == 0 || enough();
    repeat.stop();
    const RepeatCounts& counts = repeat.counts();
    if (counts.sent() > 0) environment.out << counts.text() << "\n";
    const bool done = ended && counts.failures == 0 && counts.replies.count > 0;
    return done ? exit_code::kDone : exit_code::kFailed;
}

int send(const SendOptions& options, TerminalEnvironment& environment) {
    if (const auto reason = complaint(options)) {
        environment.err << "pelvan7: " << *reason << "\n";
        return exit_code::kBadOption;
    }
    TerminalApplication terminal(environment);
    if (!terminal.start()) return exit_code::kFailed;
    Core& app = terminal.app();
    const int code = options.repeat_option->count() > 0
                         ? send_repeatedly(options, app, environment)
                         : print_judged(send_with(options, app.senders), environment);
    environment.out.flush();
    // The next command is a process of its own and knows nothing of this one's failures.
    await_late_answer(app.link);
    return code;
}

void add_modbus_options(CLI::App& command, SendOptions& options) {
    const Choices<DataFormat> formats{{"decimal", DataFormat::Decimal},
                                      {"hex", DataFormat::Hex},
                                      {"smart", DataFormat::SmartDec}};
    command.add_option("--function", options.function, "Modbus function: 1-6, 8, 15 or 16")
        ->capture_default_str()
        ->group("Modbus");
    command.add_option("--register", options.start_register, "Start register, 0 to 65535")
        ->capture_default_str()
        ->group("Modbus");
    command
        .add_option("--values", options.values,
                    "Count to read, or values to write, separated by commas or spaces")
        ->delimiter(',')
        ->group("Modbus");
    command.add_flag("--hexadecimal", options.hexadecimal, "Values are hexadecimal")
        ->group("Modbus");
    command
        .add_flag("--long", options.long_values,
                  "32-bit values in two registers each, with functions 3 and 16")
        ->group("Modbus");
    add_choice(command, "--format", options.modbus.format, formats, "decimal, hex or smart")
        ->group("Modbus");
    command
        .add_flag("--bad-checksum", options.modbus.corrupt_crc,
                  "Send a wrong CRC, to see what the controller does")
        ->group("Modbus");
}

void add_tellura_options(CLI::App& command, SendOptions& options) {
    const Choices<TelluraCheck> checks{{"bcc", TelluraCheck::Bcc}, {"crc", TelluraCheck::Crc}};
    command
        .add_option("--parameter", options.tellura.parameter_address,
                    "Parameter address, four hexadecimal digits")
        ->capture_default_str()
        ->group("Tellura/AB");
    CLI::Option* read =
        command
            .add_option("--read", options.tellura.byte_count, "Number of bytes to read, 1 to 255")
            ->capture_default_str()
            ->group("Tellura/AB");
    options.write_option =
        command.add_option("--write", options.tellura.data, "Bytes to write, in hexadecimal")
            ->excludes(read)
            ->group("Tellura/AB");
    add_choice(command, "--check", options.tellura.check, checks, "bcc or crc")
        ->group("Tellura/AB");
}

} // namespace

const Choices<int>& protocol_names() {
    static const Choices<int> names{{"full", protocol::kFull},
                                    {"modbus", protocol::kModbus},
                                    {"xon", protocol::kXon},
                                    {"tellura", protocol::kTellura}};
    return names;
}

bool print_outcome(const SendOutcome& outcome, TerminalEnvironment& environment) {
    if (!outcome.row) {
        environment.err << "pelvan7: " << outcome.refusal << "\n";
        return false;
    }
    environment.out << outcome.row->command << "\n";
    if (!outcome.remark.empty()) environment.err << "pelvan7: " << outcome.remark << "\n";
    if (outcome.kind != SendOutcome::Kind::Done) {
        const bool sent = outcome.kind == SendOutcome::Kind::NoReply;
        environment.err << "pelvan7: " << (sent ? outcome.row->response : outcome.status) << "\n";
        return false;
    }
    environment.out << outcome.row->response << "\n";
    return true;
}

void add_send_command(CLI::App& cli, ChosenCommand& chosen) {
    auto options = std::make_shared<SendOptions>();
    CLI::App* command =
        cli.add_subcommand("send", "Send one command and print it and its reply. Ends with 0 "
                                   "only when the reply is this command's answer and no refusal; "
                                   "otherwise standard error says why it does not count");
    add_choice(*command, "--protocol", options->protocol, protocol_names(),
               "full, modbus (the default), xon or tellura");
    command->add_option("--address", options->address, "Address of the controller")
        ->capture_default_str();
    options->text_option = command->add_option(
        "command", options->text, "Command text of the Full and Xon protocols, such as \"? C1\"");
    options->repeat_option =
        command
            ->add_option("--repeat", options->repeat,
                         "Send so many times, at the interval; 0: until Ctrl+C. Ends with replies, "
                         "failures and times, and with 0 when there was no failure")
            ->check(whole_number_from(0));
    command
        ->add_option("--interval", options->interval_s,
                     "Seconds from one sending to the next, 0.1 to 3600")
        ->check(is_number())
        ->check(CLI::Range(Repeat::kMinIntervalMs / kMsPerSecond,
                           Repeat::kMaxIntervalMs / kMsPerSecond))
        ->capture_default_str()
        ->needs(options->repeat_option);
    add_modbus_options(*command, *options);
    add_tellura_options(*command, *options);
    command->callback([options, &chosen] {
        if (options->modbus.corrupt_crc && options->protocol != protocol::kModbus)
            throw CLI::ValidationError("--bad-checksum", "goes with the protocol modbus only");
        chosen = [options](TerminalEnvironment& environment) {
            return send(*options, environment);
        };
    });
}

} // namespace pelvan
