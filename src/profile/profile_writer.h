// Profiles into a controller: what will change is said beforehand, no step is ever doubled, every
// profile is read back and compared, and what was there before can be written back.
#pragma once

#include "profile/profile_plan.h"
#include "profile/profile_reader.h"

namespace pelvan {

struct ProfileWriteResult {
    /// All was written or erased, read back, and found as it should be.
    bool completed = false;
    std::vector<ProfileDifference> differences;
    std::vector<std::string> problems;
    /// Numbers that hold something else than before, or may do so.
    std::set<int> touched;
    /// Another controller answers than the plan was made for: nothing may be put back into it.
    bool met_another = false;
};

/// A writer has the line for itself as long as it lives, so that nothing changes between the plan
/// and its carrying out. All blocks for as long as the exchanges take.
class ProfileWriter {
  public:
    explicit ProfileWriter(const TransferContext& context);

    /// Finds out what writing the profiles would change: reads the model, what runs and what stands
    /// under their numbers; writes nothing. `model` is the one that they were made for. A profile
    /// that runs is not written; so is anything where that cannot be read.
    [[nodiscard]] ProfilePlan plan_write(int model, const ProfileSet& wanted);
    [[nodiscard]] ProfilePlan plan_copy(int from, int to);
    [[nodiscard]] ProfilePlan plan_erase(const std::set<int>& numbers);

    /// Carries the plan out, unless another controller answers by now. The first register that is
    /// refused ends it, with the place and the register's name among the problems; a cancel ends it
    /// too.
    [[nodiscard]] ProfileWriteResult write(const ProfilePlan& plan);

    /// Takes a writing that did not complete back: what was there before is written, what it
    /// created erased. Ends an earlier cancel.
    [[nodiscard]] ProfileWriteResult restore_previous(const ProfilePlan& plan,
                                                      const ProfileWriteResult& failed);

    /// Of the controller that the plan was made for.
    [[nodiscard]] const Identity& identity() const { return run_.access.identity(); }

  private:
    [[nodiscard]] ProfilePlan begin_plan();
    [[nodiscard]] std::set<int> read_before(ProfilePlan& plan, ProfileSelection& selection,
                                            const std::set<int>& numbers);
    void plan_numbers(ProfilePlan& plan, const ProfileSet& wanted, const std::set<int>& erased);
    [[nodiscard]] ProfilePlan end_plan(ProfilePlan plan);

    Link& link_;
    TransferRun run_;
};

} // namespace pelvan
