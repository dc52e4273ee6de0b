#include "console/console_form.h"

#include "config/application_directory.h"
#include "console/loopback_test.h"
#include "console/start_up.h"
#include "platform/deferred_error.h"

namespace pelvan {
namespace {

constexpr char kInitialCommand[] = "? C1";

} // namespace

frm_Pelvan5VB::frm_Pelvan5VB(Services& services, ConfigState& config, ChannelTable& channels,
                             Link& link, Senders& senders, History& history, Repeat& repeat_engine)
    : Form("frm_Pelvan5VB", "Command Center"),
      opt_Protocol("opt_Protocol",
                   {{protocol::name(protocol::kFull), "ANSI X3.28 \"Full\" protocol."},
                    {protocol::name(protocol::kModbus), "Modbus RTU."},
                    {protocol::name(protocol::kXon), "Xon/Xoff ASCII protocol."},
                    {protocol::name(protocol::kTellura), "Tellura/AB protocol."}},
                   protocol::kModbus),
      modbus(senders.modbus, chk_GenerateBadChecksum), text(senders.text), tellura(senders.tellura),
      script(services, lbl_Status), repeat(services, repeat_engine, history, lbl_Status),
      services_(services), config_(config), channels_(channels), link_(link),
      history_(history), panels_{&text.full(), &modbus, &text.xon(), &tellura} {
    set_help_page("console");
    make_menus();
    make_diagnostics_menu();
    opt_Protocol.Click = [this](int index) { opt_Protocol_Click(index); };
    cmd_SendCommand.Click = [this] { cmd_SendCommand_Click(); };
    chk_GenerateBadChecksum.set_Visible(false);
    chk_GenerateBadChecksum.Click = [this] { show_ticks(); };
    handle_keys();
    connect_repeat();
    show_panel();
}

void frm_Pelvan5VB::make_menus() {
    mnuFile.children = {&mnuSendSetupFile, &repeat.mnuRepeat, nullptr, &mnuExit};
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
    mnuSimulatedJumper.set_Visible(false); // until there is one
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
             &opt_Protocol, &modbus.opt_DataFormat, &modbus.cmb_CommandType, &modbus.opt_NumberBase,
             &tellura.OptReadWrite, &tellura.OptErrorChecking})
        choice->KeyDown = [this](Key key) {
            return (key == Key::Enter || key == Key::Escape) && handle_key(key);
        };
}

void frm_Pelvan5VB::connect_repeat() {
    repeat.command = [this] { return panel().sender_of(panel().command()); };
    // In a box of an exchange, and while the port settings are open, nothing goes out.
    repeat.occupied = [this] { return sending_ || !Enabled(); };
    repeat.refused = [this](const std::string& refusal) { show_refusal(refusal); };
    repeat.txt_RepeatInterval.KeyDown = [this](Key key) {
        if (key != Key::Enter) return key == Key::Escape && handle_key(key);
        repeat.cmd_Repeat.press();
        return true;
    };
}

void frm_Pelvan5VB::Form_Load() {
    // Four channels work also when the file has a fifth, so that its error waits for the rest.
    DeferredError error;
    if (const std::string fault = configuration_fault(services_.application_directory);
        !fault.empty())
        services_.dialogs.message_box(fault);
    error.run([&] { start_session(config_, channels_, services_.application_directory); });
    text.txt_CommsCommand.set_Text(kInitialCommand);
    const int saved = saved_protocol(config_);
    // The handler runs also when the option was the designer's choice already.
    error.run([&] {
        if (saved == opt_Protocol.Value())
            opt_Protocol_Click(saved);
        else
            opt_Protocol.set_Value(saved);
    });
    error.raise();
}

bool frm_Pelvan5VB::Form_Unload() {
    script.abandon();
    repeat.stop();
    closed.raise();
    return true;
}

void frm_Pelvan5VB::opt_Protocol_Click(int index) {
    show_panel();
    // Rebuilt first: every port is closed before the choice is written.
    DeferredError error;
    error.run([&] { channels_.init_comms(); });
    ini_write_string(ini_key::kCommsSection, ini_key::kDefaultProtocol, std::to_string(index),
                     config_.gIniFile);
    error.raise();
}

void frm_Pelvan5VB::cmd_SendCommand_Click() {
    send_with([this] { return panel().send(); });
}

void frm_Pelvan5VB::send_with(const SendOnce& send) {
    const Hourglass busy(*this);
    const Subscription sending = link_.sending.subscribe([this] {
        lbl_Status.set_Caption("Sending ...");
        lbl_Status.Refresh(); // nothing is painted while the reply is awaited
    });
    std::string status = "The command ended in an error.";
    struct Show { // also when an error leaves the handler
        Label& label;
        std::string& status;
        ~Show() { label.set_Caption(status); }
    } const show{lbl_Status, status};
    sending_ = true;
    const ScopeGuard sent([this] { sending_ = false; });
    const SendOutcome outcome = listed(send());
    status = outcome.status;
    if (!outcome.refusal.empty()) show_refusal(outcome.refusal);
}

