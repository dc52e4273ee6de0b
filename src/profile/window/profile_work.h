// What the profile window works on: the model, the profiles that are edited, and what follows from
// them (the curve of the chosen one, the findings). The sheets and pictures of the window read it;
// it knows no control.
#pragma once

#include <array>
#include <functional>
#include <optional>

#include "platform/event.h"
#include "profile/profile_check.h"
#include "profile/profile_curve.h"
#include "profile/profile_editor.h"
#include "profile/profile_model.h"

namespace pelvan {

class ProfileWork {
  public:
    /// Where curves begin as long as nobody knows where the controller stands.
    static constexpr double kRoom = 25;

    ProfileWork() = default;
    ProfileWork(const ProfileWork&) = delete;
    ProfileWork& operator=(const ProfileWork&) = delete;

    /// Begins with no profiles of this model.
    void use(ProfileModel model);
    [[nodiscard]] bool has_model() const { return model_ != 0; }
    /// 0 before the first one.
    [[nodiscard]] int model() const { return model_; }
    [[nodiscard]] const ProfileFormat& format() const { return editor_.format(); }
    [[nodiscard]] const ProfileEditor& editor() const { return editor_; }

    /// Everything that changes profiles; what the edit refused, as a sentence.
    std::string edit(const std::function<std::string(ProfileEditor&)>& action);
    void choose(int profile, int step = 1);
    /// The chosen profile's step.
    void choose_step(int step) { choose(editor_.place().profile, step); }

    /// Of the chosen profile from its first step on; of no segment when there is none.
    [[nodiscard]] const ProfileCurve& curve() const;
    [[nodiscard]] ProfileCurve curve_from(int profile, int step) const;
    /// As the controller was found to hold it, or as it is here where that is not known.
    [[nodiscard]] ProfileCurve curve_in_controller(const CurveStart& start) const;
    [[nodiscard]] const std::vector<ProfileFinding>& findings() const;

    /// Units a minute that no ramp may exceed.
    void set_steepest(std::optional<double> rate);
    /// Where curves begin: what the controller measures.
    void set_start(const std::array<double, kLoops>& values);

    /// Profiles, model, or what follows from them are others than before, maybe the choice too.
    Event<> changed;
    /// Nothing but the choice is another.
    Event<> chosen_moved;

  private:
    void forget();

    int model_ = 0;
    ProfileEditor editor_{ProfileFormat{}};
    std::optional<double> steepest_;
    std::array<double, kLoops> start_{kRoom, kRoom};
    mutable std::optional<ProfileCurve> curve_;
    mutable std::optional<std::vector<ProfileFinding>> findings_;
};

} // namespace pelvan
