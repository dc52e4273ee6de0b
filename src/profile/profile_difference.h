// What one profile holds else than another.
#pragma once

#include "profile/profile.h"

namespace pelvan {

struct ProfileDifference {
    int profile = 0;
    int step = 0; // 0: the profile as a whole
    int register_number = 0;
    std::string sentence; // with the numbers of profile and step
};

/// "Profile 3", "Profile 3, step 2".
[[nodiscard]] std::string profile_place(int profile, int step = 0);

/// Where `held` is not what `wanted` says: registers that `wanted` does not name are not compared,
/// because a setup leaves out what a controller does not have.
[[nodiscard]] std::vector<ProfileDifference>
profile_differences(const ProfileFormat& format, const Profile& wanted, const Profile& held);

} // namespace pelvan
