#include "transfer/profile_upload.h"

#include "text/numbers.h"

namespace pelvan {
namespace {

constexpr int kMaxProfiles = 255;

std::string could_not_erase(const std::string& number) {
    return "Could not erase a profile that the program created to keep the indexing "
           "correct. Profile Number " +
           number +
           " did not exist in the "
           "upload file. You should manually delete Profile Number " +
           number + ".";
}

} // namespace

bool ProfileUpload::clear_profiles() {
    for (int number = 1; number <= kMaxProfiles && !run_.canceled(); ++number) {
        switch (access_.Profile_Exists(static_cast<float>(number))) {
        case ProfilePresence::GivenUp:
            return false;
        case ProfilePresence::NotSelected:
            // Numbers are without gaps: the first that cannot be selected ends them.
            return true;
        case ProfilePresence::Absent:
            run_.listener.let_events_run();
            break;
        case ProfilePresence::Present:
            if (!clear_profile(number)) return false;
        }
    }
    return !run_.canceled();
}

bool ProfileUpload::clear_profile(int number) {
    const Reply erased = access_.act(ProfileAction::Erase);
    if (erased.is(Verdict::NoReply)) return false;
    run_.log("Profile " + std::to_string(number) +
             (erased.is(Verdict::Accepted) ? " erased" : " not erased"));
    if (erased.is(Verdict::Refused)) access_.record_refusal(ProfileAction::Erase, erased);
    return true;
}

/// A profile that stands in only to keep the numbering, to be deleted at the end.
bool ProfileUpload::CreateDeleteProfile(int number) {
    const float number_register = access_.registers().number;
    const Reply selected = access_.try_select(number_register, static_cast<float>(number));
    const Reply created =
        selected.is(Verdict::Accepted) ? access_.act(ProfileAction::Create) : selected;
    if (created.is(Verdict::Accepted)) {
        created_.insert(number);
        present_.insert(number);
        run_.log("Profile " + std::to_string(number) + " created to keep the numbering");
        return !run_.canceled();
    }
    if (selected.is(Verdict::Refused)) {
        run_.errors.record(selected.text, number_register, static_cast<float>(number));
        return false;
    }
    if (created.is(Verdict::Refused)) {
        access_.record_refusal(ProfileAction::Create, created);
        return false;
    }
    run_.listener.tell("Comm Error when creating the Delete Profile. Upload Canceled!");
    run_.cancel.canceled = true;
    return false;
}

bool ProfileUpload::fill_numbers_below(int number) {
    for (int below = 1; below < number; ++below) {
        if (present_.contains(below)) continue;
        const ProfilePresence presence = access_.Profile_Exists(static_cast<float>(below));
        if (presence == ProfilePresence::GivenUp || run_.canceled()) return false;
        if (presence == ProfilePresence::Present) {
            present_.insert(below);
            run_.listener.let_events_run();
        } else if (!CreateDeleteProfile(below)) {
            return false;
        }
    }
    return true;
}

Verdict ProfileUpload::select_line(const SetupLine& line) {
    selected_ = false;
    int number = 0;
    // A number beyond all profiles is left to the controller to refuse.
    if (line.value >= 1 && line.value <= static_cast<float>(kMaxProfiles)) {
        number = static_cast<int>(line.value);
        in_file_.insert(number);
        static_cast<void>(fill_numbers_below(number));
        if (run_.canceled()) return Verdict::NoReply;
    }
    Verdict verdict = access_.select_recorded(line.register_number, line.value).verdict;
    // A profile that could not be cleared before must not get the file's steps on top of its own.
    if (verdict == Verdict::Accepted && !created_.contains(number)) {
        verdict = access_.act_recorded(ProfileAction::Erase).verdict;
        if (verdict == Verdict::Accepted) created_.insert(number);
    }
    selected_ = verdict == Verdict::Accepted;
    step_selected_ = selected_;
    return verdict;
}

Verdict ProfileUpload::select_step_line(const SetupLine& line) {
    const Reply reply = access_.select_recorded(line.register_number, line.value);
    step_selected_ = reply.is(Verdict::Accepted);
    return reply.verdict;
}

Verdict ProfileUpload::action_line(const SetupLine& line) {
    for (const ProfileAction action : {ProfileAction::Create, ProfileAction::InsertStep})
        if (line.value == static_cast<float>(action)) return access_.act_recorded(action).verdict;
    return run_.access.write(line.register_number, line.value).verdict;
}

Verdict ProfileUpload::not_selected(const std::string& what, const SetupLine& line) {
    run_.errors.list("No " + what + " selected", line.register_number, line.value);
    return Verdict::Refused;
}

Verdict ProfileUpload::restore_line(const SetupLine& line) {
    const ProfileRegisters& registers = access_.registers();
    if (line.register_number == registers.number) return select_line(line);
    // Without its profile selected, a line would be written into another profile.
    if (!selected_) return not_selected("profile", line);
    if (line.register_number == registers.action) return action_line(line);
    if (line.register_number == registers.step()) return select_step_line(line);
    if (!step_selected_) return not_selected("step", line);
    return run_.access.write(line.register_number, line.value).verdict;
}

Verdict ProfileUpload::erase_filler(int number) {
    const float number_register = access_.registers().number;
    const Reply selected = access_.try_select(number_register, static_cast<float>(number));
    const Reply erased =
        selected.is(Verdict::Accepted) ? access_.act(ProfileAction::Erase) : selected;
    if (selected.is(Verdict::Refused))
        run_.errors.record(selected.text, number_register, static_cast<float>(number));
    else if (erased.is(Verdict::Refused))
        access_.record_refusal(ProfileAction::Erase, erased);
    else if (!erased.is(Verdict::Accepted))
        list_not_erased(number);
    return erased.verdict;
}

void ProfileUpload::list_not_erased(int number) {
    run_.errors.list("Profile not erased", access_.registers().number, static_cast<float>(number));
}

void ProfileUpload::erase_created() {
    const bool canceled_before = run_.canceled();
    bool silent = false; // the line: one message tells it
    for (const int number : created_) {
        if (in_file_.contains(number)) continue;
        // The cancel of the upload leaves this clean-up to be done; a cancel of the clean-up itself
        // must not leave unsaid what stays.
        if (silent || (run_.canceled() && !canceled_before)) {
            list_not_erased(number);
            continue;
        }
        const std::string text = std::to_string(number);
        const Verdict verdict = erase_filler(number);
        silent = verdict == Verdict::NoReply;
        run_.log("Profile " + text + (verdict == Verdict::Accepted ? " erased" : " not erased"));
        if (verdict != Verdict::Accepted) run_.listener.tell(could_not_erase(text));
    }
}

} // namespace pelvan
