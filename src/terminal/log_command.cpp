#include <algorithm>
#include <functional>
#include <limits>

#include "config/ini.h"
#include "logging/log_set_file.h"
#include "platform/run_time_error.h"
#include "platform/text_file.h"
#include "terminal/commands.h"
#include "terminal/json.h"
#include "text/numbers.h"
#include "text/strings.h"

namespace pelvan {
namespace {

/// How long one wait lasts at most, so that an interrupt is noticed soon.
constexpr int kWaitMs = 50;

struct LogOptions {
    std::string set;
    int passes = 0; // 0: until interrupted
    std::string file;
    bool single_line = false;
    bool together = false;
    bool allow_writes = false;
    bool json = false;
};

const char* state_text(RowState state) {
    switch (state) {
    case RowState::Exception:
        return " (exception)";
    case RowState::Nothing:
        return " (no valid reply)";
    case RowState::LineInUse:
        return " (skipped)";
    case RowState::NotPolled:
        return " (not polled)";
    case RowState::Answered:
        break;
    }
    return "";
}

/// The reading of a row that was not asked is that of an earlier pass.
std::string value_text(const LogReading& reading) {
    const bool asked = reading.state != RowState::NotPolled && reading.state != RowState::LineInUse;
    return asked ? reading.value : std::string();
}

/// Address and register of a row, behind its name where it has one.
std::string source_text(const LogSetRow& row) {
    const std::string source = "address " + row.texts[log_column::kAddress] + ", register " +
                               row.texts[log_column::kRegister];
    return row.name.empty() ? source : row.name + " (" + source + ")";
}

const char* state_word(RowState state) {
    switch (state) {
    case RowState::Answered:
        return "answered";
    case RowState::Exception:
        return "exception";
    case RowState::Nothing:
        return "no valid reply";
    case RowState::LineInUse:
        return "skipped";
    case RowState::NotPolled:
        break;
    }
    return "not polled";
}

Json row_json(const DataLogger& logger, int number) {
    const LogSetRow& row = logger.set().row(number);
    const LogReading& reading = logger.reading(number);
    const auto label = [](const std::string& text) { return text.empty() ? Json() : Json(text); };
    const bool answered = reading.state == RowState::Answered;
    return Json::object()
        .set("row", number)
        .set("name", label(row.name))
        .set("unit", label(row.unit))
        .set("address", row.texts[log_column::kAddress])
        .set("command", row.texts[log_column::kCommand])
        .set("register", row.texts[log_column::kRegister])
        .set("state", state_word(reading.state))
        .set("value", answered ? Json(leading_number(reading.value)) : Json())
        .set("text", trim(value_text(reading)));
}

void print_json(const DataLogger& logger, int pass, TerminalEnvironment& environment) {
    const auto last = logger.status().last_pass;
    Json rows = Json::array();
    for (int number = 1; number <= kLogRows; ++number)
        if (logger.set().row(number).in_use) rows.add(row_json(logger, number));
    Json object = Json::object();
    object.set("pass", pass);
    if (last)
        object.set("time", iso_date_text(last->begun) + " " + time_text(last->begun))
            .set("took_ms", last->took_ms);
    environment.out << object.set("rows", std::move(rows)).text() << "\n";
}

void print_rows(const DataLogger& logger, int pass, TerminalEnvironment& environment) {
    environment.out << "Pass " << pass << ". " << status_text(logger.status()) << "\n";
    for (int number = 1; number <= kLogRows; ++number) {
        const LogSetRow& row = logger.set().row(number);
        if (!row.in_use) continue;
        const LogReading& reading = logger.reading(number);
        const bool measured = reading.state == RowState::Answered && !row.unit.empty();
        environment.out << "  " << number << ": " << source_text(row) << ":" << value_text(reading)
                        << (measured ? " " + row.unit : "") << state_text(reading.state) << "\n";
    }
}

void print_pass(const DataLogger& logger, int pass, bool json, TerminalEnvironment& environment) {
    if (json)
        print_json(logger, pass, environment);
    else
        print_rows(logger, pass, environment);
    environment.out.flush();
    if (!logger.port_message().empty())
        environment.err << "pelvan7: " << logger.port_message() << "\n";
}

/// Waits for one tick of the logging timer; false when an interrupt came first.
bool wait_for_tick(const LoggingTimer& timer, TerminalEnvironment& environment) {
    const std::uint32_t begin = environment.tick.timeGetTime();
    while (!environment.stop) {
        const std::uint32_t spent = environment.tick.timeGetTime() - begin;
        const auto wanted = static_cast<std::uint32_t>(timer.tick_ms());
        if (spent >= wanted) return true;
        environment.wait_ms(static_cast<int>(std::min<std::uint32_t>(wanted - spent, kWaitMs)));
    }
    return false;
}

/// Puts the set and the options into the logger.
bool prepare(Core& app, const LogOptions& options) {
    DataLogger& logger = app.data_logger;
    return app.events.run([&] {
        logger.read_tick_length();
        // Whatever its start mode says: the command itself starts the logging.
        logger.read_set(options.set);
        if (!options.file.empty()) {
            logger.set_file_name(options.file);
            logger.set_log_to_file(true);
        }
        logger.set_single_line(options.single_line);
        if (options.together) logger.set_together(true);
    });
}

bool any_reading(const DataLogger& logger, const std::function<bool(const LogReading&)>& wanted) {
    for (int row = 1; row <= kLogRows; ++row)
        if (wanted(logger.reading(row))) return true;
    return false;
}

bool is_answered(const LogReading& reading) {
    return reading.state == RowState::Answered;
}

bool is_doubted(const LogReading& reading) {
    return reading.after_strays || reading.of_another;
}

/// Says why the length of a tick is not what the configuration file says, where it is not: the
/// general message names no key.
void tell_tick_length(const ConfigState& config, std::ostream& err) {
    constexpr long kLongest = std::numeric_limits<std::int16_t>::max();
    const auto& section = ini_key::kCommsSection;
    const std::string text =
        ini_read_string(section, ini_key::kTimerOffset, "1000", config.gIniFile);
    if (whole_number(text, 0, kLongest)) return;
    err << "pelvan7: pelvan7.ini: TIMER OFFSET=" << text << " is not from 1 to " << kLongest
        << " milliseconds: it is read as "
        << ini_read_int(section, ini_key::kTimerOffset, 0, config.gIniFile) << "\n";
}

/// Passes until there are enough or an interrupt comes; false when a run-time error or an interrupt
/// ended them, or when they gave nothing.
bool run_passes(TerminalApplication& terminal, const LogOptions& options,
                TerminalEnvironment& environment) {
    Core& app = terminal.app();
    DataLogger& logger = app.data_logger;
    int passes = 0;
    bool answered = false;
    int doubted = 0; // passes
    const Subscription each_pass = logger.pass_done.subscribe([&] {
        answered = answered || any_reading(logger, is_answered);
        doubted += any_reading(logger, is_doubted) ? 1 : 0;
        print_pass(logger, ++passes, options.json, environment);
        terminal.work_went_on(); // a file that cannot be written warns with every pass
    });
    const Subscription each_row = logger.before_row.subscribe([&](int) {
        if (environment.stop) logger.end_pass();
    });
    if (!app.events.run([&] { logger.start(); })) return false;
    const auto enough = [&] { return options.passes > 0 && passes >= options.passes; };
    while (!enough() && wait_for_tick(logger.timer(), environment))
        if (!app.events.run([&] { logger.tick(); })) return false;
    if (doubted > 0)
        environment.err << "pelvan7: in " << doubted << " of " << passes
                        << " passes an answer may have been another row's: that row was left "
                           "empty, and readings before it may be wrong\n";
    if (environment.stop) return false;
    if (!answered) environment.err << "pelvan7: no row gave a reading in any pass\n";
    return answered && doubted == 0;
}

/// Why the set cannot be read, in words: the general messages name neither file nor key.
std::string set_fault(const std::string& file) {
    try {
        LogSet set;
        return read_log_set(file, "", set)
                   ? ""
                   : file + ": a set has " + std::to_string(kLogRows) + " rows at most.";
    } catch (const RunTimeError& error) {
        return error.subject();
    }
}

int log(const LogOptions& options, TerminalEnvironment& environment) {
    if (!fileexists(options.set)) {
        environment.err << "pelvan7: no set file \"" << options.set << "\"\n";
        return exit_code::kFailed;
    }
    if (const std::string fault = set_fault(options.set); !fault.empty()) {
        environment.err << "pelvan7: " << fault << "\n";
        return exit_code::kFailed;
    }
    TerminalApplication terminal(environment);
    if (!terminal.start()) return exit_code::kFailed;
    Core& app = terminal.app();
    const bool prepared = prepare(app, options);
    if (!prepared || options.passes != 1) tell_tick_length(app.session.config, environment.err);
    if (!prepared) return exit_code::kFailed;
    DataLogger& logger = app.data_logger;
    if (logger.set().rows_in_use() == 0) {
        environment.err << "pelvan7: no row to poll in \"" << options.set << "\"\n";
        return exit_code::kFailed;
    }
    if (const auto objections = logger.objections(); !objections.empty()) {
        for (const std::string& each : objections)
            environment.err << "pelvan7: " << options.set << ": " << each << "\n";
        return exit_code::kFailed;
    }
    if (!options.allow_writes && !logger.set().writing_rows().empty()) {
        environment.err << "pelvan7: row " << logger.set().writing_rows().front() << " of \""
                        << options.set << "\" writes to a controller instead of reading; "
                        << "--allow-writes lets it\n";
        return exit_code::kFailed;
    }
    logger.allow_writes();
    if (logger.set().log_to_file && !can_append(logger.set().file_name))
        environment.err << "pelvan7: the log file \"" << logger.set().file_name
                        << "\" cannot be written now; the newest lines wait for it\n";
    if (logger.timer().tick_ms() == 0 && options.passes != 1) {
        environment.err << "pelvan7: TIMER OFFSET is 0, so no second pass would come\n";
        return exit_code::kFailed;
    }
    bool finished = false;
    try {
        finished = run_passes(terminal, options, environment);
    } catch (const CommandAborted&) {
        static_cast<void>(logger.stop()); // what was read before is not lost
        throw;
    }
    const bool written = logger.stop();
    return finished && written ? exit_code::kDone : exit_code::kFailed;
}

} // namespace

void add_log_command(CLI::App& cli, ChosenCommand& chosen) {
    auto options = std::make_shared<LogOptions>();
    CLI::App* command = cli.add_subcommand(
        "log", "Poll the registers of a log set and print each pass; Ctrl+C ends it, with code 1. "
               "0 only after all passes, when a row gave a reading");
    command->add_option("set", options->set, "Set file, such as plant.PV5")->required();
    command->add_option("--passes", options->passes, "End after so many passes")
        ->check(whole_number_from(1));
    command->add_option("--file", options->file,
                        "Log into this file, whatever the set says about files");
    command->add_flag("--single-line", options->single_line, "Log one line a pass");
    command->add_flag("--together", options->together,
                      "Read registers that follow one another with one request, whatever the set "
                      "says about it");
    command->add_flag("--json", options->json, "Print each pass as one line of JSON");
    command->add_flag("--allow-writes", options->allow_writes,
                      "Poll a set with rows that write to controllers too");
    command->callback([options, &chosen] {
        chosen = [options](TerminalEnvironment& environment) { return log(*options, environment); };
    });
}

} // namespace pelvan
