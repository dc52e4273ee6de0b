// A ramp profile as a value: the numbers of its registers, by register. What they mean is the
// format's (profile_format.h).
#pragma once

#include <map>
#include <string>
#include <vector>

#include "profile/profile_format.h"

namespace pelvan {

struct ProfileStep {
    int type = 0;
    std::map<int, int> fields; // number in the register, by the register

    bool operator==(const ProfileStep&) const = default;
};

struct Profile {
    int number = 0;
    std::map<int, int> own;         // registers of the profile as a whole
    std::vector<ProfileStep> steps; // the last one is the end

    bool operator==(const Profile&) const = default;
};

/// A set of profiles, by number.
using ProfileSet = std::map<int, Profile>;

/// A step of the kind with its fields' first values.
[[nodiscard]] ProfileStep new_step(const StepKind& kind);
/// A profile of an end alone, its name empty; no step where the format knows no end.
[[nodiscard]] Profile new_profile(const ProfileFormat& format, int number);

/// The name, without the spaces that fill it; empty where profiles have none.
[[nodiscard]] std::string profile_name(const ProfileFormat& format, const Profile& profile);
/// The name in quotes behind a space, for a sentence; empty where there is none.
[[nodiscard]] std::string quoted_name(const ProfileFormat& format, const Profile& profile);
/// Characters that a name can have.
[[nodiscard]] std::size_t name_length(const ProfileFormat& format);
/// Sets the name, filled with spaces. What is wrong with it, as a sentence, and nothing is changed
/// then; empty when it was set.
[[nodiscard]] std::string set_profile_name(const ProfileFormat& format, Profile& profile,
                                           const std::string& name);

/// The number in the step's field of this role; nothing when the step has none.
[[nodiscard]] std::optional<int> raw_value(const ProfileFormat& format, const ProfileStep& step,
                                           RegisterRole role);
/// As `raw_value`, by the field's decimals.
[[nodiscard]] std::optional<double> real_value(const ProfileFormat& format, const ProfileStep& step,
                                               RegisterRole role);

} // namespace pelvan
