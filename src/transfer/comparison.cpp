#include "transfer/comparison.h"

#include "text/numbers.h"
#include "transfer/setup_file.h"

namespace pelvan {
namespace {

using Outcome = ControllerAccess::Outcome;

constexpr float kInsertStep = 3;

} // namespace

std::string Comparison::run(const std::string& file) {
    if (!same_model(file)) return run_.cancel ? "" : "The file is of another model.";
    log_("******Beginning  Compare******");
    const int faults_before = run_.faults;
    compare_lines(file);
    if (run_.cancel) {
        log_("*******Compare Canceled*******");
        return {};
    }
    log_("*******Compare Complete*******");
    run_.completed = compared_ > 0;
    return outcome(faults_before);
}

std::string Comparison::outcome(int faults_before) const {
    if (compared_ == 0) return "The file has no register line: nothing was compared.";
    if (run_.differences == 0)
        return run_.faults == faults_before
                   ? "The controller holds what the file says."
                   : "No difference was found, but not everything could be compared.";
    return "The controller differs from the file in " + std::to_string(run_.differences) +
           (run_.differences == 1 ? " register." : " registers.");
}

bool Comparison::same_model(const std::string& file) {
    const std::string model = access_.read_model();
    if (model == kReadFailed) {
        run_.cancel = true;
        return false;
    }
    const auto setup = opentextfile(file);
    const auto number = static_cast<float>(leading_number(model));
    if (model_in_header(skip_to_line(*setup, kModelLine + 1)) != number) return false;
    const std::string sequence =
        sequence_path(services_.application_directory, plain_single(number) + ".cds");
    if (fileexists(sequence)) {
        SequenceFile cds(sequence);
        has_profiles_ = cds.has_profiles();
        registers_ = cds.read_profile_registers();
    }
    profiles_.begin_upload(registers_);
    return true;
}

void Comparison::compare_lines(const std::string& file) {
    progress_.set_Value(0);
    progress_.set_Max(count_lines(file) - (kFirstSetupLine - 1));
    const auto setup = opentextfile(file);
    skip_to_line(*setup, kFirstSetupLine);
    while (!setup->AtEndOfStream() && !run_.cancel) {
        const std::string text = setup->readline();
        if (const auto line = parse_setup_line(text))
            compare_line(*line);
        else if (!text.empty())
            access_.list_line(text);
        progress_.set_Value(progress_.Value() + 1);
        services_.desktop.let_events_run();
    }
    if (!run_.cancel) check_step_count();
}

void Comparison::compare_line(const SetupLine& line) {
    ++compared_;
    if (line.register_number != registers_.action) check_step_count();
    if (run_.cancel) return;
    if (!has_profiles_ || !registers_.contains(line.register_number)) return compare_register(line);
    if (line.register_number == registers_.number) return select_profile(line);
    compare_profile_line(line);
}

void Comparison::select_profile(const SetupLine& line) {
    const auto exists = profiles_.Profile_Exists(line.value);
    profile_there_ = exists.value_or(false);
    step_there_ = true;
    steps_wanted_ = 1;
    if (exists && !*exists) list_difference(line, "no such profile");
}

/// The lines that create a profile and insert its steps say how many steps it has.
void Comparison::compare_profile_line(const SetupLine& line) {
    if (!profile_there_) return;
    if (line.register_number == registers_.action) {
        if (line.value == kInsertStep) ++steps_wanted_;
        return;
    }
    if (line.register_number == registers_.step()) return select_step(line);
    if (step_there_) compare_register(line);
}

/// Called while the profile is still the selected one.
void Comparison::check_step_count() {
    if (!profile_there_ || steps_wanted_ == 0) return;
    const auto steps = profiles_.step_count();
    if (steps && *steps != steps_wanted_)
        list_difference({registers_.step_count, static_cast<float>(steps_wanted_)},
                        std::to_string(*steps));
    steps_wanted_ = 0;
}

void Comparison::select_step(const SetupLine& line) {
    const Outcome outcome = profiles_.select_register(line.register_number, line.value);
    step_there_ = outcome == Outcome::Accepted;
    if (outcome == Outcome::Refused) list_difference(line, "no such step");
    if (outcome == Outcome::Damaged) access_.list_damaged(line.register_number, line.value);
}

void Comparison::compare_register(const SetupLine& line) {
    const std::string value = access_.CheckCommErrorRead(
        line.register_number, access_.ReadDataFromControl(line.register_number));
    if (value == kReadFailed) {
        run_.cancel = true;
        return;
    }
    if (static_cast<float>(leading_number(value)) != line.value) list_difference(line, value);
}

void Comparison::list_difference(const SetupLine& line, const std::string& held) {
    const std::string value = plain_single(line.value);
    access_.list_error("Controller holds: " + held, line.register_number, value, "Different");
    log_(plain_single(line.register_number) + " " + value + " differs: " + held);
    ++run_.differences;
}

} // namespace pelvan
