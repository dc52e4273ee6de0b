// The console, "Command Center": the choice of the protocol, the fields of the chosen one, and the
// sending. Each protocol's fields and exchange are a panel of their own.
#pragma once

#include "config/ini.h"
#include "console/modbus_panel.h"
#include "console/setup_sender.h"
#include "console/tellura_panel.h"
#include "console/text_panel.h"
#include "serial/channel_table.h"
#include "serial/link.h"

namespace pelvan {

namespace protocol {
inline constexpr int kFull = 0;
inline constexpr int kModbus = 1;
inline constexpr int kXon = 2;
inline constexpr int kTellura = 3;
} // namespace protocol

class frm_Pelvan5VB : public Form {
  public:
    frm_Pelvan5VB(Services& services, ConfigState& config, ChannelTable& channels, Link& link,
                  Modbus& modbus, History& history);

    Frame fram_Protocol{"fram_Protocol", "&Protocol"};
    OptionGroup opt_Protocol;
    Frame fram_DataFormat{"fram_DataFormat", "Data F&ormat"};
    OptionGroup opt_DataFormat;
    /// The switch of the bad checksums; never shown, the menus' ticks follow it.
    CheckBox chk_GenerateBadChecksum{"chk_GenerateBadChecksum", "Generate Bad Checksum"};
    Button cmd_SendCommand{"cmd_SendCommand", "Se&nd Command", "Send the command (Enter)."};
    Label lbl_Status{"lbl_Status"};
    ModbusPanel modbus;
    TextPanel text;
    TelluraPanel tellura;
    SetupSender setup;

    MenuEntry mnuFile{"mnuFile", "&File"};
    MenuEntry mnuSendSetupFile{"mnuSendSetupFile", "Send Set&up File...", "Ctrl+Shift+O",
                               "Send a text file of commands, one a line."};
    MenuEntry mnuExit{"mnuExit", "E&xit", "Ctrl+Q", "End the program."};
    MenuEntry mnuDiagnostics{"mnuDiagnostics", diagnostics_text::kMenu};
    MenuEntry mnuverifyport{"mnuverifyport", diagnostics_text::kVerifyPort, "",
                            diagnostics_text::kVerifyPortTip};
    MenuEntry mnuGenbadCS{"mnuGenbadCS", diagnostics_text::kBadChecksum, "",
                          diagnostics_text::kBadChecksumTip};
    /// What happens to the jumper of a simulated loop-back plug when a message asks for it.
    MenuEntry mnuSimulatedJumper{"mnuSimulatedJumper", "Simulated &Jumper", "",
                                 "For ports that stand for simulated:loopback."};
    MenuEntry mnuJumperAsAsked{"mnuJumperAsAsked", "Moved as the &Messages Ask"};
    MenuEntry mnuJumperIn{"mnuJumperIn", "Always &In"};
    MenuEntry mnuJumperOut{"mnuJumperOut", "Always &Out"};
    MenuEntry mnuHelp{"mnuHelp", "&Help"};
    MenuEntry mnuHelpContents{"mnuHelpContents", "&Contents"};

    /// Locates the configuration file, builds the channels, selects the saved protocol.
    void Form_Load() override;
    /// Closing the console ends the program at once: no questions, no saving.
    bool Form_Unload() override;

    void opt_Protocol_Click(int index);
    void cmd_SendCommand_Click();
    void mnuverifyport_Click();
    void mnuGenbadCS_Click();
    void mnuSendSetupFile_Click();

    /// Sends what stands in the fields of a protocol, whichever is shown.
    SendOutcome send(int protocol_number);

    /// The loop-back test on a channel; true when it passed.
    bool verify_port(std::int16_t channel);

    /// Puts the focus into the box that a command of the chosen protocol begins with.
    void focus_entry();

    /// Called when the console has been closed.
    std::function<void()> end_program;
    /// Called when the sending of a setup file begins and ends.
    std::function<void(bool busy)> busy_changed;
    /// Moves the jumper of the simulated loop-back plug.
    std::function<void(bool in)> move_simulated_jumper;

  private:
    void make_menus();
    void make_diagnostics_menu();
    void handle_keys();
    void show_panel(int protocol);
    void show_ticks();
    void choose_jumper(const MenuEntry& chosen);
    void jumper_asked(bool in);
    void set_busy(bool busy);
    bool handle_key(Key key);
    bool recall_earlier();
    bool recall_later();
    [[nodiscard]] SetupSender::SendLine line_sender();

    Services& services_;
    ConfigState& config_;
    ChannelTable& channels_;
    Link& link_;
    History& history_;
};

} // namespace pelvan
