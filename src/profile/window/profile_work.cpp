#include "profile/window/profile_work.h"

namespace pelvan {

void ProfileWork::use(ProfileModel model) {
    model_ = model.number;
    editor_ = ProfileEditor(std::move(model.format));
    forget();
}

std::string ProfileWork::edit(const std::function<std::string(ProfileEditor&)>& action) {
    const int before = editor_.revision();
    std::string problem = action(editor_);
    if (editor_.revision() != before) forget();
    return problem;
}

void ProfileWork::choose(int profile, int step) {
    const int before = editor_.place().profile;
    const int revision = editor_.revision();
    editor_.choose(profile, step);
    if (editor_.revision() == revision) return;
    if (editor_.place().profile != before)
        forget();
    else
        chosen_moved.raise();
}

const ProfileCurve& ProfileWork::curve() const {
    if (!curve_) curve_ = curve_from(editor_.place().profile, 1);
    return *curve_;
}

ProfileCurve ProfileWork::curve_from(int profile, int step) const {
    return unroll(editor_.format(), editor_.profiles(), {profile, step, start_});
}

ProfileCurve ProfileWork::curve_in_controller(const CurveStart& start) const {
    const auto& held = editor_.in_controller();
    return unroll(editor_.format(), held ? *held : editor_.profiles(), start);
}

const std::vector<ProfileFinding>& ProfileWork::findings() const {
    if (!findings_)
        findings_ = check_profiles(editor_.format(), editor_.profiles(), {steepest_, start_});
    return *findings_;
}

void ProfileWork::set_steepest(std::optional<double> rate) {
    if (steepest_ == rate) return;
    steepest_ = rate;
    forget();
}

void ProfileWork::set_start(const std::array<double, kLoops>& values) {
    if (start_ == values) return;
    start_ = values;
    forget();
}

void ProfileWork::forget() {
    curve_.reset();
    findings_.reset();
    changed.raise();
}

} // namespace pelvan
