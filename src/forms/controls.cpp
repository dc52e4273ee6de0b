#include "forms/controls.h"

#include <algorithm>

#include "platform/run_time_error.h"

namespace pelvan {

std::string control_name(const std::string& array, int index) {
    return array + "(" + std::to_string(index) + ")";
}

void Control::SetFocus() {
    bool moved = false;
    focus_wanted_.raise(moved);
    if (!moved) raise(GotFocus);
}

void Button::press() {
    if (Enabled()) raise(Click);
}

void TextBox::set_Text(const std::string& text) {
    if (text == text_) return;
    text_ = text;
    notify();
    raise(Change);
}

void CheckBox::set_Value(int value) {
    if (value < 0 || value > 2) throw RunTimeError(error_number::kInvalidPropertyValue);
    if (assign(value_, value)) raise(Click);
}

void OptionGroup::set_Value(int index) {
    static_cast<void>(checked_index(index, options_.size()));
    if (assign(value_, index) && Click) Click(index);
}

const OptionGroup::Option& OptionGroup::option(int index) const {
    return options_[checked_index(index, options_.size())];
}

void OptionGroup::set_option_enabled(int index, bool on) {
    assign(options_[checked_index(index, options_.size())].enabled, on);
}

void ScrollBar::set_Value(int value) {
    if (value < std::min(min_, max_) || value > std::max(min_, max_))
        throw RunTimeError(error_number::kInvalidPropertyValue);
    if (assign(value_, value)) raise(Change);
}

void ProgressBar::set_Value(double value) {
    assign(value_, std::clamp(value, 0.0, max_));
}

void MenuEntry::choose() {
    if (Enabled()) raise(Click);
}

} // namespace pelvan
