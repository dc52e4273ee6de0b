#include "settings/comms_settings_form.h"

#include "platform/run_time_error.h"
#include "text/numbers.h"

namespace pelvan {
namespace {

constexpr int kModbusFrame = 1;
constexpr int kXonProtocol = 2;
/// Frames that are asked about at closing: Tellura/AB never is.
constexpr int kAskedFrames = 3;

} // namespace

void frm_CommsSettings::Form_Load() {
    if (LockDataOptionmenu.Checked()) LockDataOptionmenu_Click();
    show_frame(host_.selected_protocol());
    picker.refresh();
    host_.hold_windows(true); // last: after an error nobody would give them back
}

void frm_CommsSettings::Form_Activate() {
    const int protocol = host_.selected_protocol();
    show_frame(protocol);
    try {
        settings_.rebuild();
    } catch (const RunTimeError&) {
        // The channels that were built before the error can be edited all the same.
        fill_frame(protocol);
        throw;
    }
    fill_frame(protocol);
    txt_Port[checked_index(protocol, kFrames)].SetFocus();
}

void frm_CommsSettings::show_frame(int shown) {
    for (int i = 0; i < kFrames; ++i)
        fram_Protocol[static_cast<std::size_t>(i)].set_Visible(i == shown);
}

void frm_CommsSettings::fill_frame(int index) {
    const std::size_t i = checked_index(index, kFrames);
    const PortFields fields = settings_.read(index);
    txt_Port[i].set_Text(fields.port);
    txt_Baud[i].set_Text(fields.baud);
    txt_Parity[i].set_Text(fields.parity);
    txt_DataBits[i].set_Text(fields.data_bits);
    txt_StopBits[i].set_Text(fields.stop_bits);
    ComboRTSMode[i].set_ListIndex(fields.mode);
    exchange.fill(index);
    // The boxes raised their Change events, but nobody has edited anything yet.
    set_changed(index, false);
    show_device(index);
}

PortFields frm_CommsSettings::typed_fields(int index) const {
    const std::size_t i = checked_index(index, kFrames);
    return {txt_Port[i].Text(),     txt_Baud[i].Text(),     txt_Parity[i].Text(),
            txt_DataBits[i].Text(), txt_StopBits[i].Text(), ComboRTSMode[i].ListIndex()};
}

bool frm_CommsSettings::Form_Unload() {
    int wanted = -1;
    for (int i = 0; i < kAskedFrames; ++i) {
        const auto frame = static_cast<std::size_t>(i);
        if (!changed_[frame]) continue;
        const MessageAnswer answer = services_.dialogs.message_box(
            std::string("Some data has changed for ") + fram_Protocol[frame].Caption() + ".  Save?",
            {}, MessageButtons::YesNo, MessageIcon::Exclamation);
        if (answer == MessageAnswer::Yes) wanted = i;
    }
    if (wanted >= 0) {
        // Yes saves nothing by itself: it leads back to the frame, where the save button is.
        txt_Port[static_cast<std::size_t>(wanted)].SetFocus();
        return false;
    }
    changed_.fill(false);
    host_.hold_windows(false);
    return true;
}

void frm_CommsSettings::set_changed(int index, bool changed) {
    changed_[checked_index(index, kFrames)] = changed;
}

bool frm_CommsSettings::changed(int index) const {
    return changed_[checked_index(index, kFrames)];
}

void frm_CommsSettings::select_whole(ControlArray<TextBox>& boxes, int index) {
    boxes[checked_index(index, kFrames)].select_all();
}

void frm_CommsSettings::txt_Port_Change(int index) {
    set_changed(index, true);
    show_device(index);
}

void frm_CommsSettings::txt_Baud_Change(int index) {
    set_changed(index, true);
    show_device(index);
}

void frm_CommsSettings::show_device(int index) {
    const std::size_t i = checked_index(index, kFrames);
    const double number = leading_number(txt_Port[i].Text());
    exchange.advise(txt_Port[i].Text(), txt_Baud[i].Text());
    picker.show_port(is_port_number(number) ? static_cast<int>(number) : 0);
}

void frm_CommsSettings::cmd_SaveChanges_Click(int index) {
    const PortFields typed = typed_fields(index);
    std::vector<std::string> messages = ValidatePortSettings(typed);
    // Stored now, the settings would come up under the tool with the next rebuild.
    if (const std::string refusal = settings_.refusal(); !refusal.empty())
        messages.push_back(refusal);
    for (const std::string& message : messages)
        services_.dialogs.message_box(message);
    if (!messages.empty()) return;
    // The console's choice counts, whichever frame is saved.
    const bool handshaking = host_.selected_protocol() == kXonProtocol;
    const bool stored = settings_.store(index, typed, handshaking) && exchange.store(index);
    if (stored) set_changed(index, false); // nothing is left to ask about
    try {
        settings_.rebuild();
    } catch (const RunTimeError&) {
        // Too many channels in the file: those that were built work, and this one is saved.
        if (stored) Unload();
        throw;
    }
    if (say_unless(stored, "The settings") && offer_missing_channels(index)) Unload();
}

bool frm_CommsSettings::say_unless(bool written, const char* what) {
    if (!written)
        services_.dialogs.message_box(std::string(what) + " could not be written to " +
                                          config_.gIniFile + ".",
                                      {}, MessageButtons::Ok, MessageIcon::Exclamation);
    return written;
}

/// A saved channel behind a gap in the list of channels does not come up.
bool frm_CommsSettings::offer_missing_channels(int index) {
    const std::vector<int> missing = settings_.missing_before(index);
    if (missing.empty()) return true;
    std::string keys;
    for (const int channel : missing)
        keys += "\n    " + ini_key::comm_port(channel);
    const MessageAnswer answer = services_.dialogs.message_box(
        "The settings are saved, but channel " + std::to_string(index) +
            " cannot be used: the list of channels ends at a missing key. Section [" +
            ini_key::kCommsSection + "] of " + config_.gIniFile + " lacks" + keys +
            "\n\nAdd it with port " + PortSettings::kDefaultPort + ", " +
            PortSettings::kDefaultSettings + "?",
        {}, MessageButtons::YesNo, MessageIcon::Exclamation);
    if (answer != MessageAnswer::Yes) return true;
    const bool added = settings_.add(missing);
    settings_.rebuild();
    return say_unless(added, "The missing channels");
}

void frm_CommsSettings::cmd_OK_Click() {
    Unload();
}

// The entry names no frame; it speaks of Modbus, whose frame it acts on.
void frm_CommsSettings::LockDataOptionmenu_Click() {
    const bool locked = !LockDataOptionmenu.Checked();
    LockDataOptionmenu.set_Checked(locked);
    for (TextBox* box :
         {&txt_Parity[kModbusFrame], &txt_DataBits[kModbusFrame], &txt_StopBits[kModbusFrame]})
        box->set_Enabled(!locked);
}

} // namespace pelvan
