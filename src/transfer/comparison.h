// Reads every register of a setup file back from the controller and lists those that hold something
// else. It changes no setting; of the profile registers it writes those that select a profile and a
// step, and those only when the model's .cds says that there are profiles.
#pragma once

#include "transfer/profile_transfer.h"

namespace pelvan {

class Comparison {
  public:
    Comparison(Services& services, ControllerAccess& access, ProfileTransfer& profiles,
               TransferRun& run, ProgressBar& progress, ProfileTransfer::Log log)
        : services_(services), access_(access), profiles_(profiles), run_(run), progress_(progress),
          log_(std::move(log)) {}

    /// Compares; the text to end with, empty when cancelled. Sets `completed` and `differences`.
    [[nodiscard]] std::string run(const std::string& file);

  private:
    [[nodiscard]] bool same_model(const std::string& file);
    void compare_lines(const std::string& file);
    void compare_line(const SetupLine& line);
    [[nodiscard]] std::string outcome(int faults_before) const;
    void compare_profile_line(const SetupLine& line);
    void select_profile(const SetupLine& line);
    void select_step(const SetupLine& line);
    void check_step_count();
    void compare_register(const SetupLine& line);
    void list_difference(const SetupLine& line, const std::string& held);

    Services& services_;
    ControllerAccess& access_;
    ProfileTransfer& profiles_;
    TransferRun& run_;
    ProgressBar& progress_;
    ProfileTransfer::Log log_;
    bool has_profiles_ = false;
    ProfileRegisters registers_;
    int compared_ = 0; // register lines
    bool profile_there_ = false;
    bool step_there_ = false;
    int steps_wanted_ = 0; // 0: already checked
};

} // namespace pelvan