/// A line of the history comes back into the fields, which may be another protocol's.
void frm_Pelvan5VB::recall(const CommandEntry& command) {
    if (command.protocol != opt_Protocol.Value()) {
        if (line_refused()) return;
        opt_Protocol.set_Value(command.protocol);
    }
    panel().put(command);
    Show();
    focus_entry();
}

/// The fields stay as they are, and so does the chosen protocol.
void frm_Pelvan5VB::send_again(const CommandEntry& command) {
    if (line_refused()) return;
    ProtocolPanel& its_panel = *panels_.at(static_cast<std::size_t>(command.protocol));
    if (const SendOnce send = its_panel.sender_of(command)) send_with(send);
}

/// Then to the box that was refused, its text selected: what is typed next replaces it.
void frm_Pelvan5VB::show_refusal(const std::string& refusal) {
    services_.dialogs.message_box(refusal);
    TextBox* const box = panel().refused_box(refusal);
    if (box == nullptr) return;
    box->SetFocus();
    box->select_all();
}

/// Puts what was exchanged into the history.
SendOutcome frm_Pelvan5VB::listed(SendOutcome outcome) {
    if (outcome.row) history_.add(*outcome.row);
    return outcome;
}

void frm_Pelvan5VB::show_panel() {
    // Shown first: fields that both protocols have need not go and come back.
    panel().show();
    for (ProtocolPanel* each : panels_)
        if (each != &panel()) each->hide();
    mnuSendSetupFile.set_Enabled(static_cast<bool>(panel().script_sender()));
}

void frm_Pelvan5VB::focus_entry() {
    panel().focus();
}

/// The loop-back test in message boxes, its exchanges in the history, the hourglass during each.
class frm_Pelvan5VB::LoopbackRun : public LoopbackListener {
  public:
    explicit LoopbackRun(frm_Pelvan5VB& form) : form_(form) {}
    void message(const char* words, const char* title) override {
        form_.services_.dialogs.message_box(words, title);
    }
    void jumper_expected(bool in) override { form_.jumper_asked(in); }
    void sending() override { busy_.emplace(form_); }
    void exchanged(const HistoryRow& row) override {
        HistoryRow listed = row;
        listed.entry.protocol = form_.opt_Protocol.Value();
        form_.history_.add(listed);
        busy_.reset();
    }

  private:
    frm_Pelvan5VB& form_;
    std::optional<Hourglass> busy_;
};

void frm_Pelvan5VB::mnuverifyport_Click() {
    LoopbackRun run(*this);
    const auto channel = static_cast<std::int16_t>(opt_Protocol.Value());
    const LoopbackResult result = verify_port(link_, services_.clock, channel, run);
    if (result == LoopbackResult::EchoesWithoutJumper)
        offer_echo(config_, channels_, channel, services_.dialogs);
}

void frm_Pelvan5VB::ask_controller(int protocol, int address, bool crc) {
    const std::string typed = std::to_string(address);
    if (protocol == protocol::kFull) text.txt_DeviceAddress.set_Text(typed);
    if (protocol == protocol::kModbus) modbus.txt_Address.set_Text(typed);
    if (protocol != protocol::kTellura) return;
    tellura.TxtTelluraAddress.set_Text(typed);
    tellura.OptErrorChecking.set_Value(crc ? 1 : 0);
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
    simulated_jumper_moved.raise(mnuJumperAsAsked.Checked() ? in : mnuJumperIn.Checked());
}

void frm_Pelvan5VB::mnuSendSetupFile_Click() {
    if (script.running()) return;
    const LineClaim claim = link_.claim();
    if (!claim && line_refused()) return;
    script.run([this, send_line = panel().script_sender()](const std::string& line) {
        return listed(send_line(line));
    });
}

/// While a tool has claimed the lines, this one's script too, nothing else may be sent from here or
/// rebuild the channels.
void frm_Pelvan5VB::hold_controls() {
    const std::string holder = channels_.line_use().refusal(nullptr);
    for (Control* control : std::initializer_list<Control*>{
             &cmd_SendCommand, &opt_Protocol, &mnuSendSetupFile, &mnuverifyport,
             &history_.frmCommand.mnuverifyport, &history_.frmResponse.mnuverifyport})
        control->hold(holder);
    repeat.hold(holder);
}

/// Says who has the line, this window's own script or test too; false when nobody has.
bool frm_Pelvan5VB::line_refused() {
    const std::string refusal = channels_.line_use().refusal(nullptr);
    if (!refusal.empty()) services_.dialogs.message_box(refusal);
    return !refusal.empty();
}

bool frm_Pelvan5VB::handle_key(Key key) {
    switch (key) {
    case Key::Enter:
        cmd_SendCommand.press();
        return true;
    // Taken also at the end of the list: what is left to the front end may move the focus.
    case Key::Up:
        panel().recall_earlier();
        return true;
    case Key::Down:
        panel().recall_later();
        return true;
    case Key::Escape:
        if (!repeat.running()) break;
        repeat.stop();
        return true;
    }
    return false;
}

} // namespace pelvan
