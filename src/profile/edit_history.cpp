#include "profile/edit_history.h"

namespace pelvan {

void EditHistory::add(ProfileEdit edit, int drag) {
    edits_.resize(done_);
    if (drag != 0 && drag == drag_ && !edits_.empty()) {
        ProfileEdit& last = edits_.back();
        last.before.merge(edit.before); // those that are there already are older
        for (auto& [number, profile] : edit.after)
            last.after[number] = std::move(profile);
        last.place_after = edit.place_after;
        return;
    }
    edits_.push_back(std::move(edit));
    done_ = edits_.size();
    drag_ = drag;
}

const ProfileEdit* EditHistory::undo() {
    drag_ = 0;
    return can_undo() ? &edits_[--done_] : nullptr;
}

const ProfileEdit* EditHistory::redo() {
    drag_ = 0;
    return can_redo() ? &edits_[done_++] : nullptr;
}

std::string EditHistory::undo_text() const {
    return can_undo() ? edits_[done_ - 1].what : std::string();
}

std::string EditHistory::redo_text() const {
    return can_redo() ? edits_[done_].what : std::string();
}

} // namespace pelvan
