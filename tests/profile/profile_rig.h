// Profiles of the sample model, built a step a line. Set points and rates are tenths.
#pragma once

#include <gtest/gtest.h>

#include "profile/profile.h"

namespace pelvan::testing {

inline const ProfileFormat& sample_format() {
    static const ProfileFormat format =
        ProfileFormat::load(PELVAN_SAMPLES "/Download Sequences/742.pds").format.value();
    return format;
}

/// The kind's first values with some of them set.
inline ProfileStep step_of(int type, const std::map<int, int>& fields) {
    ProfileStep step = new_step(*sample_format().kind(type));
    for (const auto& [number, value] : fields)
        step.fields[number] = value;
    return step;
}

inline ProfileStep ramp(int minutes, int set_point_1, int set_point_2 = 0, int wait = 0) {
    return step_of(1, {{4004, minutes / 60},
                       {4005, minutes % 60},
                       {4007, set_point_1},
                       {4008, set_point_2},
                       {4010, wait}});
}
inline ProfileStep rate_ramp(int rate, int set_point) {
    return step_of(2, {{4012, rate}, {4007, set_point}});
}
inline ProfileStep soak(int minutes, int seconds = 0, int wait = 0) {
    return step_of(3, {{4005, minutes}, {4006, seconds}, {4010, wait}});
}
inline ProfileStep jump(int profile, int step, int count) {
    return step_of(4, {{4013, profile}, {4014, step}, {4015, count}});
}

/// With an end behind the steps.
inline Profile profile_of(int number, std::vector<ProfileStep> steps) {
    Profile profile = new_profile(sample_format(), number);
    profile.steps.insert(profile.steps.begin(), steps.begin(), steps.end());
    return profile;
}

inline ProfileSet set_of(const std::vector<Profile>& profiles) {
    ProfileSet set;
    for (const Profile& profile : profiles)
        set[profile.number] = profile;
    return set;
}

} // namespace pelvan::testing
