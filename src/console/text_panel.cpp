#include "console/text_panel.h"

namespace pelvan {

TextPanel::TextPanel(TextSender& sender) : sender_(sender) {
    for (TextBox* box : {&txt_DeviceAddress, &txt_CommsCommand})
        box->GotFocus = [box] { box->select_all(); };
}

TextEntry TextPanel::entry() const {
    return {txt_DeviceAddress.Text(), txt_CommsCommand.Text()};
}

void TextPanel::set_entry(const TextEntry& entry) {
    txt_DeviceAddress.set_Text(entry.device_address);
    txt_CommsCommand.set_Text(entry.command);
}

SendLine TextPanel::Half::script_sender() {
    return [this, address = fields_.txt_DeviceAddress.Text()](const std::string& line) {
        const TextEntry entry{address, line};
        return noted(fields_.sender_.send(protocol_, entry), entry);
    };
}

void TextPanel::show_for(const Half* half) {
    shown_ = half;
    for (Control* control :
         std::initializer_list<Control*>{&Fram_CommsCommand, &lbl_CommsCommand, &txt_CommsCommand})
        control->set_Visible(half != nullptr);
    lbl_DeviceAddress.set_Visible(half == &full_);
    txt_DeviceAddress.set_Visible(half == &full_);
}

} // namespace pelvan
