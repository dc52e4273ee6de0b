// Reads every register of a setup file back from the controller and lists those that hold something
// else. It changes no setting; of the profile registers it writes those that select a profile and a
// step, and those only when the model's .cds says that there are profiles.
#pragma once

#include <optional>
#include <string>

#include "registers/profile_access.h"
#include "registers/setup_file.h"

namespace pelvan {

class Comparison {
  public:
    explicit Comparison(const TransferContext& context) : run_(context) {}

    /// Compares and tells the outcome, unless it was cancelled. Raises the errors of files.
    [[nodiscard]] TransferResult run(const std::string& file);

  private:
    /// Whether it came to its end, with a file that is whole.
    [[nodiscard]] bool compare(const std::string& file);
    [[nodiscard]] bool same_model(const SetupFile& setup);
    void find_profiles(float model);
    void compare_lines(const SetupFile& setup);
    void compare_line(const SetupLine& line);
    [[nodiscard]] std::string outcome() const;
    void compare_profile_line(const SetupLine& line);
    void select_profile(const SetupLine& line);
    void select_step(const SetupLine& line);
    void check_step_count();
    void compare_register(const SetupLine& line);
    [[nodiscard]] std::optional<float> upcoming_register(std::size_t index) const;
    void list_difference(const SetupLine& line, const std::string& held);

    TransferRun run_;
    std::optional<ProfileAccess> profiles_; // of a model that has them
    int compared_ = 0;                      // register lines
    int differences_ = 0;
    bool profile_there_ = false;
    bool step_there_ = false;
    int steps_wanted_ = 0;               // 0: already checked
    std::span<const std::string> lines_; // from the one that is compared on
};

} // namespace pelvan
