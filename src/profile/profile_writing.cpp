#include "profile/profile_writing.h"

#include <algorithm>
#include <functional>
#include <iterator>
#include <utility>

namespace pelvan {

std::string refusal_while_running(ProfileSelection& selection, const std::set<int>& numbers) {
    const NumberRead running = selection.running_profile();
    if (!running.value)
        return "Which profile runs could not be read, so nothing is changed. " + running.problem;
    if (!numbers.contains(*running.value)) return {};
    return profile_place(*running.value) +
           " runs: it can be changed when it has come to its end or was ended.";
}

/// False when it is a problem, which is listed then.
bool ProfileWriting::take(const std::string& problem) {
    if (!problem.empty()) result_.problems.push_back(problem);
    return problem.empty();
}

void ProfileWriting::step_done() {
    run_.listener.progress(std::min(++done_, of_), of_);
}

ProfileWriteResult ProfileWriting::carry_out(const ProfileSet& wanted,
                                             const std::set<int>& erased) {
    for (const auto& [number, profile] : wanted)
        of_ += 2 * static_cast<int>(profile.steps.size());
    run_.listener.progress(0, of_);
    const NumberRead highest = selection_.highest();
    bool going_on = take(highest.problem);
    highest_ = highest.value.value_or(0);
    for (const auto& [number, profile] : wanted)
        going_on = going_on && !run_.canceled() && write_profile(profile);
    // From above, so that numbers that end up empty are given up.
    for (const int number : std::set<int, std::greater<>>(erased.begin(), erased.end()))
        going_on = going_on && !run_.canceled() && erase(number);
    erase_fillers();
    if (run_.canceled()) static_cast<void>(take(how_far()));
    result_.completed = going_on && result_.problems.empty() && result_.differences.empty();
    if (result_.completed) run_.listener.progress(of_, of_);
    return std::move(result_);
}

/// Where a cancel, or a controller that stayed silent, has ended the writing.
std::string ProfileWriting::how_far() const {
    const std::string ended = run_.cancel.gave_up ? "Given up" : "Cancelled";
    const int steps = of_ / 2; // each is read back, too
    if (steps == 0) return ended + ".";
    return ended + " when " + std::to_string(written_) + " of " + std::to_string(steps) +
           " steps were written.";
}

bool ProfileWriting::may_change(int number) {
    return take(refusal_while_running(selection_, {number}));
}

bool ProfileWriting::is_present(int number, bool& present) {
    present = present_.contains(number);
    if (present || number > highest_) return true;
    if (!take(selection_.select(number))) return false;
    const NumberRead steps = selection_.step_count();
    if (!take(steps.problem)) return false;
    present = *steps.value > 0;
    if (present) present_.insert(number);
    return true;
}

bool ProfileWriting::fill_below(int number) {
    for (int below = 1; below < number; ++below) {
        bool present = false;
        if (run_.canceled() || !is_present(below, present)) return false;
        if (present) continue;
        fillers_.insert(below); // may be there even when its creation is not confirmed
        if (!take(selection_.create(below))) return false;
        present_.insert(below);
        highest_ = std::max(highest_, below);
        run_.log("Profile " + std::to_string(below) + " created to keep the numbering");
    }
    return true;
}

bool ProfileWriting::write_profile(const Profile& wanted) {
    // The numbers below come first: with the highest profile the empty ones below it would go.
    if (!may_change(wanted.number) || !fill_below(wanted.number)) return false;
    if (!make_room(wanted) || !put(wanted)) {
        run_.log(profile_place(wanted.number) + " is not written or only in part");
        return false;
    }
    run_.log(profile_place(wanted.number) + " written");
    return read_back(wanted);
}

/// Leaves the number with a profile of as many steps as are wanted, all without content.
bool ProfileWriting::make_room(const Profile& wanted) {
    bool present = false;
    if (!is_present(wanted.number, present)) return false;
    result_.touched.insert(wanted.number);
    if (present && !take(selection_.erase(wanted.number))) return false;
    present_.erase(wanted.number);
    if (!take(selection_.create(wanted.number))) return false;
    present_.insert(wanted.number);
    highest_ = std::max(highest_, wanted.number);
    return take(selection_.select(wanted.number)) &&
           take(selection_.insert_steps(static_cast<int>(wanted.steps.size())));
}

bool ProfileWriting::put(const Profile& wanted) {
    if (!take(selection_.select(wanted.number))) return false;
    if (!put_fields(selection_.format().own, wanted.own)) return false;
    for (std::size_t i = 0; i < wanted.steps.size(); ++i) {
        if (run_.canceled() || !put_step(static_cast<int>(i) + 1, wanted.steps[i])) return false;
        ++written_;
        step_done();
    }
    return true;
}

bool ProfileWriting::put_step(int number, const ProfileStep& step) {
    // The type first: it decides which registers the step has, and sets them to its own values.
    const ProfileFormat& format = selection_.format();
    if (!take(selection_.select_step(number))) return false;
    if (!take(selection_.write(format.step_type, step.type))) return false;
    const StepKind* kind = format.kind(step.type);
    return !kind || put_fields(kind->fields, step.fields);
}

bool ProfileWriting::put_fields(const std::vector<ProfileField>& fields,
                                const std::map<int, int>& values) {
    for (const ProfileField& field : fields) {
        const auto value = values.find(field.number);
        if (value != values.end() && !take(selection_.write(field, value->second))) return false;
    }
    return true;
}

bool ProfileWriting::read_back(const Profile& wanted) {
    const ProfileRead read =
        read_profile(selection_, wanted.number, [this](int, int) { step_done(); });
    if (run_.canceled()) return false;
    std::ranges::copy(read.problems, std::back_inserter(result_.problems));
    if (!read.profile && read.problems.empty())
        return take(profile_place(wanted.number) + " is not there after it was written.");
    if (!read.profile) return true;
    const auto differences = profile_differences(selection_.format(), wanted, *read.profile);
    std::ranges::copy(differences, std::back_inserter(result_.differences));
    if (!differences.empty())
        run_.log(profile_place(wanted.number) + " differs from what was written");
    return true;
}

bool ProfileWriting::erase(int number) {
    bool present = false;
    if (!may_change(number) || !is_present(number, present)) return false;
    if (!present) return true;
    result_.touched.insert(number);
    if (!take(selection_.erase(number))) return false;
    present_.erase(number);
    const NumberRead highest = selection_.highest();
    if (!take(highest.problem)) return false;
    highest_ = *highest.value;
    run_.log(profile_place(number) + " erased");
    return true;
}

/// A cancel of the writing, or a refusal, leaves this to be done; a line that stays silent, or a
/// cancel of this, ends it, and what stays is said.
void ProfileWriting::erase_fillers() {
    const bool canceled_before = std::exchange(run_.cancel.canceled, false);
    for (const int number : std::set<int, std::greater<>>(fillers_.begin(), fillers_.end())) {
        const bool ended = run_.canceled();
        const std::string problem = ended ? "It was not tried." : selection_.erase(number);
        run_.log(profile_place(number) + (problem.empty() ? " erased" : " not erased"));
        if (problem.empty()) continue;
        result_.touched.insert(number);
        result_.problems.push_back(profile_place(number) +
                                   ", which was created only to keep the "
                                   "numbering, could not be erased. " +
                                   problem);
    }
    run_.cancel.canceled = run_.canceled() || canceled_before;
}

} // namespace pelvan
