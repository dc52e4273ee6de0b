// The ramp profiles of a controller into a setup file, as the model's .pds says. A profile is there
// a run of register lines that begins with its number:
//     4000 2      the profile that the following lines are of
//     4002 1      created (it has its end step then)
//     4002 3      a step inserted, once for each step before the end step
//     4050 ...    registers of the whole profile
//     4001 1      the step that the following lines are of
//     4003 3      its type, then the registers that steps of this type have
#pragma once

#include <string>

#include "registers/profile_access.h"

namespace pelvan {

class ProfileDownload {
  public:
    ProfileDownload(TransferRun& run, TextWriter& setup) : run_(run), setup_(setup) {}

    /// Reads all profiles into the open setup file. Cancels the transfer when the .pds is missing
    /// or wrong, and when the user gives up.
    void DownLoadProfiles(const std::string& model);

  private:
    [[nodiscard]] std::optional<ProfileSequence> read_sequence(const std::string& model);
    void download_profile(ProfileAccess& profiles, const ProfileSequence& sequence, int number);
    void download_step(ProfileAccess& profiles, const ProfileSequence& sequence, int step);
    void download_registers(const std::vector<ProfileRegister>& registers);
    void write_line(float register_number, const std::string& value);

    TransferRun& run_;
    TextWriter& setup_;
};

} // namespace pelvan
