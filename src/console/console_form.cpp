#include "console/console_form.h"

#include "console/loopback_test.h"
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
      modbus(services, link, modbus_protocol, history), text(services, link, history),
      tellura(services, link, history), setup(services), services_(services), config_(config),
      channels_(channels), link_(link), history_(history) {
    set_help_page("console");
    make_menus();
    make_diagnostics_menu();
    opt_Protocol.Click = [this](int index) { opt_Protocol_Click(index); };
    cmd_SendCommand.Click = [this] { cmd_SendCommand_Click(); };
    chk_GenerateBadChecksum.set_Visible(false);
    chk_GenerateBadChecksum.Click = [this] { show_ticks(); };
    modbus.before_send = [this](std::string& frame) {
        if (chk_GenerateBadChecksum.checked()) spoil_last_byte(frame);
    };
    handle_keys();
    show_panel(opt_Protocol.Value());
}

void frm_Pelvan5VB::make_menus() {
    mnuFile.children = {&mnuSendSetupFile, nullptr, &mnuExit};
    mnuHelp.children = {&mnuHelpContents};
    menus = {&mnuFile, &mnuDiagnostics, &mnuHelp};
    mnuSendSetupFile.Click = [this] { mnuSendSetupFile_Click(); };
    mnuExit.Click = [this] { Unload(); };
    mnuHelpContents.Click = [this] { services_.desktop.show_help(help_page()); };
}

void frm_Pelvan5VB::make_diagnostics_menu() {
    mnuSimulatedJumper.children = {&mnuJumperAsAsked, &mnuJumperIn, &mnuJumperOut};
    for (MenuEntry* entry : mnuSimulatedJumper.children) {
        entry->make_checkable();
        entry->Click = [this, entry] { choose_jumper(*entry); };
    }
    choose_jumper(mnuJumperAsAsked);
    mnuGenbadCS.make_checkable();
    mnuDiagnostics.children = {&mnuverifyport, &mnuGenbadCS, nullptr, &mnuSimulatedJumper};
    for (MenuEntry* entry :
         {&mnuverifyport, &history_.frmCommand.mnuverifyport, &history_.frmResponse.mnuverifyport})
        entry->Click = [this] { mnuverifyport_Click(); };
    for (MenuEntry* entry :
         {&mnuGenbadCS, &history_.frmCommand.mnuGenbadCS, &history_.frmResponse.mnuGenbadCS})
        entry->Click = [this] { mnuGenbadCS_Click(); };
    show_ticks();
}

void frm_Pelvan5VB::handle_keys() {
    for (TextBox* box : {&text.txt_CommsCommand, &text.txt_DeviceAddress, &modbus.txt_Address,
                         &modbus.txt_Register, &modbus.txt_Values, &tellura.TxtTelluraAddress,
                         &tellura.TxtParameterAddress, &tellura.TxtNoBytes, &tellura.TxtData})
        box->KeyDown = [this](Key key) { return handle_key(key); };
    // The arrow keys move within these; Enter sends from here too.
    for (Control* choice : std::initializer_list<Control*>{
             &opt_Protocol, &opt_DataFormat, &modbus.cmb_CommandType, &modbus.opt_NumberBase,
             &tellura.OptReadWrite, &tellura.OptErrorChecking})
        choice->KeyDown = [this](Key key) { return key == Key::Enter && handle_key(key); };
}

void frm_Pelvan5VB::Form_Load() {
    config_.gIniFile = path_in(services_.application_directory, kIniFileName);
    channels_.init_comms();
    text.txt_CommsCommand.set_Text(kInitialCommand);
    const int saved = ini_read_int(ini_key::kCommsSection, ini_key::kDefaultProtocol,
                                   protocol::kModbus, config_.gIniFile);
    // The handler runs also when the option was the designer's choice already.
    if (saved == opt_Protocol.Value())
        opt_Protocol_Click(saved);
    else
        opt_Protocol.set_Value(saved);
}

bool frm_Pelvan5VB::Form_Unload() {
    setup.abandon();
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
    std::string status = "The command ended in an error.";
    struct Show { // also when an error leaves the handler
        Label& label;
        std::string& status;
        ~Show() { label.set_Caption(status); }
    } const show{lbl_Status, status};
    status = send(opt_Protocol.Value()).status;
}

SendOutcome frm_Pelvan5VB::send(int protocol_number) {
    switch (protocol_number) {
    case protocol::kFull:
        return text.send(TextProtocol::Full);
    case protocol::kXon:
        return text.send(TextProtocol::Xon);
    case protocol::kTellura:
        return tellura.send();
    default:
        return modbus.send(static_cast<DataFormat>(opt_DataFormat.Value()));
    }
}

