// "Communications Port Settings": the boxes in which the serial settings of the channel are edited
// that belongs to the protocol selected on the console. It holds one frame of fields a protocol and
// shows the selected one's alone.
#pragma once

#include <array>

#include "forms/form.h"
#include "platform/run_time_error.h"
#include "settings/device_picker_panel.h"
#include "settings/exchange_panel.h"
#include "settings/port_settings.h"

namespace pelvan {

/// The windows round the port settings, as whoever joins them implements it.
class SettingsHost {
  public:
    virtual ~SettingsHost() = default;
    /// The protocol selected on the console.
    [[nodiscard]] virtual int selected_protocol() const = 0;
    /// Takes the console and the history windows from the user (true) and gives them back.
    virtual void hold_windows(bool held) = 0;
};

class frm_CommsSettings : public Form {
  public:
    /// One frame a protocol; a frame's index is its protocol's number and its channel's.
    static constexpr int kFrames = 4;
    template <class Kind> using ControlArray = std::array<Kind, kFrames>;

    frm_CommsSettings(Services& services, const ConfigState& config, ChannelTable& channels,
                      SettingsHost& host, DeviceLookup lookup = {});

    ControlArray<Frame> fram_Protocol;
    ControlArray<Label> lbl_Port, lbl_Baud, lbl_Parity, lbl_DataBits, lbl_StopBits;
    ControlArray<TextBox> txt_Port, txt_Baud, txt_Parity, txt_DataBits, txt_StopBits;
    ControlArray<Label> lbl_RTSMode;
    /// The list index is the modem-line mode of the channel, 3 less where it hand-shakes.
    ControlArray<ComboBox> ComboRTSMode;
    ControlArray<Button> cmd_SaveChanges;
    ControlArray<Button> cmd_OK;
    DevicePickerPanel picker;
    ExchangePanel exchange;
    /// What it means that other protocols have the port.
    Label lbl_PortUse{"lbl_PortUse"};
    /// There while a channel before the shown one has no port, so that this one would not come up.
    CheckBox chk_GivePorts{"chk_GivePorts", "",
                           "The channels are used in the order Full, Modbus, Xon, Tellura/AB, up "
                           "to the first one without a port."};

    /// Not in a menu bar: opened by the right mouse button, or by its entry's key.
    MenuEntry Hiddenmenu{"Hiddenmenu", "&Options"};
    MenuEntry LockDataOptionmenu{"LockDataOptionmenu", "&Lock Modbus Data Word Options", "Ctrl+L"};

    void Form_Load() override;
    /// Rebuilds all channels and fills the boxes from the selected protocol's.
    void Form_Activate() override;
    bool Form_Unload() override;

    void txt_Port_Change(int index);
    void txt_Baud_Change(int index) { box_changed(index); }
    void txt_Parity_Change(int index) { box_changed(index); }
    void txt_DataBits_Change(int index) { box_changed(index); }
    void txt_StopBits_Change(int index) { box_changed(index); }
    void txt_Port_GotFocus(int index) { select_whole(txt_Port, index); }
    void txt_Baud_GotFocus(int index) { select_whole(txt_Baud, index); }
    void txt_Parity_GotFocus(int index) { select_whole(txt_Parity, index); }
    void txt_DataBits_GotFocus(int index) { select_whole(txt_DataBits, index); }
    void txt_StopBits_GotFocus(int index) { select_whole(txt_StopBits, index); }
    void cmd_SaveChanges_Click(int index);
    void cmd_OK_Click();
    /// As the save button of the frame that is shown.
    void save_shown() { cmd_SaveChanges[checked_index(shown_, kFrames)].press(); }
    void LockDataOptionmenu_Click();

    /// Whether a box of the frame has been edited since it was filled or saved.
    [[nodiscard]] bool changed(int index) const;

  private:
    void connect_boxes(int index);
    void box_changed(int index);
    void show_use(int index);
    void device_chosen(bool listed);
    void take_number_of_device(int index);
    void show_gap(int index);
    void set_changed(int index, bool changed);
    static void select_whole(ControlArray<TextBox>& boxes, int index);
    void show_frame(int shown);
    /// What the boxes of a frame say.
    [[nodiscard]] PortFields typed_fields(int index) const;
    void fill_frame(int index);
    void show_device(int index);
    void focus_wrong(int index, const std::vector<PortField>& wrong);
    [[nodiscard]] std::vector<std::string> objections(const PortFields& typed) const;
    /// Whether the channels that are missing before this one get ports.
    [[nodiscard]] bool wants_missing(int index, const std::vector<int>& missing);
    /// False when they were wanted and could not be written.
    [[nodiscard]] bool add_missing_channels(int index);
    bool say_unless(bool written, const char* what);

    Services& services_;
    const ConfigState& config_;
    SettingsHost& host_;
    PortSettings settings_;
    std::array<bool, kFrames> changed_{};
    int shown_ = 0; // frame
    Subscription device_chosen_ =
        picker.chosen.subscribe([this](bool listed) { device_chosen(listed); });
};

} // namespace pelvan
