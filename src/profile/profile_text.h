// Ramp profiles as lines of text, in the form of the profile section of a setup file:
//     4000 2      the profile that the following lines are of
//     4002 1      created (it has its end step then)
//     4002 3      a step inserted, once for each step before the end
//     4050 77     registers of the whole profile
//     4001 1      the step that the following lines are of
//     4003 3      its type, then the registers of that type
// A whole setup file is read too: what is no register of profiles is passed over. Limits are not
// looked at here, so that a file with a wrong value opens and can be mended (profile_check.h).
#pragma once

#include <span>
#include <string>
#include <vector>

#include "profile/profile.h"

namespace pelvan {

struct ReadProfiles {
    ProfileSet profiles;            // none when there is a problem
    std::string problem;            // a sentence, with the line's number
    std::vector<std::string> notes; // sentences on what the file lacks
};

/// Lines of all the profiles, without line ends.
[[nodiscard]] std::vector<std::string> profile_lines(const ProfileFormat& format,
                                                     const ProfileSet& profiles);

/// Reads lines as a controller would take them.
[[nodiscard]] ReadProfiles read_profiles(const ProfileFormat& format,
                                         std::span<const std::string> lines);

/// Reads a file. One that is not there, no text, larger than 4 MB or without profiles is a problem.
[[nodiscard]] ReadProfiles load_profiles(const ProfileFormat& format, const std::string& path);

/// Replaces the file, wholly or not at all. What went wrong, as a sentence; empty when it is saved.
[[nodiscard]] std::string save_profiles(const ProfileFormat& format, const ProfileSet& profiles,
                                        const std::string& path);

} // namespace pelvan