void frm_Pelvan5VB::show_panel(int shown) {
    modbus.set_visible(shown == protocol::kModbus);
    fram_DataFormat.set_Visible(shown == protocol::kModbus);
    opt_DataFormat.set_Visible(shown == protocol::kModbus);
    tellura.set_visible(shown == protocol::kTellura);
    if (shown == protocol::kFull)
        text.show_for(TextProtocol::Full);
    else if (shown == protocol::kXon)
        text.show_for(TextProtocol::Xon);
    else
        text.hide();
    // A setup file's lines are commands of the other protocols.
    mnuSendSetupFile.set_Enabled(shown != protocol::kTellura);
}

void frm_Pelvan5VB::focus_entry() {
    switch (opt_Protocol.Value()) {
    case protocol::kModbus:
        return modbus.txt_Register.SetFocus();
    case protocol::kTellura:
        return tellura.TxtParameterAddress.SetFocus();
    default:
        return text.txt_CommsCommand.SetFocus();
    }
}

void frm_Pelvan5VB::mnuverifyport_Click() {
    verify_port(static_cast<std::int16_t>(opt_Protocol.Value()));
}

bool frm_Pelvan5VB::verify_port(std::int16_t channel) {
    return pelvan::verify_port(services_, link_, history_, *this, channel,
                               [this](bool in) { jumper_asked(in); });
}

void frm_Pelvan5VB::mnuGenbadCS_Click() {
    // A switch that is neither on nor off is left alone.
    if (chk_GenerateBadChecksum.Value() == 1)
        chk_GenerateBadChecksum.set_Value(0);
    else if (chk_GenerateBadChecksum.Value() == 0)
        chk_GenerateBadChecksum.set_Value(1);
}

void frm_Pelvan5VB::show_ticks() {
    for (MenuEntry* entry :
         {&mnuGenbadCS, &history_.frmCommand.mnuGenbadCS, &history_.frmResponse.mnuGenbadCS})
        entry->set_Checked(chk_GenerateBadChecksum.checked());
}

void frm_Pelvan5VB::choose_jumper(const MenuEntry& chosen) {
    for (MenuEntry* entry : mnuSimulatedJumper.children)
        entry->set_Checked(entry == &chosen);
}

void frm_Pelvan5VB::jumper_asked(bool in) {
    if (!move_simulated_jumper) return;
    move_simulated_jumper(mnuJumperAsAsked.Checked() ? in : mnuJumperIn.Checked());
}

void frm_Pelvan5VB::mnuSendSetupFile_Click() {
    if (setup.running()) return;
    set_busy(true);
    struct Free {
        frm_Pelvan5VB& form;
        ~Free() { form.set_busy(false); }
    } const free_again{*this};
    setup.run(line_sender(), [this](const std::string& state) { lbl_Status.set_Caption(state); });
}

/// Sends lines with the protocol, address and format that are chosen now: boxes that are changed
/// while a file is under way do not lead its rest to another controller.
SetupSender::SendLine frm_Pelvan5VB::line_sender() {
    if (opt_Protocol.Value() == protocol::kModbus) {
        const auto format = static_cast<DataFormat>(opt_DataFormat.Value());
        const std::string address = modbus.txt_Address.Text();
        return [this, format, address](const std::string& line) {
            return modbus.send(write_register_entry(address, line), format);
        };
    }
    const auto kind =
        opt_Protocol.Value() == protocol::kFull ? TextProtocol::Full : TextProtocol::Xon;
    const std::string address = text.txt_DeviceAddress.Text();
    return [this, kind, address](const std::string& line) {
        return text.send(kind, {address, line});
    };
}

/// While a setup file is sent nothing else may use the line or rebuild the channels.
void frm_Pelvan5VB::set_busy(bool busy) {
    for (Control* control : std::initializer_list<Control*>{
             &cmd_SendCommand, &opt_Protocol, &mnuSendSetupFile, &mnuverifyport,
             &history_.frmCommand.mnuverifyport, &history_.frmResponse.mnuverifyport})
        control->set_Enabled(!busy);
    if (busy_changed) busy_changed(busy);
}

bool frm_Pelvan5VB::recall_earlier() {
    switch (opt_Protocol.Value()) {
    case protocol::kFull:
        return text.recall_earlier(TextProtocol::Full);
    case protocol::kXon:
        return text.recall_earlier(TextProtocol::Xon);
    case protocol::kTellura:
        return tellura.recall_earlier();
    default:
        return modbus.recall_earlier();
    }
}

bool frm_Pelvan5VB::recall_later() {
    switch (opt_Protocol.Value()) {
    case protocol::kFull:
        return text.recall_later(TextProtocol::Full);
    case protocol::kXon:
        return text.recall_later(TextProtocol::Xon);
    case protocol::kTellura:
        return tellura.recall_later();
    default:
        return modbus.recall_later();
    }
}

bool frm_Pelvan5VB::handle_key(Key key) {
    switch (key) {
    case Key::Enter:
        cmd_SendCommand.press();
        return true;
    case Key::Up:
        return recall_earlier();
    case Key::Down:
        return recall_later();
    case Key::Escape:
        break;
    }
    return false;
}

} // namespace pelvan
