// The profiles that are edited as a table: number, name, steps, and how long each takes.
#pragma once

#include "profile/window/profile_work.h"
#include "profile/window/sheet.h"

namespace pelvan {

class ProfileListSheet : public Sheet {
  public:
    explicit ProfileListSheet(ProfileWork& work);

    [[nodiscard]] int rows() const override;
    [[nodiscard]] int columns() const override { return 4; }
    [[nodiscard]] std::string heading(int column) const override;
    [[nodiscard]] SheetCell cell(int row, int column) const override;
    [[nodiscard]] bool column_used(int) const override { return true; }
    [[nodiscard]] std::string problem(int row, int column, const std::string& text) const override;
    void enter(int row, int column, const std::string& text) override;
    [[nodiscard]] int chosen() const override;
    void choose(int row) override;

    /// As StepSheet's, of the names.
    void lock(const std::string& reason) { locked_ = reason; }
    /// Marks the profile that runs; 0: none does.
    void mark_running(int number);

  private:
    [[nodiscard]] const Profile* profile_of(int row) const;
    void find_times();

    ProfileWork& work_;
    std::map<int, std::string> times_;
    int running_ = 0;
    std::string locked_;
    Subscription changes_;
    Subscription choices_;
};

} // namespace pelvan
