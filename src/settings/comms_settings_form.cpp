#include "settings/comms_settings_form.h"

#include "text/numbers.h"

namespace pelvan {
namespace {

constexpr int kModbusFrame = 1;
constexpr int kXonProtocol = 2;
/// Frames that are asked about at closing: Tellura/AB never is.
constexpr int kAskedFrames = 3;

/// 0 for what is none.
int port_number(const std::string& typed) {
    const double number = leading_number(typed);
    return is_port_number(number) ? static_cast<int>(number) : 0;
}

} // namespace

void frm_CommsSettings::Form_Load() {
    if (LockDataOptionmenu.Checked()) LockDataOptionmenu_Click();
    show_frame(host_.selected_protocol());
    picker.forget();
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
    // Without settings of its own the channel lacks nothing but a device; Enter saves from there.
    Control& first = settings_.configured(protocol)
                         ? static_cast<Control&>(txt_Port[checked_index(protocol, kFrames)])
                         : picker.cmb_Device;
    first.SetFocus();
}

void frm_CommsSettings::show_frame(int shown) {
    shown_ = shown;
    for (int i = 0; i < kFrames; ++i)
        fram_Protocol[static_cast<std::size_t>(i)].set_Visible(i == shown);
}

void frm_CommsSettings::fill_frame(int index) {
    const std::size_t i = checked_index(index, kFrames);
    const auto known = settings_.read(index);
    const PortFields fields = known ? *known : settings_.proposal(index, picker.devices());
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
    show_gap(index);
}

void frm_CommsSettings::show_gap(int index) {
    const std::vector<int> missing = settings_.missing_before(index);
    chk_GivePorts.set_Visible(!missing.empty());
    if (missing.empty()) return;
    // The caption's own access key, in a sentence that is a message box's too.
    std::string question = PortSettings::gap_question(index, missing);
    chk_GivePorts.set_Caption(question.insert(question.find("Give "), "&"));
    chk_GivePorts.set_Value(1);
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
    if (shown_ >= kAskedFrames && picker.pending() &&
        services_.dialogs.message_box(picker.pending_question(), {}, MessageButtons::YesNo,
                                      MessageIcon::Exclamation) == MessageAnswer::Yes)
        wanted = shown_;
    if (wanted >= 0) {
        // Yes saves nothing by itself: it leads back to the frame, where the save button is.
        txt_Port[static_cast<std::size_t>(wanted)].SetFocus();
        return false;
    }
    changed_.fill(false);
    picker.forget();
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

void frm_CommsSettings::box_changed(int index) {
    set_changed(index, true);
    show_use(index);
}

void frm_CommsSettings::show_use(int index) {
    const PortFields typed = typed_fields(index);
    exchange.advise(typed.port, typed.baud);
    lbl_PortUse.set_Caption(settings_.sharing(index, typed));
}

void frm_CommsSettings::show_device(int index) {
    picker.show_port(port_number(txt_Port[checked_index(index, kFrames)].Text()));
    show_use(index);
}

void frm_CommsSettings::device_chosen(bool listed) {
    set_changed(shown_, true);
    // Not while somebody types: what is typed may go on to be another device's path.
    if (listed) take_number_of_device(shown_);
}

/// A device has one number: two would keep each other from opening it.
void frm_CommsSettings::take_number_of_device(int index) {
    TextBox& port = txt_Port[checked_index(index, kFrames)];
    const std::string device = picker.device();
    const int other = picker.devices().number_of(device);
    if (other == 0 || !picker.devices().is_change(port_number(port.Text()), device)) return;
    picker.forget();
    port.set_Text(std::to_string(other));
}

void frm_CommsSettings::cmd_SaveChanges_Click(int index) {
    take_number_of_device(index);
    const PortFields typed = typed_fields(index);
    const std::vector<std::string> messages = objections(typed);
    for (const std::string& message : messages)
        services_.dialogs.message_box(message);
    focus_wrong(index, wrong_fields(typed));
    if (!messages.empty()) return;
    if (!picker.accept()) {
        picker.cmb_Device.SetFocus();
        return;
    }
    // The console's choice counts, whichever frame is saved.
    const bool handshaking = host_.selected_protocol() == kXonProtocol;
    const bool stored =
        settings_.store(index, typed, handshaking) && exchange.store(index) && picker.write();
    if (stored) set_changed(index, false); // nothing is left to ask about
    try {
        settings_.rebuild();
    } catch (const RunTimeError&) {
        // Too many channels in the file: those that were built work, and this one is saved.
        if (stored) Unload();
        throw;
    }
    if (say_unless(stored, "The settings") && add_missing_channels(index)) Unload();
}

/// To the first box whose text was refused; what is typed next replaces it.
void frm_CommsSettings::focus_wrong(int index, const std::vector<PortField>& wrong) {
    if (wrong.empty()) return;
    const std::array boxes{&txt_Port, &txt_Baud, &txt_Parity, &txt_DataBits, &txt_StopBits};
    ControlArray<TextBox>& refused = *boxes[static_cast<std::size_t>(wrong.front())];
    refused[checked_index(index, kFrames)].SetFocus();
    select_whole(refused, index);
}

std::vector<std::string> frm_CommsSettings::objections(const PortFields& typed) const {
    std::vector<std::string> messages = ValidatePortSettings(typed);
    // Stored now, the settings would come up under the tool with the next rebuild.
    if (const std::string refusal = settings_.refusal(); !refusal.empty())
        messages.push_back(refusal);
    return messages;
}

bool frm_CommsSettings::say_unless(bool written, const char* what) {
    if (!written)
        services_.dialogs.message_box(std::string(what) + " could not be written to " +
                                          config_.gIniFile + ".",
                                      {}, MessageButtons::Ok, MessageIcon::Exclamation);
    return written;
}

bool frm_CommsSettings::wants_missing(int index, const std::vector<int>& missing) {
    if (chk_GivePorts.Visible()) return chk_GivePorts.checked();
    // The gap has come into the file while the window was open.
    return services_.dialogs.message_box(PortSettings::gap_question(index, missing), {},
                                         MessageButtons::YesNo,
                                         MessageIcon::Exclamation) == MessageAnswer::Yes;
}

/// A saved channel behind a gap in the list of channels does not come up.
bool frm_CommsSettings::add_missing_channels(int index) {
    const std::vector<int> missing = settings_.missing_before(index);
    if (missing.empty() || !wants_missing(index, missing)) return true;
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
