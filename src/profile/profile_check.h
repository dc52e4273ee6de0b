// What is wrong with ramp profiles, found before anything is sent to a controller.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "profile/step_plan.h"

namespace pelvan {

struct ProfileFinding {
    int profile = 0;
    int step = 0;         // 0: the profile as a whole
    std::string sentence; // begins with "Profile 2, step 3:" or "Profile 2:"

    bool operator==(const ProfileFinding&) const = default;
};

struct CheckOptions {
    /// Units a minute that no set point may exceed, up or down.
    std::optional<double> steepest = {};
    /// Where the set points are at the start. Without them a loop's first ramp in a time is not
    /// judged by its steepness.
    std::optional<std::array<double, kLoops>> set_points = {};
};

/// Checks one profile of the set; jumps may lead to the others. By step, the profile's own first.
[[nodiscard]] std::vector<ProfileFinding> check_profile(const ProfileFormat& format,
                                                        const ProfileSet& profiles, int number,
                                                        const CheckOptions& options = {});

/// Checks all of the set, in the order of their numbers.
[[nodiscard]] std::vector<ProfileFinding> check_profiles(const ProfileFormat& format,
                                                         const ProfileSet& profiles,
                                                         const CheckOptions& options = {});

} // namespace pelvan
