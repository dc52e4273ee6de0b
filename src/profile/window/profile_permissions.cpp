#include "profile/window/profile_permissions.h"

#include <initializer_list>

namespace pelvan {
namespace {

constexpr char kWorking[] = "The window is at work with the controller.";
constexpr char kNoModel[] = "Choose a model that has ramp profiles first.";
constexpr char kNoProfile[] = "There is no profile.";
constexpr char kNoStep[] = "Choose a step first.";
constexpr char kEnd[] = "The end stays the last step.";
constexpr char kNoRun[] = "The .pds file of this model has no section RUN, so its profiles can be "
                          "edited but not run.";
constexpr char kNotKnown[] =
    "The reply to the last command was lost: the state is read first, then it can be given again.";

/// The first reason that there is.
std::string first(std::initializer_list<std::string> reasons) {
    for (const std::string& reason : reasons)
        if (!reason.empty()) return reason;
    return {};
}

std::string unless(bool holds, const char* reason) {
    return holds ? std::string() : reason;
}

bool chosen_runs(const ProfileSituation& now) {
    return now.state && under_way(*now.state) && now.running_profile == now.number;
}

std::string may_edit(const ProfileSituation& now) {
    const std::string running =
        chosen_runs(now) ? "Profile " + std::to_string(now.number) +
                               " is running: what runs and what is shown would no longer agree. "
                               "End it, or copy it to another number and edit that."
                         : std::string();
    return first({unless(now.format, kNoModel), unless(!now.working, kWorking),
                  unless(now.profile, kNoProfile), running});
}

void permit_editing(const ProfileSituation& now, ProfilePermissions& out) {
    const std::string step = unless(now.step > 0, kNoStep);
    const std::string not_end = unless(now.step < now.steps, kEnd);
    const std::string room =
        now.steps < now.max_steps
            ? std::string()
            : "A profile has at most " + std::to_string(now.max_steps) + " steps.";
    out.edit = may_edit(now);
    out.insert = first({out.edit, room});
    out.remove = first({out.edit, step, not_end});
    out.copy = first({unless(now.profile, kNoProfile), step, not_end});
    out.paste = first({out.edit, unless(now.copied, "No step was copied."), room});
    out.move_up = first({out.edit, step, not_end, unless(now.step > 1, "It is the first step.")});
    out.move_down = first(
        {out.edit, step, not_end, unless(now.step + 1 < now.steps, "Behind it comes the end.")});
    const std::string idle = unless(!now.working, kWorking);
    out.undo = first({idle, unless(now.can_undo, "There is nothing to undo.")});
    out.redo = first({idle, unless(now.can_redo, "There is nothing to redo.")});
    out.create = first({unless(now.format, kNoModel), idle});
    out.open = idle;
    out.save = first({idle, unless(now.any_profiles, kNoProfile)});
    out.print = unless(now.profile, kNoProfile);
}

void permit_line(const ProfileSituation& now, ProfilePermissions& out) {
    const std::string line = first({now.line_refusal, unless(!now.working, kWorking)});
    out.read = line;
    out.write = first({unless(now.format, kNoModel), unless(now.profile, kNoProfile), line});
    out.copy_to = first({unless(now.profile, kNoProfile), unless(!now.working, kWorking)});
    const std::string running = chosen_runs(now) ? may_edit(now) : std::string();
    out.erase = first({unless(now.profile, kNoProfile), line, running});
}

/// A state that was not read forbids nothing: the controller refuses what it cannot do.
void permit_running(const ProfileSituation& now, ProfilePermissions& out) {
    const auto only_in = [&now](std::initializer_list<RunState> states, const char* reason) {
        if (!now.state) return std::string();
        for (const RunState state : states)
            if (*now.state == state) return std::string();
        return std::string(reason);
    };
    const std::string run =
        first({unless(now.format, kNoModel), unless(now.runs, kNoRun), now.line_refusal});
    const std::string known = unless(!now.not_known, kNotKnown);
    const std::string idle = unless(!now.working, kWorking);
    using enum RunState;
    out.start = first({run, idle, known, unless(now.profile, kNoProfile),
                       only_in({Off, Ended}, "A profile is running already.")});
    // What looks like nothing to hold may have been started at the controller since.
    out.hold = first({run, known});
    out.resume = first({run, idle, known, only_in({Held}, "No profile is held.")});
    out.next =
        first({run, idle, known, only_in({Running, Waiting, Held}, "No profile is running.")});
    out.end = first({run, known, only_in({Running, Waiting, Held}, "No profile is running.")});
    out.watch = first({unless(now.format, kNoModel), unless(now.runs, kNoRun)});
    out.save_record = unless(now.record, "Nothing was watched yet.");
}

} // namespace

bool under_way(RunState state) {
    return state == RunState::Running || state == RunState::Held || state == RunState::Waiting;
}

ProfilePermissions profile_permissions(const ProfileSituation& now) {
    ProfilePermissions out;
    permit_editing(now, out);
    permit_line(now, out);
    permit_running(now, out);
    return out;
}

} // namespace pelvan
