#include "settings/comms_settings_form.h"

namespace pelvan {
namespace {

constexpr int kModbusFrame = 1;
constexpr char kDesignerBaud[] = "19200";
constexpr std::array<const char*, 3> kModes{"RTS/DTR Clear", "RTS/DTR Set", "RTS Toggle"};

struct FrameFace {
    const char* caption;
    const char* tool_tip;
};
constexpr std::array<FrameFace, frm_CommsSettings::kFrames> kFaces{{
    {"Full Protocol", "Select the settings for the ANSI X3.28(Full) protocol."},
    {"Modbus Protocol", "Select the settings for the modbus protocol."},
    {"Xon Protocol", "Select the settings for the Xon/Xoff protocol."},
    {"Tellura/AB Protocol", "Select the settings for the Tellura/AB protocol."},
}};

template <class Kind, class Make> std::array<Kind, frm_CommsSettings::kFrames> each(Make make) {
    return {make(0), make(1), make(2), make(3)};
}

std::array<Label, 4> labels(const char* array, const char* caption, const char* tool_tip = "") {
    return each<Label>([=](int i) { return Label(control_name(array, i), caption, tool_tip); });
}

std::array<Button, 4> buttons(const char* array, const char* caption, const char* tool_tip) {
    return each<Button>([=](int i) { return Button(control_name(array, i), caption, tool_tip); });
}

std::array<TextBox, 4> boxes(const char* array, const char* tool_tip, const char* modbus_tip = "",
                             const char* text = "") {
    return each<TextBox>([=](int i) {
        const bool fixed = i == kModbusFrame && *modbus_tip != '\0';
        return TextBox(control_name(array, i), text, fixed ? modbus_tip : tool_tip);
    });
}

} // namespace

frm_CommsSettings::frm_CommsSettings(Services& services, const ConfigState& config,
                                     ChannelTable& channels, SettingsHost& host,
                                     DeviceLookup lookup)
    : Form("frm_CommsSettings", "Communications Port Settings"),
      fram_Protocol(each<Frame>([](int i) {
          const FrameFace& face = kFaces[static_cast<std::size_t>(i)];
          return Frame(control_name("fram_Protocol", i), face.caption, face.tool_tip);
      })),
      lbl_Port(labels("lbl_Port", "Po&rt")), lbl_Baud(labels("lbl_Baud", "&Baud")),
      lbl_Parity(labels("lbl_Parity", "&Parity")),
      lbl_DataBits(labels("lbl_DataBits", "&Data Bits")),
      lbl_StopBits(labels("lbl_StopBits", "S&top Bits")),
      txt_Port(boxes("txt_Port", "Specify the Windows Comm Port Number.")),
      txt_Baud(boxes("txt_Baud", "Specify the baud rate to transmit and receive at.", "",
                     kDesignerBaud)),
      txt_Parity(boxes("txt_Parity", "Specify even(e), odd(o) or no(n) parity.",
                       "Fixed at no parity for modbusRTU.")),
      txt_DataBits(boxes("txt_DataBits", "Specify the number of data bits.",
                         "Fixed at 8 Data Bits for modbusRTU.")),
      txt_StopBits(boxes("txt_StopBits", "Specify the number of stop bits.",
                         "Fixed at 1 stop bit for modbusRTU.")),
      lbl_RTSMode(labels("lbl_RTSMode", "&Handshaking Options",
                         "Select the action of the DTR and RTS Lines.")),
      ComboRTSMode(each<ComboBox>([](int i) {
          return ComboBox(control_name("ComboRTSMode", i), {kModes.begin(), kModes.end()}, 0, false,
                          "Select the action of the DTR and RTS Lines.");
      })),
      cmd_SaveChanges(buttons("cmd_SaveChanges", "&Save Changes and Exit",
                              "Click to save changes to the comm settings and return to the "
                              "command center.")),
      // The name is from a time when the button said OK.
      cmd_OK(buttons("cmd_OK", "&Cancel", "Click to cancel changes to the Comm settings.")),
      picker(services, config, channels, std::move(lookup), DevicePickerPanel::Purpose::ForChannel),
      exchange(config, channels), services_(services), config_(config), host_(host),
      settings_(config, channels) {
    set_help_page("port_settings");
    chk_GivePorts.set_Visible(false);
    Hiddenmenu.children = {&LockDataOptionmenu};
    LockDataOptionmenu.make_checkable().Click = [this] { LockDataOptionmenu_Click(); };
    for (int i = 0; i < kFrames; ++i)
        connect_boxes(i);
    exchange.changed = [this] { set_changed(host_.selected_protocol(), true); };
    show_frame(-1);
}

void frm_CommsSettings::connect_boxes(int index) {
    const auto i = static_cast<std::size_t>(index);
    txt_Port[i].Change = [this, index] { txt_Port_Change(index); };
    txt_Baud[i].Change = [this, index] { txt_Baud_Change(index); };
    txt_Parity[i].Change = [this, index] { txt_Parity_Change(index); };
    txt_DataBits[i].Change = [this, index] { txt_DataBits_Change(index); };
    txt_StopBits[i].Change = [this, index] { txt_StopBits_Change(index); };
    txt_Port[i].GotFocus = [this, index] { txt_Port_GotFocus(index); };
    txt_Baud[i].GotFocus = [this, index] { txt_Baud_GotFocus(index); };
    txt_Parity[i].GotFocus = [this, index] { txt_Parity_GotFocus(index); };
    txt_DataBits[i].GotFocus = [this, index] { txt_DataBits_GotFocus(index); };
    txt_StopBits[i].GotFocus = [this, index] { txt_StopBits_GotFocus(index); };
    cmd_SaveChanges[i].Click = [this, index] { cmd_SaveChanges_Click(index); };
    cmd_OK[i].Click = [this] { cmd_OK_Click(); };
}

} // namespace pelvan
