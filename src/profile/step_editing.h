// Changes of single steps that keep what can be kept, and of jumps when the steps that they lead to
// get other numbers.
#pragma once

#include <functional>
#include <optional>

#include "profile/step_plan.h"

namespace pelvan {

/// A new step for a place in the profile (counted from 0): set points, rates, PID set and events
/// are those of the nearest step before it that has them.
[[nodiscard]] ProfileStep step_for_place(const ProfileFormat& format, const Profile& profile,
                                         std::size_t place, const StepKind& kind);

/// The step as one of another kind: values of registers, or roles, that both kinds have are kept,
/// as far as the new kind allows them.
[[nodiscard]] ProfileStep with_kind(const ProfileFormat& format, const ProfileStep& step,
                                    const StepKind& kind);

/// Where a step's end is to lie. What is not given stays.
struct StepEnd {
    std::optional<double> seconds; // from the step's begin
    std::optional<double> value;   // the set point there
    std::size_t loop = 0;          // whose set point
    double from = 0;               // the loop's set point at the step's begin
};

/// Sets times and set point, or the rate that reaches the end in that time, to the nearest that the
/// step's registers can hold. A soak has no set point to set, jumps and ends nothing.
void move_end(const StepKind& kind, ProfileStep& step, const StepEnd& end);

/// Sets hours, minutes and seconds, as far as the kind has them, rounded to the smallest of them.
void set_seconds(const StepKind& kind, ProfileStep& step, double seconds);

/// A profile and a step that a jump leads to.
struct JumpTarget {
    int profile = 0;
    int step = 0;

    bool operator==(const JumpTarget&) const = default;
};

/// The step, a jump of the profile `in`, led to where `moved` says; nothing when it is no jump or
/// need not be changed.
[[nodiscard]] std::optional<ProfileStep>
with_target(const ProfileFormat& format, const ProfileStep& step, int in,
            const std::function<JumpTarget(const JumpTarget&)>& moved);

/// The profile under another number; its jumps to itself go to the copy's own steps.
[[nodiscard]] Profile copied_profile(const ProfileFormat& format, Profile profile, int number);

} // namespace pelvan
