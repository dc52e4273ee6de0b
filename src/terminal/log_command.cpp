#include <algorithm>

#include "platform/text_file.h"
#include "terminal/commands.h"

namespace pelvan {
namespace {

/// How long one wait lasts at most, so that an interrupt is heard soon.
constexpr int kWaitMs = 50;

struct LogOptions {
    std::string set;
    int passes = 0; // 0: until interrupted
    std::string file;
    bool single_line = false;
};

const char* state_text(RowState state) {
    switch (state) {
    case RowState::Exception:
        return " (exception)";
    case RowState::Nothing:
        return " (no valid reply)";
    case RowState::NotPolled:
        return " (not polled)";
    case RowState::Answered:
        break;
    }
    return "";
}

void print_pass(const frm_DataLogging& form, int pass, TerminalEnvironment& environment) {
    environment.out << "Pass " << pass << ". " << form.lbl_Status.Caption() << "\n";
    const Grid& grid = form.MSFlexGrid1;
    for (int row = 1; row <= kLogRows; ++row) {
        if (!form.in_use(row)) continue;
        environment.out << "  " << row << ": address " << grid.TextMatrix(row, log_column::kAddress)
                        << ", register " << grid.TextMatrix(row, log_column::kRegister) << ":"
                        << grid.TextMatrix(row, log_column::kValue)
                        << state_text(form.row_state(row)) << "\n";
    }
    environment.out.flush();
    if (!form.lbl_Message.Caption().empty())
        environment.err << "pelvan7: " << form.lbl_Message.Caption() << "\n";
}

/// Waits for one tick of the logging timer; false when an interrupt came first.
bool wait_for_tick(const Timer& timer, TerminalEnvironment& environment) {
    const std::uint32_t begin = environment.tick.timeGetTime();
    while (!environment.stop) {
        const std::uint32_t spent = environment.tick.timeGetTime() - begin;
        const auto wanted = static_cast<std::uint32_t>(timer.Interval());
        if (spent >= wanted) return true;
        environment.wait_ms(static_cast<int>(std::min<std::uint32_t>(wanted - spent, kWaitMs)));
    }
    return false;
}

bool any_row_in_use(const frm_DataLogging& form) {
    for (int row = 1; row <= kLogRows; ++row)
        if (form.in_use(row)) return true;
    return false;
}

/// Shows the window's form without a window and puts the set and the options into it.
bool prepare(Application& app, const LogOptions& options) {
    frm_DataLogging& form = app.logging;
    return app.events.run([&] {
        form.Show(); // reads the length of a tick
        // Whatever its start mode says: the command itself starts the logging.
        form.read_set(options.set);
        if (!options.file.empty()) {
            form.txt_LogFilename.set_Text(options.file);
            form.chk_LogToFile.set_Value(1);
        }
        form.chk_SingleLine.set_Value(options.single_line ? 1 : 0);
    });
}

/// Passes until there are enough or an interrupt comes; false when a run-time error ended them.
bool run_passes(TerminalApplication& terminal, const LogOptions& options,
                TerminalEnvironment& environment) {
    Application& app = terminal.app();
    frm_DataLogging& form = app.logging;
    int passes = 0;
    form.pass_done = [&] {
        print_pass(form, ++passes, environment);
        terminal.work_went_on(); // a file that cannot be written warns with every pass
    };
    form.interrupted = [&] { return environment.stop.load(); };
    if (!app.events.run([&] { form.mnuStartLogging.choose(); })) return false;
    const auto enough = [&] { return options.passes > 0 && passes >= options.passes; };
    while (!enough() && wait_for_tick(form.tmr_LoggingInterval, environment))
        if (!app.events.run([&] { form.tmr_LoggingInterval.Tick(); })) return false;
    return true;
}

int log(const LogOptions& options, TerminalEnvironment& environment) {
    if (!fileexists(options.set)) {
        environment.err << "pelvan7: no set file \"" << options.set << "\"\n";
        return exit_code::kFailed;
    }
    TerminalApplication terminal(environment);
    if (!terminal.start()) return exit_code::kFailed;
    Application& app = terminal.app();
    if (!prepare(app, options)) return exit_code::kFailed;
    if (!any_row_in_use(app.logging)) {
        environment.err << "pelvan7: no row to poll in \"" << options.set << "\"\n";
        return exit_code::kFailed;
    }
    if (app.logging.tmr_LoggingInterval.Interval() == 0 && options.passes != 1) {
        environment.err << "pelvan7: TIMER OFFSET is 0, so no second pass would come\n";
        return exit_code::kFailed;
    }
    bool well = false;
    try {
        well = run_passes(terminal, options, environment);
    } catch (const CommandAborted&) {
        app.logging.mnuStopLogging.choose(); // what was read before is not lost
        throw;
    }
    app.logging.mnuStopLogging.choose();
    return well && app.logging.last_flush_worked() ? exit_code::kDone : exit_code::kFailed;
}

} // namespace

void add_log_command(CLI::App& cli, ChosenCommand& chosen) {
    auto options = std::make_shared<LogOptions>();
    CLI::App* command = cli.add_subcommand(
        "log", "Poll the registers of a log set and print each pass; Ctrl+C ends");
    command->add_option("set", options->set, "Set file, such as plant.PV5")->required();
    command->add_option("--passes", options->passes, "End after so many passes")
        ->check(CLI::PositiveNumber);
    command->add_option("--file", options->file,
                        "Log into this file, whatever the set says about files");
    command->add_flag("--single-line", options->single_line, "Log one line a pass");
    command->callback([options, &chosen] {
        chosen = [options](TerminalEnvironment& environment) { return log(*options, environment); };
    });
}

} // namespace pelvan
