#include "forms/form.h"

namespace pelvan {

void Form::Move(const TwipRect& position) {
    position_ = position;
    moved_.raise();
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
    bool was_active = false;
    shown_.raise(was_active);
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
