// Ramp profiles started, held, moved on, ended and watched.
#include <algorithm>

#include "platform/text_file.h"
#include "profile/profile_check.h"
#include "profile/profile_reader.h"
#include "profile/profile_record.h"
#include "profile/profile_runner.h"
#include "terminal/profile_terminal.h"
#include "text/date_time.h"
#include "text/numbers.h"

namespace pelvan {
namespace {

/// How long one wait lasts at most, so that an interrupt is noticed soon.
constexpr int kWaitMs = 50;

ProfileRunner runner_of(ProfileTerminal& terminal, const ProfileFormat& format) {
    return {terminal.app().profile_link, terminal.app().modbus, terminal.context().address, format};
}

const char* outcome_word(CommandEnd how) {
    switch (how) {
    case CommandEnd::Done:
        return "done";
    case CommandEnd::Refused:
        return "refused";
    case CommandEnd::NotSent:
        return "not sent";
    case CommandEnd::NotKnown:
        break;
    }
    return "not known";
}

void report_outcome(const CommandOutcome& outcome, ProfileReport& report) {
    report.set("outcome", outcome_word(outcome.how));
    report.set("sentence", outcome.sentence);
    report.set("state", outcome.after.reading ? reading_json(*outcome.after.reading) : Json());
    if (outcome.how == CommandEnd::Done && outcome.after.reading)
        report.say(outcome.sentence);
    else
        report.problem(outcome.sentence);
}

std::string two_digits(double value) {
    constexpr double kHundred = 100;
    return plain_number(round_half_even(value * kHundred) / kHundred);
}

/// "25 to 850" for each loop that the curve moves.
void say_range(const ProfileCurve& curve, std::size_t loop, ProfileReport& report) {
    if (!curve.moves(loop)) return;
    double low = curve.start.set_points[loop];
    double high = low;
    for (const CurveSegment& segment : curve.segments) {
        low = std::min({low, segment.from[loop], segment.to[loop]});
        high = std::max({high, segment.from[loop], segment.to[loop]});
    }
    report.say("Set point " + std::to_string(loop + 1) + " begins at " +
               two_digits(curve.start.set_points[loop]) + " and goes from " + two_digits(low) +
               " to " + two_digits(high) + ".");
}

/// What a start would do; false when it must not be.
bool say_start(ProfileTerminal& terminal, const ProfileReadResult& read, const RunReading& now,
               ProfileCurve& curve) {
    const ProfileOptions& options = terminal.options;
    ProfileReport& report = terminal.report;
    const ProfileFormat& format = read.model->format;
    const auto profile = read.profiles.find(*options.profile);
    if (profile == read.profiles.end()) {
        report.problem("There is no profile " + std::to_string(*options.profile) + ".");
        return false;
    }
    const auto steps = static_cast<int>(profile->second.steps.size());
    if (options.step < 1 || options.step > steps) {
        report.problem("Profile " + std::to_string(*options.profile) + " has " +
                       std::to_string(steps) + " steps: there is no step " +
                       std::to_string(options.step) + ".");
        return false;
    }
    CurveStart start{*options.profile, options.step, {}};
    for (std::size_t loop = 0; loop < kLoops; ++loop)
        start.set_points[loop] = now.process_values[loop].value_or(0);
    curve = unroll(format, read.profiles, start);
    for (const auto& [number, reached] : read.profiles)
        for (const std::string& line : profile_table(format, reached))
            report.say(line);
    for (const auto& finding : check_profile(format, read.profiles, *options.profile,
                                             {options.steepest, start.set_points})) {
        if (options.unchecked)
            report.say("Note: " + finding.sentence);
        else
            report.problem(finding.sentence);
    }
    report.set("ends", curve.how == CurveEnd::Ended);
    report.set("seconds", curve.seconds);
    report.say(curve.how == CurveEnd::Ended
                   ? "It takes " + duration_text(curve.seconds) + ", waiting for inputs aside."
                   : std::string("It does not come to an end by itself."));
    for (std::size_t loop = 0; loop < kLoops; ++loop)
        say_range(curve, loop, report);
    return true;
}

/// Waits for the next poll; false when an interrupt came.
bool wait_seconds(double seconds, TerminalEnvironment& environment) {
    constexpr double kMs = 1000;
    const std::uint32_t begin = environment.tick.timeGetTime();
    const auto wanted = static_cast<std::uint32_t>(seconds * kMs);
    while (!environment.stop) {
        const std::uint32_t spent = environment.tick.timeGetTime() - begin;
        if (spent >= wanted) return true;
        environment.wait_ms(static_cast<int>(std::min<std::uint32_t>(wanted - spent, kWaitMs)));
    }
    return false;
}

std::string loops_text(const std::array<std::optional<double>, kLoops>& values) {
    std::string text;
    for (const auto& value : values)
        if (value) text += (text.empty() ? "" : ", ") + two_digits(*value);
    return text;
}

std::string sample_text(const RunSample& sample) {
    const RunReading& reading = *sample.reading;
    std::string text = time_text(calendar_time(sample.time_ms)) + "  " + run_sentence(reading) +
                       "  Set points " + loops_text(reading.set_points) + ", process values " +
                       loops_text(reading.process_values);
    if (reading.events) text += ", events " + std::to_string(*reading.events);
    const auto deviations = std::array{sample.deviation(0), sample.deviation(1)};
    if (deviations[0] || deviations[1]) text += ", deviation " + loops_text(deviations);
    return text;
}

/// A watching on its way: polls, shows, writes the CSV file, and tells when the line is lost and
/// when it is back.
class Watch {
  public:
    Watch(ProfileTerminal& terminal, const ProfileFormat& format)
        : terminal_(terminal), format_(format), runner_(runner_of(terminal, format)) {
        if (!csv_path().empty())
            naming_csv([this] {
                csv_ = CreateTextFile(csv_path(), true);
                csv_->writeline(csv_head());
            });
        TerminalEnvironment& environment = terminal.environment;
        time_.start(environment.tick.timeGetTime(), calendar_milliseconds(environment.clock.now()));
    }

