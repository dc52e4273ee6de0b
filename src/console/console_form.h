// The console, "Command Center": the choice of the protocol, the fields of the chosen one, and the
// sending. Each protocol's fields are a panel of their own; the exchanges are the senders'.
#pragma once

#include <array>

#include "config/ini.h"
#include "console/history_form.h"
#include "console/modbus_panel.h"
#include "console/protocol_number.h"
#include "console/repeat_panel.h"
#include "console/script_panel.h"
#include "console/senders.h"
#include "console/tellura_panel.h"
#include "console/text_panel.h"
#include "platform/event.h"
#include "serial/channel_table.h"
#include "serial/link.h"

namespace pelvan {

class frm_Pelvan5VB : public Form {
  public:
    frm_Pelvan5VB(Services& services, ConfigState& config, ChannelTable& channels, Link& link,
                  Senders& senders, History& history, Repeat& repeat_engine);

    Frame fram_Protocol{"fram_Protocol", "&Protocol"};
    OptionGroup opt_Protocol;
    /// The switch of the bad checksums; never shown, the menus' ticks follow it.
    CheckBox chk_GenerateBadChecksum{"chk_GenerateBadChecksum", "Generate Bad Checksum"};
    Button cmd_SendCommand{"cmd_SendCommand", "Se&nd Command", "Send the command (Enter)."};
    Label lbl_Status{"lbl_Status"};
    ModbusPanel modbus;
    TextPanel text;
    TelluraPanel tellura;
    ScriptPanel script;
    RepeatPanel repeat;

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
    /// A key that closes every other window is pressed too easily for the end of the program.
    [[nodiscard]] bool closes_by_key() const override { return false; }

    void opt_Protocol_Click(int index);
    void cmd_SendCommand_Click();
    void mnuverifyport_Click();
    void mnuGenbadCS_Click();
    void mnuSendSetupFile_Click();

    /// Puts the focus into the box that a command of the chosen protocol begins with.
    void focus_entry();

    /// Puts the address of a controller, and for Tellura/AB the check of its packets, into the
    /// protocol's fields; the rest of them stays.
    void ask_controller(int protocol, int address, bool crc);

    /// The console has been closed.
    Event<> closed;
    /// The jumper of the simulated loop-back plug goes in (true) or out.
    Event<bool> simulated_jumper_moved;

  private:
    class LoopbackRun;

    void make_menus();
    void make_diagnostics_menu();
    void handle_keys();
    void connect_repeat();
    [[nodiscard]] ProtocolPanel& panel() {
        return *panels_[static_cast<std::size_t>(opt_Protocol.Value())];
    }
    void show_panel();
    SendOutcome listed(SendOutcome outcome);
    void show_ticks();
    void choose_jumper(const MenuEntry& chosen);
    void jumper_asked(bool in);
    void hold_controls();
    bool line_refused();
    bool handle_key(Key key);
    void show_refusal(const std::string& refusal);
    void send_with(const SendOnce& send);
    void recall(const CommandEntry& command);
    void send_again(const CommandEntry& command);

    Services& services_;
    ConfigState& config_;
    ChannelTable& channels_;
    Link& link_;
    History& history_;
    std::array<ProtocolPanel*, protocol::kCount> panels_; // by protocol number
    bool sending_ = false;
    Subscription recalls_ = history_.recall_requested.subscribe(
        [this](const CommandEntry& command) { recall(command); });
    Subscription repetitions_ = history_.send_again_requested.subscribe(
        [this](const CommandEntry& command) { send_again(command); });
    Subscription line_use_ = channels_.line_use().changed.subscribe([this] { hold_controls(); });
};

} // namespace pelvan
