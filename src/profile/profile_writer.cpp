#include "profile/profile_writer.h"

#include <algorithm>
#include <iterator>

#include "profile/profile_writing.h"
#include "profile/step_editing.h"

namespace pelvan {
namespace {

std::set<int> numbers_of(const ProfileSet& profiles) {
    std::set<int> numbers;
    for (const auto& [number, profile] : profiles)
        numbers.insert(number);
    return numbers;
}

/// What keeps a profile from being written at all, whatever the controller holds.
std::string impossible(const ProfileFormat& format, const Profile& profile) {
    const std::string place = profile_place(profile.number);
    if (!format.profile_number.allows(profile.number) || profile.number < 1)
        return place + " cannot be: numbers go from 1 to " + std::to_string(format.max_profiles()) +
               ".";
    if (profile.steps.empty()) return place + " has no step, so no end either.";
    if (static_cast<int>(profile.steps.size()) > format.max_steps())
        return place + " has " + std::to_string(profile.steps.size()) + " steps, at most " +
               std::to_string(format.max_steps()) + " can be.";
    for (std::size_t i = 0; i < profile.steps.size(); ++i)
        if (!format.kind(profile.steps[i].type))
            return profile_place(profile.number, static_cast<int>(i) + 1) +
                   ": the model has no step of type " + std::to_string(profile.steps[i].type) + ".";
    return {};
}

} // namespace

ProfileWriter::ProfileWriter(const TransferContext& context) : link_(context.link), run_(context) {}

ProfilePlan ProfileWriter::begin_plan() {
    ProfilePlan plan;
    if (!run_.claim) {
        plan.refusal = link_.refusal();
        return plan;
    }
    run_.listener.begun();
    LoadedModel loaded = read_profile_model(run_);
    plan.model = std::move(loaded.model);
    plan.refusal = loaded.problem;
    // Nothing may go into another controller, whose cable was put on meanwhile.
    if (plan.model) {
        run_.access.remember_controller(run_.access.read_identity());
        if (!run_.access.can_confirm_writes()) plan.refusal = ControllerAccess::kNoEcho;
    }
    return plan;
}

ProfilePlan ProfileWriter::end_plan(ProfilePlan plan) {
    if (run_.canceled() && plan.refusal.empty())
        plan.refusal = run_.cancel.gave_up ? "The controller did not answer." : "Cancelled.";
    if (!run_.claim) return plan;
    const std::string doubt = doubt_at_end(run_.access);
    if (plan.refusal.empty()) plan.refusal = doubt;
    return plan;
}

/// Reads what stands under the numbers; those below the highest of them that have a profile, too.
std::set<int> ProfileWriter::read_before(ProfilePlan& plan, ProfileSelection& selection,
                                         const std::set<int>& numbers) {
    std::set<int> present;
    const int last = std::min(plan.highest, numbers.empty() ? 0 : *numbers.rbegin());
    for (int number = 1; number <= last && plan.refusal.empty() && !run_.canceled(); ++number) {
        run_.listener.progress(number, last);
        if (!numbers.contains(number)) {
            plan.refusal = selection.select(number);
            if (!plan.refusal.empty()) break;
            const NumberRead steps = selection.step_count();
            plan.refusal = steps.problem;
            if (steps.value.value_or(0) > 0) present.insert(number);
            continue;
        }
        ProfileRead read = read_profile(selection, number);
        if (!read.profile && !read.problems.empty()) plan.refusal = read.problems.front();
        plan.unread.insert(plan.unread.end(), read.problems.begin(), read.problems.end());
        if (!read.problems.empty()) plan.incomplete.insert(number);
        if (!read.profile) continue;
        present.insert(number);
        plan.before.emplace(number, std::move(*read.profile));
    }
    return present;
}

void ProfileWriter::plan_numbers(ProfilePlan& plan, const ProfileSet& wanted,
                                 const std::set<int>& erased) {
    const ProfileFormat& format = plan.model->format;
    for (const auto& [number, profile] : wanted)
        if (plan.refusal = impossible(format, profile); !plan.refusal.empty()) return;
    ProfileSelection selection(run_, format);
    std::set<int> numbers = numbers_of(wanted);
    numbers.insert(erased.begin(), erased.end());
    plan.refusal = refusal_while_running(selection, numbers);
    if (!plan.refusal.empty()) return;
    const NumberRead highest = selection.highest();
    plan.refusal = highest.problem;
    plan.highest = highest.value.value_or(0);
    const std::set<int> present = read_before(plan, selection, numbers);
    for (const auto& [number, profile] : wanted) {
        const auto before = plan.before.find(number);
        if (before == plan.before.end() ||
            !profile_differences(format, profile, before->second).empty()) {
            plan.wanted.emplace(number, profile);
            continue;
        }
        plan.unchanged.insert(number);
        plan.before.erase(before);
    }
    for (const int number : erased)
        if (plan.before.contains(number)) plan.erased.insert(number);
    plan.fillers = filler_numbers(plan.wanted, present);
}

ProfilePlan ProfileWriter::plan_write(int model, const ProfileSet& wanted) {
    ProfilePlan plan = begin_plan();
    if (plan.model && plan.model->number != model)
        plan.refusal = "The profiles are of model " + std::to_string(model) +
                       ", the controller is a " + std::to_string(plan.model->number) + ".";
    if (plan.refusal.empty()) plan_numbers(plan, wanted, {});
    return end_plan(std::move(plan));
}

ProfilePlan ProfileWriter::plan_copy(int from, int to) {
    ProfilePlan plan = begin_plan();
    if (!plan.refusal.empty()) return end_plan(std::move(plan));
    ProfileSelection selection(run_, plan.model->format);
    const NumberRead highest = selection.highest();
    ProfileRead read;
    if (!highest.value)
        read.problems.push_back(highest.problem);
    else if (from >= 1 && from <= *highest.value)
        read = read_profile(selection, from);
    if (!read.problems.empty())
        plan.refusal = read.problems.front();
    else if (!read.profile)
        plan.refusal = "There is no profile " + std::to_string(from) + ".";
    else
        plan_numbers(plan, {{to, copied_profile(plan.model->format, *read.profile, to)}}, {});
    return end_plan(std::move(plan));
}

ProfilePlan ProfileWriter::plan_erase(const std::set<int>& numbers) {
    ProfilePlan plan = begin_plan();
    if (plan.refusal.empty()) plan_numbers(plan, {}, numbers);
    return end_plan(std::move(plan));
}

ProfileWriteResult ProfileWriter::write(const ProfilePlan& plan) {
    ProfileWriteResult result;
    if (!plan.model || !plan.refusal.empty()) {
        result.problems.push_back(plan.refusal);
        return result;
    }
    run_.listener.working();
    // A question may have stood open for long.
    result.met_another = !run_.access.is_same_controller();
    if (result.met_another) {
        result.problems.emplace_back("Another controller answers: nothing was written into it.");
        return result;
    }
    result = ProfileWriting(run_, plan.model->format).carry_out(plan.wanted, plan.erased);
    std::string doubt = doubt_at_end(run_.access);
    if (!run_.access.proved() && !result.completed) doubt.clear(); // its silence was told
    if (!doubt.empty()) {
        result.problems.push_back(std::move(doubt));
        result.met_another = !run_.access.met_another().empty();
        if (result.met_another)
            result.problems.emplace_back("The one before may be left with profiles half written. "
                                         "Nothing is put back into the one that answers now.");
        result.completed = false;
    }
    return result;
}

ProfileWriteResult ProfileWriter::restore_previous(const ProfilePlan& plan,
                                                   const ProfileWriteResult& failed) {
    run_.cancel = {};
    if (failed.met_another) {
        ProfileWriteResult nothing;
        nothing.met_another = true;
        return nothing;
    }
    ProfilePlan back;
    back.model = plan.model;
    std::vector<std::string> lost;
    for (const int number : failed.touched) {
        // A half of a profile is worse than none that anybody takes for whole.
        if (plan.incomplete.contains(number)) {
            lost.push_back(profile_place(number) +
                           " cannot be written back: it could not be read whole before.");
            continue;
        }
        const auto before = plan.before.find(number);
        if (before != plan.before.end())
            back.wanted.insert(*before);
        else
            back.erased.insert(number);
    }
    ProfileWriteResult result = write(back);
    result.completed = result.completed && lost.empty();
    std::ranges::move(lost, std::back_inserter(result.problems));
    return result;
}

} // namespace pelvan
