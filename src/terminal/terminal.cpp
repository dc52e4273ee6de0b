#include "terminal/terminal.h"

#include <algorithm>
#include <array>
#include <limits>

#include "console/start_up.h"
#include "terminal/commands.h"
#include "terminal/shown_stream.h"
#include "terminal/terminal_dialogs.h"
#include "text/numbers.h"

namespace pelvan {
namespace {

constexpr char kFooter[] = "Without a command the windows open.";

/// The parser's message without the hint that follows it on further lines.
std::string first_line(const std::string& text) {
    return text.substr(0, text.find('\n'));
}

} // namespace

struct TerminalApplication::Parts {
    explicit Parts(TerminalEnvironment& environment)
        : dialogs(environment.err), app(Services{environment.tick, environment.clock, dialogs,
                                                 desktop, environment.directory},
                                        environment.open_device),
          err(environment.err) {
        const auto tell = [this](const std::string& sentence) {
            told = sentence;
            err << "pelvan7: " << sentence << "\n";
        };
        troubles = {app.network.failed().subscribe(tell), app.device_refused.subscribe(tell)};
    }
    TerminalDialogs dialogs;
    TerminalDesktop desktop;
    Core app;
    std::ostream& err;
    std::string told; // of a device that does not open
    std::array<Subscription, 2> troubles;
};

TerminalApplication::TerminalApplication(TerminalEnvironment& environment)
    : parts_(std::make_unique<Parts>(environment)) {}

TerminalApplication::~TerminalApplication() = default;

Core& TerminalApplication::app() {
    return parts_->app;
}

bool TerminalApplication::start() {
    Core& app = parts_->app;
    const auto say = [this](const std::string& text) {
        parts_->err << "pelvan7: " << text << "\n";
    };
    if (const std::string fault = configuration_fault(app.services.application_directory);
        !fault.empty())
        say(fault);
    // A fifth channel in the file is an error that leaves four to work with.
    app.events.run([&] {
        start_session(app.session.config, app.channels, app.services.application_directory);
    });
    const auto channels = channel_texts(app.session.config);
    if (channels.empty()) say(kNoChannel);
    for (const ChannelText& channel : channels)
        if (!channel.fault.empty())
            say("DEVICE " + std::to_string(channel.number) + ", \"" + channel.settings +
                "\": " + channel.fault);
    return !app.session.serial.gCommDevice.empty();
}

bool TerminalApplication::has_told(const std::string& sentence) const {
    return !parts_->told.empty() && sentence.find(parts_->told) != sentence.npos;
}

void TerminalApplication::answer_questions_yes(bool yes) {
    parts_->dialogs.answer_yes(yes);
}

void TerminalApplication::work_went_on() {
    parts_->dialogs.allow_last();
}

void TerminalApplication::answer_retries(int count) {
    parts_->dialogs.answer_retries(count);
}

void TerminalApplication::choose_file(const std::string& path) {
    parts_->dialogs.choose_file(path);
}

void TerminalApplication::on_events(std::function<void()> handler) {
    parts_->desktop.on_events = [this, handler = std::move(handler)] {
        parts_->dialogs.forget_last();
        handler();
    };
}

CLI::Validator is_number() {
    const auto problem = [](const std::string& text) {
        return is_numeric(text) ? std::string() : "\"" + text + "\" is no number";
    };
    return CLI::Validator(problem, "");
}

CLI::Validator whole_number_from(int least) {
    const auto problem = [least](const std::string& text) {
        return whole_number(text, least, std::numeric_limits<int>::max())
                   ? std::string()
                   : "give a whole number from " + std::to_string(least);
    };
    return CLI::Validator(problem, "");
}

AskedFor read_arguments(const std::vector<std::string>& arguments,
                        TerminalEnvironment& environment) {
    AskedFor asked;
    asked.parser = std::make_unique<CLI::App>(
        "Pelvan 7: talks to temperature and process controllers over serial lines.", "pelvan7");
    CLI::App& cli = *asked.parser;
    cli.footer(kFooter);
    cli.set_version_flag("--version", "pelvan7 " PELVAN_VERSION);
    cli.fallthrough();
    cli.require_subcommand(0, 1);
    cli.add_option("--directory", environment.directory,
                   "Directory of pelvan7.ini and the program's other files (else PELVAN_DIRECTORY)")
        ->check(CLI::ExistingDirectory);
    add_send_command(cli, asked.command);
    add_verify_port_command(cli, asked.command);
    add_bad_requests_command(cli, asked.command);
    add_ports_command(cli, asked.command);
    add_simulate_command(cli, asked.command);
    add_demo_command(cli, asked.command);
    add_listen_command(cli, asked.command);
    add_scan_command(cli, asked.command);
    add_log_command(cli, asked.command);
    add_transfer_commands(cli, asked.command);
    add_profile_command(cli, asked.command);
    try {
        // The parser takes its arguments in reverse order.
        cli.parse(std::vector<std::string>(arguments.rbegin(), arguments.rend()));
    } catch (const CLI::Success& success) {
        asked.code = cli.exit(success, environment.out, environment.err);
    } catch (const CLI::ParseError& error) {
        environment.err << "pelvan7: " << first_line(error.what()) << "\n";
        asked.code = exit_code::kBadOption;
    }
    return asked;
}

namespace {

/// Says on standard error only what has just been done: the rest is `ports`' business.
void find_directory(TerminalEnvironment& environment) {
    if (!environment.directory.empty()) {
        environment.directory_notes = directory_faults(environment.directory);
        return;
    }
    if (!environment.find_directory) return;
    try {
        const ApplicationDirectory found = environment.find_directory();
        environment.directory = found.path;
        environment.directory_reason = found.reason;
        environment.directory_notes = found.notes;
        environment.directory_found = true;
    } catch (const RunTimeError& error) {
        throw CommandAborted{"PELVAN_DIRECTORY names " + error.subject() +
                             ", which is no directory"};
    }
}

std::optional<int> run_shown(const std::vector<std::string>& arguments,
                             TerminalEnvironment& environment) {
    const AskedFor asked = read_arguments(arguments, environment);
    if (asked.code) return asked.code;
    try {
        find_directory(environment);
        return asked.command ? std::optional<int>(asked.command(environment)) : std::nullopt;
    } catch (const CommandAborted& aborted) {
        environment.err << "pelvan7: " << aborted.reason << "\n";
        return exit_code::kFailed;
    } catch (const RunTimeError& error) {
        TerminalDialogs dialogs(environment.err);
        show_error_message(dialogs, error.number(), error.subject());
        return exit_code::kFailed;
    }
}

} // namespace

std::optional<int> run_terminal(const std::vector<std::string>& arguments,
                                TerminalEnvironment& environment) {
    // Without a reader for what it prints a command would go on for nobody.
    ShownStream out(environment.out, [&environment] { environment.stop = true; });
    ShownStream err(environment.err);
    TerminalEnvironment shown{out,
                              err,
                              environment.tick,
                              environment.clock,
                              environment.open_device,
                              environment.directory,
                              environment.stop,
                              environment.wait_ms,
                              environment.find_directory};
    std::optional<int> code = run_shown(arguments, shown);
    environment.directory = shown.directory;
    environment.directory_reason = shown.directory_reason;
    environment.directory_notes = shown.directory_notes;
    out.flush();
    err.flush();
    if (code == exit_code::kDone && !(out && err)) code = exit_code::kFailed;
    return code;
}

} // namespace pelvan
