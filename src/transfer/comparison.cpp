#include "transfer/comparison.h"

#include <algorithm>

#include "platform/scope_guard.h"
#include "text/numbers.h"

namespace pelvan {

TransferResult Comparison::run(const std::string& file) {
    bool completed = false;
    {
        const ScopeGuard leave([this] { run_.access.leave_line(); }); // however it ends
        completed = compare(file);
    }
    return {completed, run_.errors.faults(), differences_};
}

bool Comparison::compare(const std::string& file) {
    run_.listener.begun();
    run_.listener.working();
    const SetupFile setup(file);
    if (!setup.is_text()) {
        run_.listener.tell(SetupFile::kNoText);
        return false;
    }
    if (setup.is_empty()) {
        run_.listener.tell("The setup file " + *setup.lacks());
        return false;
    }
    if (!same_model(setup)) {
        if (!run_.canceled()) run_.listener.tell("The file is of another model.");
        return false;
    }
    run_.log("******Beginning  Compare******");
    run_.log("Profiles and registers that are not in the file are not compared.");
    run_.errors.list_in_header(setup.registers_in_header());
    compare_lines(setup);
    if (run_.canceled()) {
        run_.log("*******Compare Canceled*******");
        return false;
    }
    static_cast<void>(run_.access.in_step());
    run_.log("*******Compare Complete*******");
    const auto lacks = setup.lacks();
    run_.listener.tell((lacks ? "The setup file " + *lacks + " " : std::string()) + outcome());
    return compared_ > 0 && !lacks;
}

std::string Comparison::outcome() const {
    if (compared_ == 0) return "The file has no register line: nothing was compared.";
    if (differences_ == 0)
        return run_.errors.faults() == 0
                   ? "The controller holds what the file says."
                   : "No difference was found, but not everything could be compared.";
    return "The controller differs from the file in " +
           count_text(static_cast<std::size_t>(differences_), "register") + ".";
}

bool Comparison::same_model(const SetupFile& setup) {
    const Reading model = run_.access.read_model();
    if (model.failed()) {
        run_.cancel.canceled = true;
        return false;
    }
    const auto number = static_cast<float>(leading_number(model.value));
    if (setup.model() != number) return false;
    run_.access.remember_controller(run_.access.read_identity());
    find_profiles(number);
    return true;
}

void Comparison::find_profiles(float model) {
    const std::string path = sequence_path(run_.directory, plain_single(model) + ".cds");
    if (!fileexists(path)) return;
    SequenceFile sequence(path);
    if (sequence.has_profiles()) profiles_.emplace(run_, sequence.read_profile_registers());
}

void Comparison::compare_lines(const SetupFile& setup) {
    const int of = std::max(1, static_cast<int>(setup.register_lines().size()));
    int done = 0;
    run_.listener.progress(done, of);
    for (lines_ = setup.register_lines(); !lines_.empty(); lines_ = lines_.subspan(1)) {
        if (run_.canceled()) return;
        const std::string& text = lines_.front();
        if (const auto line = parse_setup_line(text))
            compare_line(*line);
        else if (!text.empty())
            run_.errors.list_line(text);
        run_.listener.progress(++done, of);
        run_.listener.let_events_run();
    }
    if (!run_.canceled()) check_step_count();
}

void Comparison::compare_line(const SetupLine& line) {
    ++compared_;
    if (line.no_number)
        run_.errors.list("Value is no whole number: " + *line.no_number, line.register_number,
                         line.value);
    if (!profiles_) return compare_register(line);
    const ProfileRegisters& registers = profiles_->registers();
    if (line.register_number != registers.action) check_step_count();
    if (run_.canceled()) return;
    if (!registers.contains(line.register_number)) return compare_register(line);
    if (line.register_number == registers.number) return select_profile(line);
    compare_profile_line(line);
}

void Comparison::select_profile(const SetupLine& line) {
    const ProfilePresence presence = profiles_->Profile_Exists(line.value);
    profile_there_ = presence == ProfilePresence::Present;
    step_there_ = true;
    steps_wanted_ = 1;
    if (!profile_there_ && presence != ProfilePresence::GivenUp)
        list_difference(line, "no such profile");
}

/// The lines that create a profile and insert its steps say how many steps it has.
void Comparison::compare_profile_line(const SetupLine& line) {
    if (!profile_there_) return;
    if (line.register_number == profiles_->registers().action) {
        if (line.value == static_cast<float>(ProfileAction::InsertStep)) ++steps_wanted_;
        return;
    }
    if (line.register_number == profiles_->registers().step()) return select_step(line);
    if (step_there_) compare_register(line);
}

/// Called while the profile is still the selected one.
void Comparison::check_step_count() {
    if (!profile_there_ || steps_wanted_ == 0) return;
    const auto steps = profiles_->step_count();
    if (steps && *steps != steps_wanted_)
        list_difference({profiles_->registers().step_count, static_cast<float>(steps_wanted_)},
                        std::to_string(*steps));
    steps_wanted_ = 0;
}

void Comparison::select_step(const SetupLine& line) {
    const Reply reply = profiles_->select_register(line.register_number, line.value);
    step_there_ = reply.is(Verdict::Accepted);
    if (reply.is(Verdict::Refused)) list_difference(line, "no such step");
    if (reply.is(Verdict::Damaged)) run_.errors.list(reply.text, line.register_number, line.value);
}

/// A line that selects something is no register to read.
std::optional<float> Comparison::upcoming_register(std::size_t index) const {
    const auto line = index < lines_.size() ? parse_setup_line(lines_[index]) : std::nullopt;
    if (!line) return std::nullopt;
    const float number = line->register_number;
    const ProfileRegisters* const profile = profiles_ ? &profiles_->registers() : nullptr;
    const bool selects = profile && (number == profile->number || number == profile->step() ||
                                     number == profile->action);
    return selects ? std::nullopt : std::optional(number);
}

void Comparison::compare_register(const SetupLine& line) {
    run_.access.read_ahead(line.register_number,
                           [this](std::size_t index) { return upcoming_register(index); });
    const Reading reading = run_.access.read_whole(line.register_number);
    switch (reading.reply.verdict) {
    case Verdict::NoReply:
        run_.cancel.canceled = true;
        return;
    case Verdict::Refused: // or not sent at all
        return run_.errors.list((reading.failed() ? "" : "Controller refused the read: ") +
                                    reading.reply.text,
                                line.register_number, line.value);
    case Verdict::Damaged:
        return run_.errors.list(reading.reply.text, line.register_number, line.value);
    case Verdict::Accepted:
        if (static_cast<float>(leading_number(reading.value)) != line.value)
            list_difference(line, reading.value);
    }
}

void Comparison::list_difference(const SetupLine& line, const std::string& held) {
    const std::string value = plain_single(line.value);
    run_.errors.list("Controller holds: " + held, line.register_number, value, "Different");
    run_.log(plain_single(line.register_number) + " " + value + " differs: " + held);
    ++differences_;
}

} // namespace pelvan
