// What was done to a set of profiles, so that it can be undone and done again, without limit. Only
// the profiles that an edit touched are kept.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "profile/profile.h"

namespace pelvan {

/// A chosen profile and step, counted from 1; 0: none.
struct ProfilePlace {
    int profile = 0;
    int step = 0;

    bool operator==(const ProfilePlace&) const = default;
};

/// Profiles by number; nothing: there is none of this number.
using ProfileStates = std::map<int, std::optional<Profile>>;

struct ProfileEdit {
    std::string what; // "insert a step"
    ProfileStates before;
    ProfileStates after;
    ProfilePlace place_before;
    ProfilePlace place_after;
};

class EditHistory {
  public:
    /// Adds an edit and forgets what was undone. With the same `drag` as the last edit, other than
    /// 0, the two become one.
    void add(ProfileEdit edit, int drag);

    [[nodiscard]] bool can_undo() const { return done_ > 0; }
    [[nodiscard]] bool can_redo() const { return done_ < edits_.size(); }
    /// The edit to take back, or to do again; nothing when there is none. It counts as taken back
    /// (done again) from here on.
    const ProfileEdit* undo();
    const ProfileEdit* redo();
    /// What the next of them would do; empty for nothing.
    [[nodiscard]] std::string undo_text() const;
    [[nodiscard]] std::string redo_text() const;

  private:
    std::vector<ProfileEdit> edits_;
    std::size_t done_ = 0;
    int drag_ = 0; // of the last edit
};

} // namespace pelvan
