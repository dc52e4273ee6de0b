#include "text/numbers.h"
#include "transfer/profile_transfer.h"

namespace pelvan {
namespace {

using Outcome = ControllerAccess::Outcome;

constexpr int kAttempts = 5;
constexpr int kMostProfiles = 255;

std::string could_not_erase(const std::string& number) {
    return "Could not erase a profile that the program created to keep the indexing "
           "correct. Profile Number " +
           number +
           " did not exist in the "
           "upload file. You should manually delete Profile Number " +
           number + ".";
}

} // namespace

void ProfileTransfer::begin_upload(const ProfileRegisters& registers) {
    registers_ = registers;
    present_.clear();
    created_.clear();
    in_file_.clear();
    selected_ = false;
    step_selected_ = false;
}

std::optional<int> ProfileTransfer::step_count() {
    const auto steps = access_.read_number(registers_.step_count);
    if (!steps) run_.cancel = true;
    return steps;
}

Outcome ProfileTransfer::try_select(float register_number, float value) {
    Outcome outcome = Outcome::NoReply;
    for (int i = 0; i < kAttempts; ++i) {
        outcome = access_.write_once(register_number, value);
        if (outcome == Outcome::Accepted || outcome == Outcome::Refused) break;
    }
    return outcome;
}

Outcome ProfileTransfer::select_register(float register_number, float value) {
    Outcome outcome = try_select(register_number, value);
    while (outcome == Outcome::NoReply && access_.ask_retry())
        outcome = try_select(register_number, value);
    if (outcome == Outcome::NoReply) run_.cancel = true;
    return outcome;
}

ProfileTransfer::Restored ProfileTransfer::select_recorded(float register_number, float value,
                                                           TextWriter& errors) {
    const Outcome outcome = select_register(register_number, value);
    if (outcome == Outcome::NoReply) return Restored::Canceled;
    if (outcome == Outcome::Accepted) return Restored::Accepted;
    if (outcome == Outcome::Refused)
        access_.record_refusal(register_number, value, errors);
    else
        access_.list_damaged(register_number, value);
    return Restored::Refused;
}

std::optional<bool> ProfileTransfer::Profile_Exists(float number) {
    const Outcome outcome = select_register(registers_.number, number);
    if (outcome == Outcome::NoReply) return std::nullopt;
    // Which profile is selected now is not known: no answer about another one is given.
    if (outcome == Outcome::Damaged) access_.list_damaged(registers_.number, number);
    if (outcome != Outcome::Accepted) return false;
    const auto steps = step_count();
    if (!steps) return std::nullopt;
    return *steps > 0;
}

/// An action must happen once: when its reply is lost, the number of steps tells whether it did,
/// and only an action that did not happen is repeated.
Outcome ProfileTransfer::act(Action action, int steps_before) {
    Outcome outcome = Outcome::NoReply;
    for (int i = 0; i < kAttempts; ++i) {
        outcome = access_.write_once(registers_.action, static_cast<float>(action));
        if (outcome == Outcome::Accepted) return outcome;
        const auto steps = step_count();
        if (!steps) return Outcome::NoReply;
        if (*steps != steps_before) return Outcome::Accepted;
        if (outcome == Outcome::Refused) break;
    }
    return outcome;
}

Outcome ProfileTransfer::create_selected() {
    const auto steps = step_count();
    if (!steps) return Outcome::NoReply;
    return *steps > 0 ? Outcome::Accepted : act(Action::Create, 0);
}

Outcome ProfileTransfer::erase_selected() {
    const auto steps = step_count();
    if (!steps) return Outcome::NoReply;
    return *steps == 0 ? Outcome::Accepted : act(Action::Erase, *steps);
}

Outcome ProfileTransfer::insert_step() {
    const auto steps = step_count();
    return steps ? act(Action::InsertStep, *steps) : Outcome::NoReply;
}

bool ProfileTransfer::clear_profiles(TextWriter& errors) {
    for (int number = 1; number <= kMostProfiles && !run_.cancel; ++number) {
        const auto exists = Profile_Exists(static_cast<float>(number));
        if (!exists) return false;
        // Numbers are without gaps: the first that cannot be selected ends them.
        if (!*exists && !access_.last_write_accepted()) return true;
        if (!*exists) {
            services_.desktop.let_events_run();
            continue;
        }
        const Outcome outcome = erase_selected();
        if (outcome == Outcome::NoReply) return false;
        log_("Profile " + std::to_string(number) +
             (outcome == Outcome::Accepted ? " erased" : " not erased"));
        if (outcome == Outcome::Refused)
            access_.record_refusal(registers_.action, static_cast<float>(Action::Erase), errors);
    }
    return !run_.cancel;
}

/// A profile that stands in only to keep the numbering, to be deleted at the end.
bool ProfileTransfer::CreateDeleteProfile(int number, TextWriter& errors) {
    const Outcome selected = try_select(registers_.number, static_cast<float>(number));
    const Outcome outcome = selected == Outcome::Accepted ? create_selected() : selected;
    if (outcome == Outcome::Accepted) {
        created_.insert(number);
        present_.insert(number);
        log_("Profile " + std::to_string(number) + " created to keep the numbering");
        return !run_.cancel;
    }
    if (outcome == Outcome::Refused) {
        if (selected == Outcome::Refused)
            access_.record_refusal(registers_.number, static_cast<float>(number), errors);
        else
            access_.record_refusal(registers_.action, static_cast<float>(Action::Create), errors);
        return false;
    }
    services_.dialogs.message_box("Comm Error when creating the Delete Profile. Upload Canceled!");
    run_.cancel = true;
    return false;
}

bool ProfileTransfer::fill_numbers_below(int number, TextWriter& errors) {
    for (int below = 1; below < number; ++below) {
        if (present_.contains(below)) continue;
        const auto exists = Profile_Exists(static_cast<float>(below));
        if (!exists || run_.cancel) return false;
        if (*exists) {
            present_.insert(below);
            services_.desktop.let_events_run();
        } else if (!CreateDeleteProfile(below, errors)) {
            return false;
        }
    }
    return true;
}

ProfileTransfer::Restored ProfileTransfer::plain_line(const SetupLine& line, TextWriter& errors) {
    if (!access_.WriteDataToControl(line.register_number, line.value, errors) &&
        !access_.CheckCommErrorWrite(line.register_number, line.value, errors))
        return Restored::Canceled;
    return access_.last_write_accepted() ? Restored::Accepted : Restored::Refused;
}

ProfileTransfer::Restored ProfileTransfer::act_recorded(Action action, TextWriter& errors) {
    for (;;) {
        const Outcome outcome = action == Action::Create  ? create_selected()
                                : action == Action::Erase ? erase_selected()
                                                          : insert_step();
        if (outcome == Outcome::Accepted) return Restored::Accepted;
        if (outcome != Outcome::NoReply) {
            access_.record_refusal(registers_.action, static_cast<float>(action), errors);
            return Restored::Refused;
        }
        if (run_.cancel || !access_.ask_retry()) return Restored::Canceled;
    }
}

ProfileTransfer::Restored ProfileTransfer::select_line(const SetupLine& line, TextWriter& errors) {
    selected_ = false;
    int number = 0;
    // A number beyond all profiles is left to the controller to refuse.
    if (line.value >= 1 && line.value <= static_cast<float>(kMostProfiles)) {
        number = static_cast<int>(line.value);
        in_file_.insert(number);
        static_cast<void>(fill_numbers_below(number, errors));
        if (run_.cancel) return Restored::Canceled;
    }
    Restored restored = select_recorded(line.register_number, line.value, errors);
    // A profile that could not be cleared before must not get the file's steps on top of its own.
    if (restored == Restored::Accepted && !created_.contains(number)) {
        restored = act_recorded(Action::Erase, errors);
        if (restored == Restored::Accepted) created_.insert(number);
    }
    selected_ = restored == Restored::Accepted;
    step_selected_ = selected_;
    return restored;
}

ProfileTransfer::Restored ProfileTransfer::action_line(const SetupLine& line, TextWriter& errors) {
    const bool create = line.value == static_cast<float>(Action::Create);
    if (!create && line.value != static_cast<float>(Action::InsertStep))
        return plain_line(line, errors);
    return act_recorded(create ? Action::Create : Action::InsertStep, errors);
}

ProfileTransfer::Restored ProfileTransfer::restore_line(const SetupLine& line, TextWriter& errors) {
    if (line.register_number == registers_.number) return select_line(line, errors);
    // Without its profile selected, a line would be written into another profile.
    if (!selected_) {
        access_.list_error("No profile selected", line.register_number, plain_single(line.value));
        return Restored::Refused;
    }
    if (line.register_number == registers_.action) return action_line(line, errors);
    if (line.register_number == registers_.step()) {
        const Restored restored = select_recorded(line.register_number, line.value, errors);
        step_selected_ = restored == Restored::Accepted;
        return restored;
    }
    if (!step_selected_) {
        access_.list_error("No step selected", line.register_number, plain_single(line.value));
        return Restored::Refused;
    }
    return plain_line(line, errors);
}

Outcome ProfileTransfer::erase_filler(int number) {
    const Outcome selected = try_select(registers_.number, static_cast<float>(number));
    return selected == Outcome::Accepted ? erase_selected() : selected;
}

void ProfileTransfer::erase_created() {
    const bool canceled_before = run_.cancel;
    bool silent = false; // the line: one message tells it
    for (const int number : created_) {
        if (in_file_.contains(number)) continue;
        const std::string text = std::to_string(number);
        // The cancel of the upload leaves this clean-up to be done; a cancel of the clean-up itself
        // must not leave unsaid what stays.
        if (silent || (run_.cancel && !canceled_before)) {
            access_.list_error("Profile not erased", registers_.number, text);
            continue;
        }
        const Outcome outcome = erase_filler(number);
        const bool erased = outcome == Outcome::Accepted;
        silent = outcome == Outcome::NoReply;
        log_("Profile " + text + (erased ? " erased" : " not erased"));
        if (erased) continue;
        services_.dialogs.message_box(could_not_erase(text));
    }
}

} // namespace pelvan
