#include "text/numbers.h"
#include "transfer/profile_transfer.h"

namespace pelvan {
namespace {

using Outcome = ControllerAccess::Outcome;

constexpr int kAttempts = 5;
constexpr int kMostProfiles = 255;

} // namespace

void ProfileTransfer::begin_upload(const ProfileRegisters& registers) {
    registers_ = registers;
    present_.clear();
    created_.clear();
    in_file_.clear();
    selected_ = false;
}

Outcome ProfileTransfer::select_register(float register_number, float value) {
    Outcome outcome = Outcome::NoReply;
    for (int i = 0; i < kAttempts; ++i) {
        outcome = access_.write_once(register_number, value);
        if (outcome == Outcome::Accepted || outcome == Outcome::Refused) break;
    }
    return outcome;
}

std::optional<bool> ProfileTransfer::Profile_Exists(float number) {
    for (;;) {
        const Outcome outcome = select(number);
        if (outcome == Outcome::Refused) return false;
        if (outcome != Outcome::NoReply) break;
        if (!access_.ask_retry()) return std::nullopt;
    }
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
        if (!*exists) continue;
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
    Outcome outcome = select(static_cast<float>(number));
    if (outcome == Outcome::Accepted) outcome = create_selected();
    if (outcome == Outcome::Accepted) {
        created_.insert(number);
        present_.insert(number);
        return true;
    }
    if (outcome == Outcome::Refused) {
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
        if (!exists) run_.cancel = true;
        if (run_.cancel) return false;
        if (*exists)
            present_.insert(below);
        else if (!CreateDeleteProfile(below, errors))
            return false;
    }
    return true;
}

ProfileTransfer::Restored ProfileTransfer::plain_line(const SetupLine& line, TextWriter& errors) {
    if (!access_.WriteDataToControl(line.register_number, line.value, errors) &&
        !access_.CheckCommErrorWrite(line.register_number, line.value, errors))
        return Restored::Canceled;
    return access_.last_write_accepted() ? Restored::Accepted : Restored::Refused;
}

ProfileTransfer::Restored ProfileTransfer::select_line(const SetupLine& line, TextWriter& errors) {
    selected_ = false;
    // A number beyond all profiles is left to the controller to refuse.
    if (line.value >= 1 && line.value <= static_cast<float>(kMostProfiles)) {
        const int number = static_cast<int>(line.value);
        in_file_.insert(number);
        static_cast<void>(fill_numbers_below(number, errors));
        if (run_.cancel) return Restored::Canceled;
    }
    const Restored restored = plain_line(line, errors);
    selected_ = restored == Restored::Accepted;
    return restored;
}

ProfileTransfer::Restored ProfileTransfer::action_line(const SetupLine& line, TextWriter& errors) {
    const bool create = line.value == static_cast<float>(Action::Create);
    if (!create && line.value != static_cast<float>(Action::InsertStep))
        return plain_line(line, errors);
    for (;;) {
        const Outcome outcome = create ? create_selected() : insert_step();
        if (outcome == Outcome::Accepted) return Restored::Accepted;
        if (outcome != Outcome::NoReply) {
            access_.record_refusal(line.register_number, line.value, errors);
            return Restored::Refused;
        }
        if (!access_.ask_retry()) return Restored::Canceled;
    }
}

ProfileTransfer::Restored ProfileTransfer::restore_line(const SetupLine& line, TextWriter& errors) {
    if (line.register_number == registers_.number) return select_line(line, errors);
    // Without its profile selected, a line would be written into another profile.
    if (!selected_) {
        access_.list_error("No profile selected", line.register_number, plain_single(line.value));
        return Restored::Refused;
    }
    return line.register_number == registers_.action ? action_line(line, errors)
                                                     : plain_line(line, errors);
}

void ProfileTransfer::erase_created() {
    for (const int number : created_) {
        if (in_file_.contains(number)) continue;
        const bool erased = select(static_cast<float>(number)) == Outcome::Accepted &&
                            erase_selected() == Outcome::Accepted;
        if (erased) continue;
        const std::string text = std::to_string(number);
        services_.dialogs.message_box(
            "Could not erase a profile that the program created to keep the indexing "
            "correct. Profile Number " +
            text +
            " did not exist in the "
            "upload file. You should manually delete Profile Number " +
            text + ".");
    }
}

} // namespace pelvan
