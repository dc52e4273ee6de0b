#include "console/console_form.h"

#include "platform/run_time_error.h"
#include "platform/text_file.h"

namespace pelvan {
namespace {

constexpr char kIniFileName[] = "pelvan7.ini";
constexpr char kInitialCommand[] = "? C1";

} // namespace

frm_Pelvan5VB::frm_Pelvan5VB(Services& services, ConfigState& config, ChannelTable& channels,
                             Link& link, Modbus& modbus_protocol, History& history)
    : Form("frm_Pelvan5VB", "Command Center"),
      opt_Protocol("opt_Protocol",
                   {{"Full", "ANSI X3.28 \"Full\" protocol."},
                    {"Modbus", "Modbus RTU."},
                    {"Xon", "Xon/Xoff ASCII protocol."},
                    {"Tellura", "Tellura/AB protocol."}},
                   protocol::kModbus),
      opt_DataFormat("opt_DataFormat",
                     {{"Decimal", "Complete packets as decimal numbers."},
                      {"Hex", "Complete packets as hexadecimal numbers."},
                      {"SmartDec", "Only the pertinent information, as decimal numbers."}},
                     0),
      modbus(services, link, modbus_protocol, history), services_(services), config_(config),
      channels_(channels) {
    set_help_page("console");
    mnuFile.children = {&mnuExit};
    mnuHelp.children = {&mnuHelpContents};
    menus = {&mnuFile, &mnuHelp};
    mnuExit.Click = [this] { Unload(); };
    mnuHelpContents.Click = [this] { services_.desktop.show_help(help_page()); };
    opt_Protocol.Click = [this](int index) { opt_Protocol_Click(index); };
    cmd_SendCommand.Click = [this] { cmd_SendCommand_Click(); };
    for (TextBox* box :
         {&txt_CommsCommand, &modbus.txt_Address, &modbus.txt_Register, &modbus.txt_Values})
        box->KeyDown = [this](Key key) { return handle_key(key); };
    show_panel(opt_Protocol.Value());
}

void frm_Pelvan5VB::Form_Load() {
    config_.gIniFile = path_in(services_.application_directory, kIniFileName);
    channels_.init_comms();
    txt_CommsCommand.set_Text(kInitialCommand);
    const int saved = ini_read_int(ini_key::kCommsSection, ini_key::kDefaultProtocol,
                                   protocol::kModbus, config_.gIniFile);
    // The handler runs also when the option was the designer's choice already.
    if (saved == opt_Protocol.Value())
        opt_Protocol_Click(saved);
    else
        opt_Protocol.set_Value(saved);
}

bool frm_Pelvan5VB::Form_Unload() {
    if (end_program) end_program();
    return true;
}

void frm_Pelvan5VB::opt_Protocol_Click(int index) {
    show_panel(index);
    // Rebuilt first: every port is closed before the choice is written.
    channels_.init_comms();
    ini_write_string(ini_key::kCommsSection, ini_key::kDefaultProtocol, std::to_string(index),
                     config_.gIniFile);
}

void frm_Pelvan5VB::cmd_SendCommand_Click() {
    const Hourglass busy(*this);
    lbl_Status.set_Caption("Sending ...");
    lbl_Status.set_Caption(modbus.send(static_cast<DataFormat>(opt_DataFormat.Value())).status);
}

void frm_Pelvan5VB::show_panel(int shown) {
    modbus.set_visible(shown == protocol::kModbus);
    fram_DataFormat.set_Visible(shown == protocol::kModbus);
    txt_CommsCommand.set_Visible(shown == protocol::kFull || shown == protocol::kXon);
}

bool frm_Pelvan5VB::handle_key(Key key) {
    switch (key) {
    case Key::Enter:
        cmd_SendCommand.press();
        return true;
    case Key::Up:
        return modbus.recall_earlier();
    case Key::Down:
        return modbus.recall_later();
    case Key::Escape:
        break;
    }
    return false;
}

} // namespace pelvan
