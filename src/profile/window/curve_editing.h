// The curve of the chosen profile as it is drawn, and what dragging in it makes of the steps.
#pragma once

#include "profile/window/profile_picture.h"
#include "profile/window/profile_work.h"

namespace pelvan {

class CurveEditing : public CurveDesk {
  public:
    explicit CurveEditing(ProfileWork& work);

    [[nodiscard]] const CurvePicture& picture() const override { return picture_; }
    [[nodiscard]] int chosen_profile() const override;
    [[nodiscard]] int chosen_step() const override;
    void choose_step(int step) override;
    void begin_drag(std::size_t piece) override;
    void drag_to(int set_point, double time_s, double value) override;
    void end_drag() override;

    /// As StepSheet's.
    void lock(const std::string& reason) { locked_ = !reason.empty(); }

  private:
    void draw();

    ProfileWork& work_;
    CurvePicture picture_;
    std::optional<CurvePiece> begin_; // of the step whose end is dragged
    bool locked_ = false;
    Subscription changes_;
    Subscription choices_;
};

} // namespace pelvan
