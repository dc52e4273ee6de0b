// One writing of profiles on its way, for the writer: fillers, single profiles, reading back.
#pragma once

#include "profile/profile_writer.h"

namespace pelvan {

/// Why a profile that runs is not changed; empty when it may be.
[[nodiscard]] std::string refusal_while_running(ProfileSelection& selection,
                                                const std::set<int>& numbers);

class ProfileWriting {
  public:
    ProfileWriting(TransferRun& run, const ProfileFormat& format)
        : run_(run), selection_(run, format) {}

    /// Writes the profiles, then erases the numbers, then the fillers; reads each back.
    [[nodiscard]] ProfileWriteResult carry_out(const ProfileSet& wanted,
                                               const std::set<int>& erased);

  private:
    [[nodiscard]] bool take(const std::string& problem);
    [[nodiscard]] bool may_change(int number);
    [[nodiscard]] bool is_present(int number, bool& present);
    [[nodiscard]] bool fill_below(int number);
    [[nodiscard]] bool write_profile(const Profile& wanted);
    [[nodiscard]] bool make_room(const Profile& wanted);
    [[nodiscard]] bool put(const Profile& wanted);
    [[nodiscard]] bool put_step(int number, const ProfileStep& step);
    [[nodiscard]] bool put_fields(const std::vector<ProfileField>& fields,
                                  const std::map<int, int>& values);
    [[nodiscard]] bool read_back(const Profile& wanted);
    [[nodiscard]] bool erase(int number);
    void erase_fillers();
    void step_done();
    [[nodiscard]] std::string how_far() const;

    TransferRun& run_;
    ProfileSelection selection_;
    ProfileWriteResult result_;
    std::set<int> present_; // profiles known to be there
    std::set<int> fillers_; // that were created
    int highest_ = 0;
    int done_ = 0; // steps, of the progress
    int of_ = 1;
    int written_ = 0; // steps
};

} // namespace pelvan
