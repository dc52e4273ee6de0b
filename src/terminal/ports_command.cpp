// "ports", "ports assign" and "ports set": the port settings and the serial devices without a
// window.
#include "console/protocol_number.h"
#include "console/start_up.h"
#include "settings/channel_choices.h"
#include "settings/port_settings.h"
#include "settings/port_users.h"
#include "terminal/commands.h"
#include "text/numbers.h"
#include "text/strings.h"

namespace pelvan {
namespace {

constexpr int kNotGiven = -1;
constexpr char kNoDevice[] = "none";

struct PortsOptions {
    int number = 0;     // of the port; 0: what the channel has, or a proposal
    std::string device; // empty: none was given
    int channel = protocol::kModbus;
    std::string settings; // "9600,N,8,1"; empty: as `number`
    int mode = kNotGiven; // of DTR and RTS
    int complete = kNotGiven;
    int echo = kNotGiven;
    int own_handshake = kNotGiven;
    bool yes = false;
    bool verbose = false;
};

const Choices<int>& modes() {
    static const Choices<int> names{{"clear", 0}, {"set", 1}, {"toggle", 2}};
    return names;
}

/// What the window of the port settings stands on, on the file alone: no channel is built, so that
/// a file with a bad port number is mended from here, too.
struct PortFile {
    explicit PortFile(TerminalEnvironment& environment) : terminal(environment) {
        config.gIniFile = configuration_path(environment.directory);
        devices.refresh();
    }
    TerminalApplication terminal;
    ConfigState& config = terminal.app().session.config;
    PortDevices devices{config, terminal.app().channels, terminal.app().device_lookup()};
    PortSettings settings{config, terminal.app().channels};
};

int fail(TerminalEnvironment& environment, const std::string& text) {
    environment.err << "pelvan7: " << text << "\n";
    return exit_code::kFailed;
}

int fail_to_write(TerminalEnvironment& environment, const PortFile& file) {
    return fail(environment, file.config.gIniFile + " could not be written");
}

/// "PORT 1 = /dev/ttyS0: may be opened, used by Modbus".
std::string port_line(int number, const PortDevices& devices) {
    return "PORT " + std::to_string(number) + " = " + devices.meaning(number) +
           devices.users(number);
}

std::string choices_text(const ChannelChoices& choices) {
    return std::string("replies end ") +
           (choices.complete ? "with their frame (COMPLETE)" : "with a pause (QUIET)") +
           (choices.echo ? ", the line echoes" : "") +
           (choices.own_handshake ? ", XON/XOFF by the program" : "");
}

/// The channels of the configuration file, as they will be built.
void list_channels(std::ostream& out, const ConfigState& config) {
    out << "Channels:\n";
    const auto channels = channel_texts(config);
    for (const ChannelText& channel : channels) {
        out << "  DEVICE " << channel.number << ": PORT " << channel.port << ", "
            << channel.settings << (channel.fault.empty() ? "" : " (" + channel.fault + ")") << ", "
            << choices_text(read_choices(config, channel.number)) << "\n";
    }
    if (channels.empty()) out << "  " << kNoChannel << "\n";
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

int list_ports(const PortsOptions& options, TerminalEnvironment& environment) {
    std::ostream& out = environment.out;
    const PortFile file(environment);
    out << "Serial devices of this machine:\n";
    const auto devices = list_serial_devices();
    for (const SerialDevice& device : devices) {
        out << "  " << device.path;
        if (device.path != device.node) out << " (" << device.node << ")";
        out << ": " << file.devices.state(device.path) << "\n";
        if (options.verbose) list_details(out, device);
    }
    if (devices.empty()) out << "  none\n";
    out << "Port numbers (section \"SERIAL DEVICES\" of " << file.config.gIniFile << "):\n";
    bool any = false;
    for (int number = kMinPortNumber; number <= kMaxPortNumber; ++number) {
        if (file.devices.standing(number).empty()) continue;
        any = true;
        out << "  " << port_line(number, file.devices) << "\n";
    }
    if (!any) out << "  none stands for a device yet\n";
    list_channels(out, file.config);
    out << "Files of the program: " << environment.directory << " (" << environment.directory_reason
        << ")\n";
    for (const std::string& note : environment.directory_notes)
        out << "  " << note << "\n";
    return exit_code::kDone;
}

/// Whether a number may stand for a device; else why not stands on standard error.
bool may_assign(const std::string& device, bool yes, const PortFile& file,
                TerminalEnvironment& environment) {
    const DeviceObjection objection = file.devices.objection(device);
    if (objection.sentence.empty() || (yes && !objection.lasting)) return true;
    fail(environment,
         objection.sentence + (objection.lasting ? "" : " --yes assigns it all the same."));
    return false;
}

int assign(const PortsOptions& options, TerminalEnvironment& environment) {
    const PortFile file(environment);
    const std::string device = options.device == kNoDevice ? "" : options.device;
    if (!may_assign(device, options.yes, file, environment)) return exit_code::kFailed;
    if (!file.devices.write(options.number, device)) return fail_to_write(environment, file);
    environment.out << port_line(options.number, file.devices) << "\n";
    return exit_code::kDone;
}

/// What the channel has or may begin with, and what the options say instead of it.
PortFields wanted_fields(const PortsOptions& options, const PortFile& file) {
    const auto known = file.settings.read(options.channel);
    PortFields fields = known ? *known : file.settings.proposal(options.channel, file.devices);
    int number = options.number;
    if (number == 0) number = file.devices.number_of(options.device);
    if (number > 0) fields.port = std::to_string(number);
    if (!options.settings.empty()) set_settings(fields, options.settings);
    if (options.mode != kNotGiven) fields.mode = options.mode;
    return fields;
}

std::string wanted_device(const PortsOptions& options, int number, const PortDevices& devices) {
    if (!options.device.empty()) return options.device == kNoDevice ? "" : options.device;
    const std::string standing = devices.standing(number);
    const std::string only = devices.only_device();
    return standing.empty() && devices.number_of(only) == 0 ? only : standing;
}

/// What the file says, and what the options say instead of it.
ChannelChoices wanted_choices(const PortsOptions& options, const PortFile& file) {
    ChannelChoices choices = read_choices(file.config, options.channel);
    if (options.complete != kNotGiven) choices.complete = options.complete != 0;
    if (options.echo != kNotGiven) choices.echo = options.echo != 0;
    if (options.own_handshake != kNotGiven) choices.own_handshake = options.own_handshake != 0;
    return choices;
}

/// Gives ports to the channels before this one that have none; false when it cannot.
bool fill_gap(int channel, PortFile& file, TerminalEnvironment& environment) {
    const std::vector<int> missing = file.settings.missing_before(channel);
    if (missing.empty()) return true;
    if (!file.settings.add(missing)) return false;
    environment.out << protocol_names(missing) << ": port " << kDefaultPort << ", because "
                    << protocol_name(channel) << " can be used only when "
                    << (missing.size() == 1 ? "it has" : "they have") << " a port too\n";
    return true;
}

int set_port(const PortsOptions& options, TerminalEnvironment& environment) {
    PortFile file(environment);
    const PortFields fields = wanted_fields(options, file);
    for (const std::string& message : ValidatePortSettings(fields))
        environment.err << "pelvan7:" << message << "\n"; // which begins with a space
    if (!ValidatePortSettings(fields).empty()) return exit_code::kFailed;
    const int number = static_cast<int>(leading_number(fields.port));
    const std::string device = wanted_device(options, number, file.devices);
    const bool assigns = file.devices.is_change(number, device);
    if (assigns && !may_assign(device, options.yes, file, environment)) return exit_code::kFailed;
    const ChannelChoices choices = wanted_choices(options, file);
    if (!file.settings.store(options.channel, fields, options.channel == protocol::kXon) ||
        !store_choices(file.config, options.channel, choices) ||
        (assigns && !file.devices.write(number, device)) ||
        !fill_gap(options.channel, file, environment))
        return fail_to_write(environment, file);
    environment.out << protocol_name(options.channel) << ": port " << number << ", "
                    << settings_text(fields)
                    << (choices == ChannelChoices{} ? "" : ", " + choices_text(choices)) << "\n"
                    << port_line(number, file.devices) << "\n";
    if (const std::string sharing = file.settings.sharing(options.channel, fields);
        !sharing.empty())
        environment.out << sharing << "\n";
    return exit_code::kDone;
}

using Options = std::shared_ptr<PortsOptions>;
using Work = int (*)(const PortsOptions&, TerminalEnvironment&);

CLI::App& add_change(CLI::App& ports, const char* name, const char* text, const Options& options,
                     Work work, ChosenCommand& chosen) {
    CLI::App* command = ports.add_subcommand(name, text);
    command->add_flag("--yes", options->yes, "Also a device that cannot be opened now");
    command->callback([options, work, &chosen] {
        chosen = [options, work](TerminalEnvironment& environment) {
            return work(*options, environment);
        };
    });
    return *command;
}

} // namespace

void add_ports_command(CLI::App& cli, ChosenCommand& chosen) {
    auto options = std::make_shared<PortsOptions>();
    CLI::App* ports = cli.add_subcommand(
        "ports", "List serial devices and what port numbers stand for, opening none");
    ports->require_subcommand(0, 1);
    ports->add_flag("--verbose", options->verbose,
                    "Also what the system tells of each device and its latency timer");
    ports->callback([ports, options, &chosen] {
        if (!ports->get_subcommands().empty()) return;
        chosen = [options](TerminalEnvironment& environment) {
            return list_ports(*options, environment);
        };
    });
    const CLI::Range numbers(kMinPortNumber, kMaxPortNumber);
    CLI::App& assigning = add_change(*ports, "assign", "Say which device a port number stands for",
                                     options, assign, chosen);
    assigning.add_option("number", options->number, "Port number, 1 to 16")
        ->required()
        ->check(numbers);
    assigning
        .add_option(
            "device", options->device,
            "Path of the device, tcp://host:port, rfc2217://host:port, simulated:742, or none to "
            "end the assignment")
        ->required();
    CLI::App& setting = add_change(*ports, "set",
                                   "Set up the port of a protocol; what is not given stays, or is "
                                   "filled in: 9600,N,8,1, the only device, a free port number",
                                   options, set_port, chosen);
    add_choice(setting, "protocol", options->channel, protocol_names(),
               "full, modbus, xon or tellura")
        ->required();
    setting.add_option("--device", options->device, "As for assign");
    setting.add_option("--port", options->number, "Port number, 1 to 16")->check(numbers);
    setting
        .add_option("--settings", options->settings,
                    "Baud rate, parity, data bits, stop bits: 9600,N,8,1")
        ->check([](const std::string& text) {
            return split(text, ',').size() == 4 ? "" : "give four values, such as 9600,N,8,1";
        });
    add_choice(setting, "--lines", options->mode, modes(), "DTR and RTS: clear, set or toggle");
    add_choice(setting, "--replies", options->complete, Choices<int>{{"quiet", 0}, {"complete", 1}},
               "End replies with a pause (quiet) or with their frame (complete)");
    add_choice(setting, "--echo", options->echo, Choices<int>{{"no", 0}, {"yes", 1}},
               "Whether the line gives back what is sent, as two-wire converters do: yes or no");
    add_choice(setting, "--xonxoff", options->own_handshake,
               Choices<int>{{"driver", 0}, {"program", 1}},
               "Xon: who stops at XOFF, the driver or, for adapters that ignore it, the program");
}

} // namespace pelvan
