// Profiles out of a controller. A reader has the line for itself as long as it lives.
#pragma once

#include <functional>

#include "profile/profile_model.h"
#include "profile/profile_selection.h"

namespace pelvan {

/// What one number of a controller holds.
struct ProfileRead {
    std::optional<Profile> profile; // nothing where the number has none, or could not be selected
    std::vector<std::string> problems;
};

/// Told after every step of a profile, with the number of steps.
using StepDone = std::function<void(int step, int of)>;

/// Reads the profile of a number. Registers that could not be read are listed and missing in the
/// profile; those that the controller marks as not fitted are missing alone.
[[nodiscard]] ProfileRead read_profile(ProfileSelection& selection, int number,
                                       const StepDone& step_done = {});

struct ProfileReadResult {
    std::optional<ProfileModel> model;
    Identity identity;
    ProfileSet profiles;
    int highest = 0;       // number in use
    bool complete = false; // every value was read
    std::vector<std::string> problems;
};

class ProfileReader {
  public:
    explicit ProfileReader(const TransferContext& context) : link_(context.link), run_(context) {}

    /// All profiles, or that of one number. Blocks for all exchanges; ends at the next register
    /// when it is cancelled, with what was read so far. A model without profiles is a problem and
    /// gets no request but the one for its model.
    [[nodiscard]] ProfileReadResult read(std::optional<int> number = {});
    /// The profile of a number, and those that its jumps lead to: all that a run of it can reach.
    [[nodiscard]] ProfileReadResult read_with_jumps(int number);

  private:
    template <class Work> [[nodiscard]] ProfileReadResult read_from_controller(Work work);
    void read_profiles(ProfileReadResult& result, ProfileSelection& selection, int first, int last);

    Link& link_;
    TransferRun run_;
};

} // namespace pelvan
