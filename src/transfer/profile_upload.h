// The profile lines of a setup file into a controller. Profiles are numbered without gaps, so
// restoring number 5 needs 1 to 4 in place first.
#pragma once

#include <set>

#include "registers/profile_access.h"
#include "registers/setup_file.h"

namespace pelvan {

class ProfileUpload {
  public:
    ProfileUpload(TransferRun& run, const ProfileRegisters& registers)
        : run_(run), access_(run, registers) {}

    /// Erases every profile that the controller holds; false when the user gives up.
    [[nodiscard]] bool clear_profiles();

    [[nodiscard]] bool is_profile_line(float register_number) const {
        return access_.registers().contains(register_number);
    }
    /// Writes one line of the profile section, what goes wrong recorded; no reply when the user
    /// gives up.
    [[nodiscard]] Verdict restore_line(const SetupLine& line);
    /// Erases the profiles that only the numbering needed; one that cannot be erased is told, and
    /// recorded as what went wrong.
    void erase_created();

  private:
    [[nodiscard]] bool clear_profile(int number);
    [[nodiscard]] bool CreateDeleteProfile(int number);
    [[nodiscard]] bool fill_numbers_below(int number);
    [[nodiscard]] Verdict erase_filler(int number);
    void list_not_erased(int number);
    [[nodiscard]] Verdict select_line(const SetupLine& line);
    [[nodiscard]] Verdict select_step_line(const SetupLine& line);
    [[nodiscard]] Verdict action_line(const SetupLine& line);
    [[nodiscard]] Verdict not_selected(const std::string& what, const SetupLine& line);

    TransferRun& run_;
    ProfileAccess access_;
    std::set<int> present_; // profiles known to be there
    std::set<int> created_; // profiles that hold nothing from before the upload
    std::set<int> in_file_;
    bool selected_ = false; // the file's current profile is the controller's
    bool step_selected_ = false;
};

} // namespace pelvan
