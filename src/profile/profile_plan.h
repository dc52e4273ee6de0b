// What writing profiles will change in a controller, found out beforehand: to be shown, agreed to,
// carried out, and taken back.
#pragma once

#include <set>

#include "profile/profile.h"
#include "profile/profile_model.h"

namespace pelvan {

struct ProfilePlan {
    std::optional<ProfileModel> model;
    /// Why nothing can be written, as a sentence; all below is of no use then.
    std::string refusal;
    ProfileSet wanted;       // to be created or replaced
    std::set<int> unchanged; // asked for, and held already
    std::set<int> erased;
    std::set<int> fillers; // numbers without a profile that need one meanwhile
    int highest = 0;       // number in use before
    ProfileSet before;     // what stands there now where something is written or erased
    /// What of it could not be read, and the numbers that cannot be written back for it.
    std::vector<std::string> unread;
    std::set<int> incomplete;

    [[nodiscard]] bool changes_anything() const { return !wanted.empty() || !erased.empty(); }
};

/// What will happen, a sentence each.
[[nodiscard]] std::vector<std::string> plan_sentences(const ProfilePlan& plan);

/// Numbers that must exist before `wanted` can be written and do not: those below the highest of
/// them that neither it nor `present` has.
[[nodiscard]] std::set<int> filler_numbers(const ProfileSet& wanted, const std::set<int>& present);

} // namespace pelvan
