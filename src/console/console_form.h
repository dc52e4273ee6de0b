// The console, "Command Center": the choice of the protocol, the fields of the chosen one, and the
// sending. Each protocol's fields and exchange are a panel of their own.
#pragma once

#include "config/ini.h"
#include "console/modbus_panel.h"
#include "serial/channel_table.h"

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
    /// The command text of the Full and Xon protocols.
    TextBox txt_CommsCommand{"txt_CommsCommand", "", "Command text: ? reads, = writes."};
    Button cmd_SendCommand{"cmd_SendCommand", "Se&nd Command", "Send the command (Enter)."};
    Label lbl_Status{"lbl_Status"};
    ModbusPanel modbus;

    MenuEntry mnuFile{"mnuFile", "&File"};
    MenuEntry mnuExit{"mnuExit", "E&xit", "Ctrl+Q", "End the program."};
    MenuEntry mnuHelp{"mnuHelp", "&Help"};
    MenuEntry mnuHelpContents{"mnuHelpContents", "&Contents", "F1"};

    /// Locates the configuration file, builds the channels, selects the saved protocol.
    void Form_Load() override;
    /// Closing the console ends the program at once: no questions, no saving.
    bool Form_Unload() override;

    void opt_Protocol_Click(int index);
    void cmd_SendCommand_Click();

    /// Called when the console has been closed.
    std::function<void()> end_program;

  private:
    void show_panel(int protocol);
    bool handle_key(Key key);

    Services& services_;
    ConfigState& config_;
    ChannelTable& channels_;
};

} // namespace pelvan
