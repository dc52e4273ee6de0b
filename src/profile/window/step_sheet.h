// The steps of the chosen profile as a table: number, kind, and a column for each field that any
// kind of step has.
#pragma once

#include "profile/window/profile_work.h"
#include "profile/window/sheet.h"

namespace pelvan {

class StepSheet : public Sheet {
  public:
    explicit StepSheet(ProfileWork& work);

    [[nodiscard]] int rows() const override;
    [[nodiscard]] int columns() const override;
    [[nodiscard]] std::string heading(int column) const override;
    [[nodiscard]] SheetCell cell(int row, int column) const override;
    [[nodiscard]] bool column_used(int column) const override;
    [[nodiscard]] std::string problem(int row, int column, const std::string& text) const override;
    void enter(int row, int column, const std::string& text) override;
    [[nodiscard]] int chosen() const override;
    void choose(int row) override;

    /// Why the profile cannot be edited now, a sentence that a cell's tip and problem then tell;
    /// empty when it can.
    void lock(const std::string& reason);

  private:
    /// A field as the columns show it: the first kind that has the register gives its words.
    [[nodiscard]] const ProfileField* field_of(int row, int column) const;
    [[nodiscard]] const ProfileStep* step_of(int row) const;
    [[nodiscard]] SheetCell kind_cell(int row, const ProfileStep& step) const;
    void find_columns();

    ProfileWork& work_;
    std::vector<ProfileField> fields_;
    int model_ = 0; // that the fields are of
    std::string locked_;
    Subscription changes_;
    Subscription choices_;
};

} // namespace pelvan