    void run() {
        const ProfileOptions& options = terminal_.options;
        for (int polls = 1;; ++polls) {
            take(runner_.poll());
            if (options.count > 0 && polls >= options.count) return;
            if (!wait_seconds(options.interval, terminal_.environment)) return;
            terminal_.work_went_on(); // a port that is gone says so at every poll
        }
    }

  private:
    void take(const RunPoll& poll) {
        const double now = time_.at(terminal_.environment.tick.timeGetTime());
        if (poll.reading && terminal_.options.curve) follow(*poll.reading);
        const bool gap_before = !record_.samples().empty() && !record_.samples().back().reading;
        const RunSample& sample = record_.add(now, poll.reading);
        if (!poll.reading) {
            if (poll.sentence != lost_) terminal_.report.problem(poll.sentence);
            lost_ = poll.sentence;
            if (!gap_before) write(sample);
            return;
        }
        if (!std::exchange(lost_, {}).empty())
            terminal_.report.say("The controller answers again.");
        write(sample);
        terminal_.report.say(sample_text(sample));
        Json json = reading_json(*sample.reading);
        json.set("time", iso_date_text(calendar_time(now)) + " " + time_ms_text(calendar_time(now)))
            .set("deviation", Json(std::vector{sample.deviation(0), sample.deviation(1)}));
        terminal_.report.show_now(json);
    }

    void write(const RunSample& sample) {
        if (csv_) naming_csv([&] { csv_->writeline(csv_line(sample)); });
    }

    [[nodiscard]] const std::string& csv_path() const { return terminal_.options.csv; }
    /// The message of a full disk names no file.
    template <class Work> void naming_csv(Work write) {
        try {
            write();
        } catch (const RunTimeError&) {
            terminal_.report.problem("The file \"" + csv_path() + "\" cannot be written.");
            throw;
        }
    }

    /// Reads the profile when another one runs, and computes its curve. Where it began is taken
    /// from the first reading: of a run that is under way the first ramp may stand elsewhere.
    void follow(const RunReading& reading) {
        if (!reading.active() || followed_ == reading.profile) return;
        followed_ = reading.profile;
        const ProfileReadResult read =
            ProfileReader(terminal_.context()).read_with_jumps(reading.profile);
        terminal_.report.problems(read.problems);
        CurveStart start{reading.profile, 1, {}};
        for (std::size_t loop = 0; loop < kLoops; ++loop)
            start.set_points[loop] = reading.process_values[loop].value_or(0);
        record_.follow(unroll(format_, read.profiles, start));
    }

    ProfileTerminal& terminal_;
    const ProfileFormat& format_;
    ProfileRunner runner_;
    ProfileRecord record_{1};
    SteadyTime time_;
    int followed_ = 0; // profile
    std::unique_ptr<TextWriter> csv_;
    std::string lost_; // why there is no reading now
};

} // namespace

void profile_start(ProfileTerminal& terminal) {
    const ProfileOptions& options = terminal.options;
    ProfileReport& report = terminal.report;
    const ProfileReadResult read =
        ProfileReader(terminal.context()).read_with_jumps(*options.profile);
    report.problems(read.problems);
    if (!read.complete) return;
    ProfileRunner runner = runner_of(terminal, read.model->format);
    const RunPoll now = runner.poll();
    if (!now.reading) return report.problem(now.sentence);
    if (now.reading->active()) return report.problem("Not started. " + run_sentence(*now.reading));
    ProfileCurve curve;
    if (!say_start(terminal, read, *now.reading, curve)) return;
    if (report.failed()) return report.problem("Not started. --unchecked starts it all the same.");
    if (!terminal.ask_yes("Do you want to start profile " + std::to_string(*options.profile) +
                              " at step " + std::to_string(options.step) + "?",
                          options.yes))
        return report.problem("Not started.");
    report_outcome(runner.start(*options.profile, options.step), report);
}

void profile_command(ProfileTerminal& terminal, RunCommand command) {
    const auto model = terminal.read_model();
    if (!model) return;
    report_outcome(runner_of(terminal, model->format).command(command), terminal.report);
}

void profile_watch(ProfileTerminal& terminal) {
    const ProfileOptions& options = terminal.options;
    const auto model = terminal.read_model();
    if (!model) return;
    if (!options.csv.empty() && fileexists(options.csv) &&
        !terminal.ask_yes("File already exists. Do you want to overwrite this file?", options.yes))
        return terminal.report.problem("Nothing was watched.");
    Watch(terminal, model->format).run();
}

} // namespace pelvan
