#include "console/tellura_panel.h"

namespace pelvan {

TelluraPanel::TelluraPanel(TelluraSender& sender)
    : EntryPanel(protocol::kTellura), sender_(sender) {
    TxtData.set_Enabled(false);
    OptReadWrite.Click = [this](int index) {
        TxtNoBytes.set_Enabled(index == 0);
        TxtData.set_Enabled(index == 1);
    };
    for (TextBox* box : {&TxtTelluraAddress, &TxtParameterAddress, &TxtNoBytes, &TxtData})
        box->GotFocus = [box] { box->select_all(); };
}

TelluraEntry TelluraPanel::entry() const {
    return {TxtTelluraAddress.Text(),
            TxtParameterAddress.Text(),
            TxtNoBytes.Text(),
            TxtData.Text(),
            OptReadWrite.Value() == 1,
            OptErrorChecking.Value() == 1 ? TelluraCheck::Crc : TelluraCheck::Bcc};
}

void TelluraPanel::set_entry(const TelluraEntry& entry) {
    TxtTelluraAddress.set_Text(entry.device_address);
    TxtParameterAddress.set_Text(entry.parameter_address);
    TxtNoBytes.set_Text(entry.byte_count);
    TxtData.set_Text(entry.data);
    OptReadWrite.set_Value(entry.write ? 1 : 0);
    OptErrorChecking.set_Value(entry.check == TelluraCheck::Crc ? 1 : 0);
}

TextBox* TelluraPanel::refused_box(const std::string& refusal) {
    const auto names = [&](const char* field) { return refusal.find(field) != refusal.npos; };
    if (names("device address")) return &TxtTelluraAddress;
    if (names("parameter address")) return &TxtParameterAddress;
    if (names("number of bytes")) return &TxtNoBytes;
    return names("data") ? &TxtData : nullptr;
}

void TelluraPanel::set_visible(bool on) {
    for (Control* control : std::initializer_list<Control*>{
             &Fram_Tellura, &LblTelluraAddress, &TxtTelluraAddress, &LblParameterAddress,
             &TxtParameterAddress, &LblNoBytes, &TxtNoBytes, &LblData, &TxtData, &OptReadWrite,
             &OptErrorChecking})
        control->set_Visible(on);
}

} // namespace pelvan
