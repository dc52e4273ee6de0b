#include <algorithm>

#include "platform/run_time_error.h"
#include "settings/comms_settings_form.h"
#include "text/numbers.h"
#include "text/strings.h"

namespace pelvan {
namespace {

constexpr int kModbusFrame = 1;
constexpr int kXonProtocol = 2;
/// Frames that are asked about at closing: Tellura/AB never is.
constexpr int kAskedFrames = 3;
/// Added to the stored mode for XON/XOFF handshaking.
constexpr int kHandshakingModes = 3;

constexpr char kDesignerBaud[] = "19200";

/// What the program uses for channel 0 where the file has none; added channels get the same.
constexpr char kDefaultPort[] = "2";
constexpr char kDefaultSettings[] = "9600,N,8,1";
constexpr char kDefaultMode[] = "1";

constexpr char kBadPort[] = " The Comm Port specified is not valid, data will not be saved";
constexpr char kBadBaud[] = " The Baud Rate specified is not valid, data will not be saved";
constexpr char kBadParity[] = " The Parity specified is not valid, data will not be saved";
constexpr char kBadDataBits[] = " The Data Bits specified is not valid, data will not be saved";

bool one_of(double value, std::initializer_list<int> allowed) {
    return std::any_of(allowed.begin(), allowed.end(), [=](int each) { return value == each; });
}

} // namespace

void frm_CommsSettings::Form_Load() {
    if (LockDataOptionmenu.Checked()) LockDataOptionmenu_Click();
    show_frame(protocol());
    picker.refresh();
    if (hold_windows) hold_windows(true); // last: after an error nobody would give them back
}

int frm_CommsSettings::protocol() const {
    return selected_protocol ? selected_protocol() : kModbusFrame;
}

void frm_CommsSettings::Form_Activate() {
    show_frame(protocol());
    try {
        channels_.init_comms();
    } catch (const RunTimeError&) {
        // The channels that were built before the error can be edited all the same.
        fill_frame(protocol());
        throw;
    }
    fill_frame(protocol());
    txt_Port[checked_index(protocol(), kFrames)].SetFocus();
}

void frm_CommsSettings::show_frame(int shown) {
    for (int i = 0; i < kFrames; ++i)
        fram_Protocol[static_cast<std::size_t>(i)].set_Visible(i == shown);
}

void frm_CommsSettings::fill_frame(int index) {
    const SerialState& state = channels_.state();
    const std::size_t i = checked_index(index, kFrames);
    if (i >= state.gCommDevice.size()) {
        fill_boxes(index, "", {kDesignerBaud, "", "", ""}, 0);
        return;
    }
    const SerialPort& device = *state.gCommDevice[i];
    std::array<std::string, 4> parts;
    const auto pieces = split(device.Settings(), ',');
    std::copy_n(pieces.begin(), std::min(pieces.size(), parts.size()), parts.begin());
    const int fixed_lines = device.RTSEnable() ? 1 : 0;
    fill_boxes(index, std::to_string(device.CommPort()), parts,
               state.gRtsToggle[i] ? 2 : fixed_lines);
}

void frm_CommsSettings::fill_boxes(int index, const std::string& port,
                                   const std::array<std::string, 4>& parts, int mode) {
    const auto i = static_cast<std::size_t>(index);
    txt_Port[i].set_Text(port);
    txt_Baud[i].set_Text(parts[0]);
    txt_Parity[i].set_Text(parts[1]);
    txt_DataBits[i].set_Text(parts[2]);
    txt_StopBits[i].set_Text(parts[3]);
    ComboRTSMode[i].set_ListIndex(mode);
    // The boxes raised their Change events, but nobody has edited anything yet.
    set_changed(index, false);
    show_device(index);
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
    if (hold_windows) hold_windows(false);
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

void frm_CommsSettings::show_device(int index) {
    const double number = leading_number(txt_Port[checked_index(index, kFrames)].Text());
    const bool is_port = number >= kLowestPortNumber && number <= kHighestPortNumber;
    picker.show_port(is_port ? static_cast<int>(number) : 0);
}

bool frm_CommsSettings::ValidatePortSettings(int index) {
    const std::size_t i = checked_index(index, kFrames);
    bool valid = true;
    const auto require = [&](bool holds, const char* message) {
        if (!holds) services_.dialogs.message_box(message);
        valid = valid && holds;
    };
    const double port = leading_number(txt_Port[i].Text());
    require(port >= kLowestPortNumber && port <= kHighestPortNumber, kBadPort);
    require(one_of(leading_number(txt_Baud[i].Text()),
                   {300, 600, 1200, 2400, 4800, 9600, 19200, 38400}),
            kBadBaud);
    const std::string& parity = txt_Parity[i].Text();
    require(parity.size() == 1 && std::string("NnOoEe").find(parity) != std::string::npos,
            kBadParity);
    require(one_of(leading_number(txt_DataBits[i].Text()), {7, 8}), kBadDataBits);
    // Kept as it is: wrong stop bits are reported with the words for the data bits.
    require(one_of(leading_number(txt_StopBits[i].Text()), {1, 2}), kBadDataBits);
    return valid;
}

void frm_CommsSettings::cmd_SaveChanges_Click(int index) {
    if (!ValidatePortSettings(index)) return;
    write_keys(index);
    set_changed(index, false); // what was edited is saved: nothing is left to ask about
    channels_.init_comms();
    offer_missing_channels(index);
    Unload();
}

void frm_CommsSettings::write_keys(int index) {
    const std::size_t i = checked_index(index, kFrames);
    int mode = ComboRTSMode[i].ListIndex();
    // The console's choice counts, whichever frame is saved.
    if (protocol() == kXonProtocol) mode += kHandshakingModes;
    const std::string& file = config_.gIniFile;
    const auto write = [&](const std::string& key, const std::string& value) {
        ini_write_string(ini_key::kCommsSection, key, value, file);
    };
    write(ini_key::comm_port(index), txt_Port[i].Text());
    write(ini_key::port_setting(index), txt_Baud[i].Text() + "," + txt_Parity[i].Text() + "," +
                                            txt_DataBits[i].Text() + "," + txt_StopBits[i].Text());
    write(ini_key::rts_mode(index), std::to_string(mode));
}

/// The list of channels ends at the first one whose port is missing, so a saved channel behind a
/// gap does not come up.
void frm_CommsSettings::offer_missing_channels(int index) {
    const std::string& file = config_.gIniFile;
    std::vector<int> missing;
    std::string keys;
    for (int channel = 0; channel < index; ++channel) {
        const std::string key = ini_key::comm_port(channel);
        if (ini_read_int(ini_key::kCommsSection, key, 0, file) != 0) continue;
        missing.push_back(channel);
        keys += "\n    " + key;
    }
    if (missing.empty()) return;
    const MessageAnswer answer = services_.dialogs.message_box(
        "The settings are saved, but channel " + std::to_string(index) +
            " cannot be used: the list of channels ends at a missing key. Section [" +
            ini_key::kCommsSection + "] of " + file + " lacks" + keys + "\n\nAdd it with port " +
            kDefaultPort + ", " + kDefaultSettings + "?",
        {}, MessageButtons::YesNo, MessageIcon::Exclamation);
    if (answer != MessageAnswer::Yes) return;
    for (const int channel : missing) {
        ini_write_string(ini_key::kCommsSection, ini_key::comm_port(channel), kDefaultPort, file);
        ini_write_string(ini_key::kCommsSection, ini_key::port_setting(channel), kDefaultSettings,
                         file);
        ini_write_string(ini_key::kCommsSection, ini_key::rts_mode(channel), kDefaultMode, file);
    }
    channels_.init_comms();
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
