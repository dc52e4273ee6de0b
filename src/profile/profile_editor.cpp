#include "profile/profile_editor.h"

#include <algorithm>
#include <utility>

namespace pelvan {
namespace {

std::string numbered(int number) {
    return "profile " + std::to_string(number);
}

std::string not_there(int number) {
    return "Profile " + std::to_string(number) + " is not there.";
}

std::optional<Profile> state_of(const ProfileSet& profiles, int number) {
    const auto found = profiles.find(number);
    return found == profiles.end() ? std::nullopt : std::optional(found->second);
}

} // namespace

const Profile* ProfileEditor::profile() const {
    const auto found = profiles_.find(place_.profile);
    return found == profiles_.end() ? nullptr : &found->second;
}

const ProfileStep* ProfileEditor::step() const {
    const Profile* chosen = profile();
    if (!chosen || place_.step == 0) return nullptr;
    return &chosen->steps[static_cast<std::size_t>(place_.step - 1)];
}

void ProfileEditor::choose(int number, int step) {
    const auto found = profiles_.find(number);
    place_ = {};
    if (found != profiles_.end()) {
        const int steps = static_cast<int>(found->second.steps.size());
        place_ = {number, std::min(std::max(step, 1), steps)};
    }
    ++revision_;
}

void ProfileEditor::open(ProfileSet profiles) {
    saved_ = profiles;
    replace_all(std::move(profiles), "open a file");
}

void ProfileEditor::read(ProfileSet profiles) {
    controller_ = profiles;
    replace_all(std::move(profiles), "read from the controller");
}

void ProfileEditor::replace_all(ProfileSet profiles, const std::string& what) {
    for (const auto* set : {&profiles_, &profiles})
        for (const auto& [number, profile] : *set)
            before_.try_emplace(number, state_of(profiles_, number));
    profiles_ = std::move(profiles);
    const bool stays = profiles_.contains(place_.profile);
    const int first = profiles_.empty() ? 0 : profiles_.begin()->first;
    commit(what, stays ? place_ : ProfilePlace{first, 1});
}

std::vector<int> ProfileEditor::changed_profiles() const {
    ProfileSet all = controller_.value_or(ProfileSet{});
    all.insert(profiles_.begin(), profiles_.end());
    std::vector<int> changed;
    for (const auto& [number, profile] : all)
        if (!controller_ || state_of(profiles_, number) != state_of(*controller_, number))
            changed.push_back(number);
    return changed;
}

bool ProfileEditor::dirty() const {
    return differs_from_file() && differs_from_controller();
}

int ProfileEditor::free_number() const {
    for (int number = 1; number <= format_.max_profiles(); ++number)
        if (!profiles_.contains(number)) return number;
    return 0;
}

std::string ProfileEditor::add_profile(int number) {
    if (number < 1 || number > format_.max_profiles())
        return "Profiles have numbers from 1 to " + std::to_string(format_.max_profiles()) + ".";
    if (profiles_.contains(number))
        return "Profile " + std::to_string(number) + " is there already.";
    if (!format_.end_kind()) return "The model's profiles have no end, so none can be made.";
    change(number) = new_profile(format_, number);
    commit("add " + numbered(number), {number, 1});
    return {};
}

std::string ProfileEditor::erase_profile(int number) {
    if (!profiles_.contains(number)) return not_there(number);
    static_cast<void>(change(number));
    profiles_.erase(number);
    const auto next = profiles_.lower_bound(number);
    const int other = next != profiles_.end() ? next->first
                      : profiles_.empty()     ? 0
                                              : profiles_.rbegin()->first;
    commit("erase " + numbered(number), {other, 1});
    return {};
}

std::string ProfileEditor::copy_profile(int from, int to, bool replace) {
    const auto source = state_of(profiles_, from);
    if (!source) return not_there(from);
    if (from == to) return "A profile cannot be copied to its own number.";
    if (to < 1 || to > format_.max_profiles())
        return "Profiles have numbers from 1 to " + std::to_string(format_.max_profiles()) + ".";
    if (!replace && profiles_.contains(to))
        return "Profile " + std::to_string(to) + " is there already.";
    change(to) = copied_profile(format_, *source, to);
    commit("copy " + numbered(from) + " to " + std::to_string(to), {to, 1});
    return {};
}

std::string ProfileEditor::set_name(const std::string& name) {
    if (!profile()) return "No profile is chosen.";
    Profile renamed = *profile();
    if (std::string problem = set_profile_name(format_, renamed, name); !problem.empty())
        return problem;
    change(place_.profile) = std::move(renamed);
    commit("name " + numbered(place_.profile), place_);
    return {};
}

std::string ProfileEditor::set_own(int register_number, const std::string& text) {
    if (!profile()) return "No profile is chosen.";
    for (const ProfileField& field : format_.own) {
        if (field.number != register_number) continue;
        const ParsedValue value = ProfileFormat::parse_value(field, text);
        if (!value.raw) return value.problem;
        change(place_.profile).own[register_number] = *value.raw;
        commit("change " + field.name, place_);
        return {};
    }
    return "Profiles have no register " + std::to_string(register_number) + ".";
}

std::string ProfileEditor::no_step() const {
    if (!profile()) return "No profile is chosen.";
    return step() ? std::string() : "No step is chosen.";
}

bool ProfileEditor::is_end(int step) const {
    return has_end() && static_cast<std::size_t>(step) == profile()->steps.size();
}

bool ProfileEditor::has_end() const {
    if (profile()->steps.empty()) return false;
    const StepKind* kind = format_.kind(profile()->steps.back().type);
    return kind && kind->shape == StepShape::End;
}

std::string ProfileEditor::room_for_a_step() const {
    if (!profile()) return "No profile is chosen.";
    if (profile()->steps.size() >= static_cast<std::size_t>(format_.max_steps()))
        return "A profile has at most " + std::to_string(format_.max_steps()) + " steps.";
    return {};
}

std::string ProfileEditor::insert_step(int type) {
    if (std::string problem = room_for_a_step(); !problem.empty()) return problem;
    const StepKind* kind = format_.kind(type);
    if (!kind) return "The model has no steps of type " + std::to_string(type) + ".";
    if (kind->shape == StepShape::End) {
        if (has_end()) return "There is an end already, and it stays the last step.";
        Profile& changed = change(place_.profile);
        changed.steps.push_back(new_step(*kind));
        commit("add an end", {place_.profile, static_cast<int>(changed.steps.size())});
        return {};
    }
    const auto place = static_cast<std::size_t>(std::max(place_.step - 1, 0));
    return insert(step_for_place(format_, *profile(), place, *kind), "insert a step");
}

std::string ProfileEditor::insert(const ProfileStep& step, const std::string& what) {
    const int at = std::max(place_.step, 1);
    Profile& changed = change(place_.profile);
    changed.steps.insert(changed.steps.begin() + (at - 1), step);
    lead_jumps([&](int target) { return target >= at ? target + 1 : target; });
    // What was copied leads where it did.
    profiles_.at(place_.profile).steps[static_cast<std::size_t>(at - 1)] = step;
    commit(what, {place_.profile, at});
    return {};
}

std::string ProfileEditor::delete_step() {
    if (std::string problem = no_step(); !problem.empty()) return problem;
    if (is_end(place_.step)) return "The end cannot be deleted.";
    const int at = place_.step;
    Profile& changed = change(place_.profile);
    changed.steps.erase(changed.steps.begin() + (at - 1));
    lead_jumps([&](int target) { return target > at ? target - 1 : target; });
    commit("delete a step", place_);
    return {};
}

std::string ProfileEditor::copy_step() {
    if (std::string problem = no_step(); !problem.empty()) return problem;
    if (is_end(place_.step)) return "The end cannot be copied.";
    copied_ = *step();
    return {};
}

std::string ProfileEditor::paste_step() {
    if (!copied_) return "No step was copied.";
    if (std::string problem = room_for_a_step(); !problem.empty()) return problem;
    return insert(ProfileStep(*copied_), "paste a step");
}

std::string ProfileEditor::move_step(int places) {
    if (std::string problem = no_step(); !problem.empty()) return problem;
    if (is_end(place_.step)) return "The end stays the last step.";
    const int last = static_cast<int>(profile()->steps.size()) - (has_end() ? 1 : 0);
    const int from = place_.step;
    // As far as a move can go, whatever is asked for.
    const int to = std::clamp(from + std::clamp(places, -last, last), 1, last);
    Profile& changed = change(place_.profile);
    ProfileStep moved = std::move(changed.steps[static_cast<std::size_t>(from - 1)]);
    changed.steps.erase(changed.steps.begin() + (from - 1));
    changed.steps.insert(changed.steps.begin() + (to - 1), std::move(moved));
    lead_jumps([&](int target) {
        if (target == from) return to;
        if (from < to && target > from && target <= to) return target - 1;
        return target >= to && target < from ? target + 1 : target;
    });
    commit("move a step", {place_.profile, to});
    return {};
}

std::string ProfileEditor::change_kind(int type) {
    if (std::string problem = no_step(); !problem.empty()) return problem;
    const StepKind* kind = format_.kind(type);
    if (!kind) return "The model has no steps of type " + std::to_string(type) + ".";
    if (step()->type == type) return {};
    if (is_end(place_.step)) return "The end stays the last step.";
    const bool last = static_cast<std::size_t>(place_.step) == profile()->steps.size();
    if (kind->shape == StepShape::End && !last) return "Only the last step can be the end.";
    ProfileStep& changed = changed_step();
    changed = with_kind(format_, changed, *kind);
    commit("change the kind of a step", place_);
    return {};
}

std::string ProfileEditor::set_field(int register_number, const std::string& text) {
    if (std::string problem = no_step(); !problem.empty()) return problem;
    const StepKind* kind = format_.kind(step()->type);
    const ProfileField* field = kind ? kind->find(register_number) : nullptr;
    if (!field) return "The step has no register " + std::to_string(register_number) + ".";
    const ParsedValue value = ProfileFormat::parse_value(*field, text);
    if (!value.raw) return value.problem;
    changed_step().fields[register_number] = *value.raw;
    commit("change " + field->name, place_);
    return {};
}

std::string ProfileEditor::drag_end(const StepEnd& end) {
    if (std::string problem = no_step(); !problem.empty()) return problem;
    const StepKind* kind = format_.kind(step()->type);
    if (!kind) return "The model has no steps of type " + std::to_string(step()->type) + ".";
    move_end(*kind, changed_step(), end);
    commit("move the end of a step", place_, drag_);
    return {};
}

/// The profile, to be changed; what it is now can be had back.
Profile& ProfileEditor::change(int number) {
    before_.try_emplace(number, state_of(profiles_, number));
    return profiles_[number];
}

ProfileStep& ProfileEditor::changed_step() {
    return change(place_.profile).steps[static_cast<std::size_t>(place_.step - 1)];
}

/// Leads all jumps into the chosen profile to the numbers that its steps have now.
void ProfileEditor::lead_jumps(const std::function<int(int)>& step_now) {
    const int target_profile = place_.profile;
    const auto moved = [&](const JumpTarget& target) {
        return target.profile == target_profile ? JumpTarget{target.profile, step_now(target.step)}
                                                : target;
    };
    for (auto& [number, profile] : profiles_)
        for (ProfileStep& step : profile.steps)
            if (auto led = with_target(format_, step, number, moved)) {
                static_cast<void>(change(number));
                step = std::move(*led);
            }
}

void ProfileEditor::commit(const std::string& what, ProfilePlace place, int drag) {
    ProfileEdit edit{what, {}, {}, place_, {}};
    for (auto& [number, before] : before_) {
        auto after = state_of(profiles_, number);
        if (before == after) continue;
        edit.before.emplace(number, std::move(before));
        edit.after.emplace(number, std::move(after));
    }
    before_.clear();
    choose(place.profile, place.step);
    edit.place_after = place_;
    if (!edit.after.empty()) history_.add(std::move(edit), drag);
}

void ProfileEditor::restore(const ProfileStates& states, ProfilePlace place) {
    for (const auto& [number, profile] : states) {
        if (profile)
            profiles_[number] = *profile;
        else
            profiles_.erase(number);
    }
    choose(place.profile, place.step);
}

void ProfileEditor::undo() {
    end_drag();
    if (const ProfileEdit* edit = history_.undo()) restore(edit->before, edit->place_before);
}

void ProfileEditor::redo() {
    end_drag();
    if (const ProfileEdit* edit = history_.redo()) restore(edit->after, edit->place_after);
}

} // namespace pelvan
