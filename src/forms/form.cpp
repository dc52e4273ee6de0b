#include "forms/form.h"

namespace pelvan {

void Form::Move(const TwipRect& position) {
    position_ = position;
    raise(move_watcher_);
}

void Form::Load() {
    if (loaded_) return;
    loaded_ = true;
    Form_Load();
}

void Form::Show() {
    const bool opening = !Visible();
    Load();
    set_Visible(true);
    const auto watcher = show_watcher_;
    const bool was_active = watcher && watcher();
    if (opening || !was_active) Form_Activate();
}

bool Form::Unload() {
    if (!loaded_) return true;
    if (!Form_Unload()) return false;
    loaded_ = false;
    set_Visible(false);
    return true;
}

} // namespace pelvan
