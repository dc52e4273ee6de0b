#include "profile/window/profile_run_panel.h"

#include <array>
#include <cmath>

#include "profile/window/curve_picture.h"
#include "profile/window/step_words.h"
#include "registers/setup_file.h"
#include "text/numbers.h"

namespace pelvan {
namespace {

constexpr std::array<int, 6> kIntervals_s{1, 2, 5, 10, 30, 60};
constexpr int kPresetInterval = 1;     // index
constexpr int kDoubtInterval_ms = 500; // until it is known what became of a command
constexpr std::size_t kStepsAsked = 20;
constexpr double kHundred = 100;

std::vector<std::string> interval_texts() {
    std::vector<std::string> texts;
    texts.reserve(kIntervals_s.size());
    for (const int seconds : kIntervals_s)
        texts.push_back(std::to_string(seconds) + " s");
    return texts;
}

std::string value_text(const std::string& name,
                       const std::array<std::optional<double>, kLoops>& values) {
    std::string text;
    for (std::size_t loop = 0; loop < kLoops; ++loop) {
        if (!values[loop]) continue;
        text += text.empty() ? name + " " : " / ";
        text += plain_number(std::round(*values[loop] * kHundred) / kHundred);
    }
    return text.empty() ? text : text + "   ";
}

} // namespace

ProfileRunPanel::ProfileRunPanel(Services& services, Link& link, Modbus& modbus, ProfileWork& work,
                                 const ComboBox& address)
    : cmbInterval("cmbProfileInterval", interval_texts(), kPresetInterval, false,
                  "How often the state is read."),
      services_(services), link_(link), modbus_(modbus), work_(work), address_(address) {
    cmbInterval.Click = [this] { pace(); };
    tmr_Poll.Tick = [this] { poll(); };
    pace();
}

/// One for each model and address: what is in doubt at one controller is none of another's.
ProfileRunner& ProfileRunPanel::runner() {
    if (runner_ == nullptr || runner_model_ != work_.model() ||
        runner_address_ != address_.Text()) {
        runner_model_ = work_.model();
        runner_address_ = address_.Text();
        runner_ = std::make_unique<ProfileRunner>(link_, modbus_, DeviceAddress(runner_address_),
                                                  work_.format());
        reading_.reset();
        lost_ = true;
    }
    return *runner_;
}

double ProfileRunPanel::now_ms() {
    const double tick = services_.tick.timeGetTime();
    if (!time_.started()) time_.start(tick, calendar_milliseconds(services_.clock.now()));
    return time_.at(tick);
}

std::optional<RunState> ProfileRunPanel::state() const {
    if (lost_ || !reading_) return std::nullopt;
    return reading_->state;
}

/// Also while the line is lost: what ran then is not edited on a guess that it ended.
int ProfileRunPanel::running_profile() const {
    return reading_ && reading_->active() ? reading_->profile : 0;
}

void ProfileRunPanel::pace() {
    const auto chosen = static_cast<std::size_t>(std::max(cmbInterval.ListIndex(), 0));
    tmr_Poll.set_Interval(not_known() ? kDoubtInterval_ms : 1000 * kIntervals_s.at(chosen));
}

void ProfileRunPanel::set_watching(bool on) {
    if (on == watching()) return;
    if (!on) {
        tmr_Poll.stop();
        lost_ = true; // what was read grows old
        lbl_State.set_Caption("Not watched.");
        lbl_Values.set_Caption("");
        changed.raise();
        return;
    }
    tmr_Poll.start();
    poll();
}

void ProfileRunPanel::stop() {
    set_watching(false);
    reading_.reset();
    tracked_ = 0;
}

void ProfileRunPanel::poll() {
    if (work_.has_model() && work_.format().runs()) take(runner().poll());
}

void ProfileRunPanel::take(const RunPoll& poll) {
    if (poll.reading) {
        take_reading(*poll.reading);
    } else if (poll.how == PollEnd::Skipped) {
        // What is shown is of before; nothing says that it is wrong.
        lbl_Values.set_Caption("Waits for the line: " + poll.sentence);
    } else {
        lost_ = true;
        lbl_State.set_Caption("Not known.");
        lbl_Values.set_Caption(poll.sentence + " It is tried again at every interval.");
        add(std::nullopt);
    }
    pace();
    changed.raise();
}

void ProfileRunPanel::take_reading(const RunReading& reading) {
    const bool was_idle = !reading_ || !reading_->active();
    const std::optional<RunReading> before = std::exchange(reading_, reading);
    lost_ = false;
    const bool begins = reading.active() && (was_idle || tracked_ != reading.profile);
    if (begins || !has_record()) begin_run(before.value_or(reading));
    if (!reading.active()) {
        tracked_ = 0;
        std::array<double, kLoops> start{};
        for (std::size_t loop = 0; loop < kLoops; ++loop)
            start[loop] = reading.process_values[loop].value_or(
                reading.set_points[loop].value_or(ProfileWork::kRoom));
        work_.set_start(start);
    }
    add(reading);
    lbl_State.set_Caption(run_sentence(reading));
    show_values(reading);
}

/// A run begins at what the controller measured before; a jump into another profile is part of it.
void ProfileRunPanel::begin_run(const RunReading& before) {
    const int profile = reading_->active() ? reading_->profile : 0;
    tracked_ = profile;
    record_.clear();
    std::array<double, kLoops> start{};
    for (std::size_t loop = 0; loop < kLoops; ++loop)
        start[loop] = before.process_values[loop].value_or(ProfileWork::kRoom);
    ProfileCurve curve;
    if (profile != 0) curve = work_.curve_in_controller({profile, started_step_, start});
    started_step_ = 1;
    timeline_.begin(curve_picture(work_.format(), work_.editor().profiles(), curve));
    record_.follow(std::move(curve));
}

void ProfileRunPanel::add(const std::optional<RunReading>& reading) {
    if (!reading) {
        timeline_.add({now_ms(), {}, {}, {}});
        static_cast<void>(record_.add(now_ms(), reading));
    } else {
        timeline_.add(record_.add(now_ms(), reading));
    }
    RunDesk::changed.raise();
}

void ProfileRunPanel::show_values(const RunReading& reading) {
    std::string text = value_text("Set point", reading.set_points) +
                       value_text("Process value", reading.process_values);
    const RunSample& last = record_.samples().back();
    text += value_text("Deviation", {last.deviation(0), last.deviation(1)});
    if (reading.events) text += "Events " + events_text(*reading.events) + "   ";
    if (reading.jumps_done.value_or(0) > 0)
        text += "Jumps done " + std::to_string(*reading.jumps_done);
    lbl_Values.set_Caption(text);
}

void ProfileRunPanel::take(const CommandOutcome& outcome) {
    if (outcome.after.how != PollEnd::Skipped) take(outcome.after);
    if (outcome.how != CommandEnd::Done) {
        lbl_Values.set_Caption(outcome.sentence);
        if (outcome.how == CommandEnd::NotKnown && !outcome.after.reading)
            lbl_State.set_Caption("Not known.");
    }
    // Nobody sends a command without looking at what comes of it.
    if (outcome.how != CommandEnd::NotSent) tmr_Poll.start();
    pace();
    changed.raise();
}

void ProfileRunPanel::give(RunCommand command) {
    if (!work_.has_model() || !work_.format().runs()) return;
    take(runner().command(command));
}

void ProfileRunPanel::hold() {
    give(RunCommand::Hold);
}

void ProfileRunPanel::resume() {
    give(RunCommand::Resume);
}

void ProfileRunPanel::next() {
    const auto answer = services_.dialogs.message_box(
        "End the present step and begin the next one?", {}, MessageButtons::YesNoPreferNo);
    if (answer == MessageAnswer::Yes) give(RunCommand::Next);
}

void ProfileRunPanel::end() {
    const auto answer =
        services_.dialogs.message_box("End the run?", {}, MessageButtons::YesNoPreferNo);
    if (answer == MessageAnswer::Yes) give(RunCommand::End);
}

void ProfileRunPanel::start() {
    const Profile* chosen = work_.editor().profile();
    if (chosen == nullptr) return;
    const Profile profile = *chosen;
    // Where the curve will begin, and whether nothing runs.
    poll();
    if (state() && *state() != RunState::Off && *state() != RunState::Ended) return;
    const int steps = static_cast<int>(profile.steps.size());
    const std::string answer =
        services_.dialogs.input_box("Start profile " + std::to_string(profile.number) +
                                        " at step (1 to " + std::to_string(steps) + "):",
                                    "Start", "1");
    if (answer.empty()) return;
    const auto step = whole_number(answer, 1, steps);
    if (!step) {
        services_.dialogs.message_box("The profile has no step \"" + shown(answer) + "\".");
        return;
    }
    if (!agreed_to_start(profile, static_cast<int>(*step))) return;
    if (const std::string objection = start_objection(profile.number); !objection.empty()) {
        services_.dialogs.message_box("Nothing was started. " + objection, {}, MessageButtons::Ok,
                                      MessageIcon::Exclamation);
        return;
    }
    started_step_ = static_cast<int>(*step);
    const CommandOutcome outcome = runner().start(profile.number, started_step_);
    take(outcome);
    if (outcome.how == CommandEnd::NotSent || outcome.how == CommandEnd::Refused) {
        services_.dialogs.message_box(outcome.sentence, {}, MessageButtons::Ok,
                                      MessageIcon::Exclamation);
        return;
    }
    started.raise();
}

/// What the controller has is what runs, whatever is shown here.
bool ProfileRunPanel::agreed_to_start(const Profile& profile, int step) {
    const std::string name = profile_name(work_.format(), profile);
    std::string text = "Profile " + std::to_string(profile.number) +
                       (name.empty() ? "" : " \"" + name + "\"") + ":\n\n";
    std::size_t lines = 0;
    for (std::size_t i = static_cast<std::size_t>(step - 1); i < profile.steps.size(); ++i) {
        if (++lines > kStepsAsked) continue;
        text += std::to_string(i + 1) + ": " + step_words(work_.format(), profile.steps[i]) + "\n";
    }
    if (lines > kStepsAsked) text += "... " + std::to_string(lines - kStepsAsked) + " more\n";
    text += "\nIn all " + total_time_text(work_.curve_from(profile.number, step)) +
            ", and the time spent waiting for inputs.\n";
    const auto& held = work_.editor().in_controller();
    const auto same = held ? held->find(profile.number) : ProfileSet::const_iterator();
    if (!held)
        text += "The controller was not read: it may hold another profile of this number.\n";
    else if (same == held->end() || same->second != profile)
        text +=
            "The controller holds another profile of this number. Write this one first if it is "
            "the one that you want.\n";
    return services_.dialogs.message_box(text + "\nStart?", {}, MessageButtons::YesNoPreferNo) ==
           MessageAnswer::Yes;
}

void ProfileRunPanel::save_record() {
    FileDialogRequest request;
    request.filter = "Tables (*.csv)|*.csv|All Files (*.*)|*.*|";
    request.file_name = "run.csv";
    request.default_extension = "csv";
    request.overwrite_prompt = true;
    const auto path = services_.dialogs.save_file(request);
    if (!path) return;
    if (const std::string problem = record_.save_csv(*path); !problem.empty())
        services_.dialogs.message_box(problem, {}, MessageButtons::Ok, MessageIcon::Exclamation);
}

} // namespace pelvan
