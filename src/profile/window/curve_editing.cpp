#include "profile/window/curve_editing.h"

#include "profile/window/curve_picture.h"

namespace pelvan {

CurveEditing::CurveEditing(ProfileWork& work)
    : work_(work), changes_(work.changed.subscribe([this] { draw(); })),
      choices_(work.chosen_moved.subscribe([this] { chosen_moved.raise(); })) {}

void CurveEditing::draw() {
    picture_ = curve_picture(work_.format(), work_.editor().profiles(), work_.curve());
    changed.raise();
}

int CurveEditing::chosen_profile() const {
    return work_.editor().place().profile;
}

int CurveEditing::chosen_step() const {
    return work_.editor().place().step;
}

void CurveEditing::choose_step(int step) {
    if (step >= 1) work_.choose_step(step);
}

/// The step's segments before the one that was taken hold of belong to the same visit.
void CurveEditing::begin_drag(std::size_t piece) {
    begin_.reset();
    if (locked_ || piece >= picture_.pieces.size()) return;
    const auto is_same = [&](const CurvePiece& other) {
        return other.profile == picture_.pieces[piece].profile &&
               other.step == picture_.pieces[piece].step;
    };
    std::size_t first = piece;
    while (first > 0 && is_same(picture_.pieces[first - 1]) &&
           !picture_.pieces[first - 1].time_moves)
        --first;
    begin_ = picture_.pieces[first];
    work_.choose(begin_->profile, begin_->step);
}

void CurveEditing::drag_to(int set_point, double time_s, double value) {
    if (!begin_ || set_point < 0 || set_point >= kSetPoints) return;
    const auto loop = static_cast<std::size_t>(set_point);
    const StepEnd end{time_s - begin_->from_s, value, loop, begin_->from[loop]};
    work_.edit([&end](ProfileEditor& editor) { return editor.drag_end(end); });
}

void CurveEditing::end_drag() {
    begin_.reset();
    work_.edit([](ProfileEditor& editor) {
        editor.end_drag();
        return std::string();
    });
}

} // namespace pelvan
