#include "transfer/comparison.h"

#include <algorithm>

#include "text/numbers.h"

namespace pelvan {

TransferResult Comparison::run(const std::string& file) {
    run_.listener.begun();
    run_.listener.working();
    if (!same_model(file)) {
        if (!run_.canceled()) run_.listener.tell("The file is of another model.");
        return {false, run_.errors.faults(), 0};
    }
    run_.log("******Beginning  Compare******");
    compare_lines(file);
    if (run_.canceled()) {
        run_.log("*******Compare Canceled*******");
        return {false, run_.errors.faults(), differences_};
    }
    run_.log("*******Compare Complete*******");
    run_.listener.tell(outcome());
    return {compared_ > 0, run_.errors.faults(), differences_};
}

std::string Comparison::outcome() const {
    if (compared_ == 0) return "The file has no register line: nothing was compared.";
    if (differences_ == 0)
        return run_.errors.faults() == 0
                   ? "The controller holds what the file says."
                   : "No difference was found, but not everything could be compared.";
    return "The controller differs from the file in " + std::to_string(differences_) +
           (differences_ == 1 ? " register." : " registers.");
}

bool Comparison::same_model(const std::string& file) {
    const Reading model = run_.access.read_model();
    if (model.failed()) {
        run_.cancel.canceled = true;
        return false;
    }
    const auto setup = opentextfile(file);
    const auto number = static_cast<float>(leading_number(model.value));
    if (model_in_header(skip_to_line(*setup, kModelLine + 1)) != number) return false;
    find_profiles(number);
    return true;
}

void Comparison::find_profiles(float model) {
    const std::string path = sequence_path(run_.directory, plain_single(model) + ".cds");
    if (!fileexists(path)) return;
    SequenceFile sequence(path);
    if (sequence.has_profiles()) profiles_.emplace(run_, sequence.read_profile_registers());
}

void Comparison::compare_lines(const std::string& file) {
    const int of = std::max(1, count_lines(file) - (kFirstSetupLine - 1));
    run_.listener.progress(0, of);
    const auto setup = opentextfile(file);
    skip_to_line(*setup, kFirstSetupLine);
    for (int done = 1; !setup->AtEndOfStream() && !run_.canceled(); ++done) {
        const std::string text = setup->readline();
        if (const auto line = parse_setup_line(text))
            compare_line(*line);
        else if (!text.empty())
            run_.errors.list_line(text);
        run_.listener.progress(std::min(done, of), of);
        run_.listener.let_events_run();
    }
    if (!run_.canceled()) check_step_count();
}

void Comparison::compare_line(const SetupLine& line) {
    ++compared_;
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

void Comparison::compare_register(const SetupLine& line) {
    const Reading reading = run_.access.read(line.register_number);
    if (reading.failed()) {
        run_.cancel.canceled = true;
        return;
    }
    if (static_cast<float>(leading_number(reading.value)) != line.value)
        list_difference(line, reading.value);
}

void Comparison::list_difference(const SetupLine& line, const std::string& held) {
    const std::string value = plain_single(line.value);
    run_.errors.list("Controller holds: " + held, line.register_number, value, "Different");
    run_.log(plain_single(line.register_number) + " " + value + " differs: " + held);
    ++differences_;
}

} // namespace pelvan
