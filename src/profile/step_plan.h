// What a step does, in seconds and units, resolved from its registers once so that unrolling a
// profile does not look them up again at every turn of a jump.
#pragma once

#include <array>
#include <optional>

#include "profile/profile.h"

namespace pelvan {

inline constexpr std::size_t kLoops = 2;

struct StepPlan {
    bool known = false; // a type that the format has
    StepShape shape = StepShape::Soak;
    double seconds = 0;                                // of a ramp in a time or a soak
    std::array<std::optional<double>, kLoops> targets; // set points that a ramp goes to
    std::array<double, kLoops> rates{};                // units a second; 0: goes as long as others
    std::optional<int> events;                         // nothing: they stay
    int wait_loop = 0;                                 // 1 or 2; 0: waits for nothing
    std::optional<int> jump_profile;                   // nothing: the profile that runs
    int jump_step = 1;
    std::optional<int> jump_count; // nothing: always
};

[[nodiscard]] StepPlan plan_step(const ProfileFormat& format, const ProfileStep& step);

/// Seconds that the unit of a rate counts by: "degrees an hour" 3600; 60 without such a word.
[[nodiscard]] double seconds_of_rate(const ProfileField& rate);

} // namespace pelvan
