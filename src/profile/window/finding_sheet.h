// What is wrong, a line each: first what came of the last work with the controller, then what the
// checks find in the profiles. Choosing a line goes to its step.
#pragma once

#include "profile/window/profile_work.h"
#include "profile/window/sheet.h"

namespace pelvan {

class FindingSheet : public Sheet {
  public:
    explicit FindingSheet(ProfileWork& work);

    /// Replaces the lines of the last work.
    void set_results(std::vector<ProfileFinding> results);

    [[nodiscard]] int rows() const override;
    [[nodiscard]] int columns() const override { return 1; }
    [[nodiscard]] std::string heading(int) const override { return "Finding"; }
    [[nodiscard]] SheetCell cell(int row, int column) const override;
    [[nodiscard]] bool column_used(int) const override { return true; }
    [[nodiscard]] std::string problem(int, int, const std::string&) const override { return {}; }
    void enter(int, int, const std::string&) override {}
    [[nodiscard]] int chosen() const override { return chosen_; }
    void choose(int row) override;

  private:
    [[nodiscard]] const ProfileFinding* finding_of(int row) const;

    ProfileWork& work_;
    std::vector<ProfileFinding> results_;
    int chosen_ = -1;
    Subscription changes_;
};

} // namespace pelvan
