#include "badrequests/bad_requests_form.h"

#include <array>

#include "badrequests/report.h"
#include "platform/run_time_error.h"
#include "serial/errors.h"
#include "text/numbers.h"
#include "text/strings.h"

namespace pelvan {
namespace {

constexpr double kMsPerSecond = 1000;
constexpr std::size_t kShownBytes = 40; // of a column; the report has all
constexpr char kNothingYet[] =
    "Nothing was sent yet. The requests only read; a confirmation is asked for.";

/// What stands at the box of that which is read, by protocol.
struct ReadBox {
    const char* caption;
    const char* tool_tip;
};

constexpr char kCommandTip[] = "A command that reads, such as ? C1.";
constexpr std::array<ReadBox, 4> kReadBoxes{
    {{"Comman&d", kCommandTip},
     {"Re&gister", "A register that the controller has, 0 to 65535."},
     {"Comman&d", kCommandTip},
     {"Para&meter", "A parameter address that the controller has, four hexadecimal digits."}}};

} // namespace

/// The window while a series runs, put back however it ends.
class frm_BadRequests::Running {
  public:
    explicit Running(frm_BadRequests& form) : form_(form) {
        form_.running_ = true;
        form_.canceled_ = false;
        form_.close_when_done_ = false;
        form_.lst_Lines.Clear();
        form_.show_state();
        form_.cmdCancel.SetFocus();
    }
    Running(const Running&) = delete;
    Running& operator=(const Running&) = delete;
    ~Running() {
        form_.running_ = false;
        form_.ProgressBar1.set_Value(0);
        form_.show_state();
        if (form_.lst_Lines.ListCount() > 0) form_.lst_Lines.SetFocus();
    }

  private:
    frm_BadRequests& form_;
};

frm_BadRequests::frm_BadRequests(Services& services, MessageRouter& messages, Link& link,
                                 std::function<int()> selected_protocol)
    : Form("frm_BadRequests", "Bad Requests"),
      cmb_Protocol("cmb_BadProtocol", {"Full", "Modbus", "Xon", "Tellura/AB"}, 1, false,
                   "The protocol, and with it the port."),
      cmb_Check("cmb_BadCheck", {"BCC", "CRC"}, 0, false, "As the controller is set."),
      services_(services), link_(link), run_(link, messages, *this),
      selected_protocol_(std::move(selected_protocol)),
      line_use_(link.channels().line_use().changed.subscribe([this] { show_state(); })) {
    set_help_page("bad_requests");
    mnuFile.children = {&mnuSave, nullptr, &mnuClose};
    mnuHelp.children = {&mnuHelpContents};
    menus = {&mnuFile, &mnuHelp};
    connect_controls();
    choose_protocol();
    lbl_Status.set_Caption(kNothingYet);
    show_state();
}

void frm_BadRequests::connect_controls() {
    cmb_Protocol.Click = [this] { choose_protocol(); };
    cmdStart.Click = [this] { cmdStart_Click(); };
    cmdCancel.Click = [this] { cancel(); };
    for (std::function<void()>* save : {&cmdSave.Click, &mnuSave.Click})
        *save = [this] { cmdSave_Click(); };
    mnuClose.Click = [this] { Unload(); };
    mnuHelpContents.Click = [this] { services_.desktop.show_help(help_page()); };
    for (TextBox* box : {&txt_Address, &txt_Read, &txt_Other, &txt_Wait})
        box->GotFocus = [box] { box->select_all(); };
    for (Control* control : std::initializer_list<Control*>{&txt_Address, &txt_Read, &txt_Other,
                                                            &txt_Wait, &cmb_Protocol, &cmb_Check})
        control->KeyDown = [this](Key key) {
            if (key == Key::Enter) cmdStart.press();
            return key == Key::Enter;
        };
    for (Control* control : std::initializer_list<Control*>{&cmdCancel, &lst_Lines})
        control->KeyDown = [this](Key key) {
            if (key != Key::Escape || !running_) return false;
            cancel();
            return true;
        };
}

void frm_BadRequests::Form_Load() {
    cmb_Protocol.set_ListIndex(selected_protocol_());
}

/// Each protocol begins with what its controllers have.
void frm_BadRequests::choose_protocol() {
    const int protocol = cmb_Protocol.ListIndex();
    const BadRequestOptions first = default_options(protocol);
    const ReadBox& box = kReadBoxes[checked_index(protocol, kReadBoxes.size())];
    lbl_Read.set_Caption(box.caption);
    txt_Read.set_ToolTipText(box.tool_tip);
    txt_Read.set_Text(first.read);
    txt_Address.set_Text(first.address);
    txt_Other.set_Text(first.other_address);
    const bool has_address = protocol != 2;
    for (Control* control :
         std::initializer_list<Control*>{&lbl_Address, &txt_Address, &lbl_Other, &txt_Other})
        control->set_Visible(has_address);
    for (Control* control : std::initializer_list<Control*>{&lbl_Check, &cmb_Check})
        control->set_Visible(protocol == 3);
}

BadRequestOptions frm_BadRequests::options() const {
    BadRequestOptions chosen;
    chosen.protocol = cmb_Protocol.ListIndex();
    chosen.address = trim(txt_Address.Text());
    chosen.read = trim(txt_Read.Text());
    chosen.other_address = trim(txt_Other.Text());
    chosen.check = cmb_Check.ListIndex() == 1 ? TelluraCheck::Crc : TelluraCheck::Bcc;
    chosen.wait_ms =
        is_numeric(txt_Wait.Text()) ? leading_number(txt_Wait.Text()) * kMsPerSecond : 0;
    return chosen;
}

/// Then to the box that was refused, its text selected: what is typed next replaces it.
void frm_BadRequests::show_refusal(const std::string& refusal) {
    services_.dialogs.message_box(refusal, {}, MessageButtons::Ok, MessageIcon::Exclamation);
    const std::pair<const char*, TextBox*> boxes[] = {
        {"The address", &txt_Address}, {"The register", &txt_Read},  {"The command", &txt_Read},
        {"The parameter", &txt_Read},  {"The other ad", &txt_Other}, {"The time", &txt_Wait}};
    for (const auto& [beginning, box] : boxes) {
        if (!refusal.starts_with(beginning)) continue;
        box->SetFocus();
        box->select_all();
    }
}

/// A wrong box is told before anything is asked.
bool frm_BadRequests::confirmed(const BadRequestOptions& chosen) {
    std::string refusal = link_.refusal();
    const auto series =
        refusal.empty() ? make_series(chosen, link_, services_.dialogs, refusal) : nullptr;
    if (!series) {
        show_refusal(refusal);
        return false;
    }
    return services_.dialogs.message_box(confirmation(*series), {},
                                         MessageButtons::YesNoPreferNo) == MessageAnswer::Yes;
}

void frm_BadRequests::cmdStart_Click() {
    const BadRequestOptions chosen = options();
    if (running_ || !confirmed(chosen)) return;
    begun_ = services_.clock.now();
    {
        const Running running(*this);
        result_ = run_.run(chosen);
        lbl_Status.set_Caption(report_sum(result_));
    }
    if (close_when_done_) Unload();
    ended.raise();
}

void frm_BadRequests::cmdSave_Click() {
    if (running_ || result_.lines.empty()) return;
    FileDialogRequest request;
    request.title = "Save Report";
    request.filter = "Text Files (*.txt)|*.txt|All Files (*.*)|*.*|";
    request.file_name = "Bad Requests.txt";
    request.default_extension = "txt";
    request.overwrite_prompt = true;
    request.refuse_read_only = true;
    const auto path = services_.dialogs.save_file(request);
    if (path) save_report(result_, begun_, *path);
}

void frm_BadRequests::cancel() {
    canceled_ = canceled_ || running_;
}

bool frm_BadRequests::Form_Unload() {
    cancel();
    close_when_done_ = running_;
    return !running_;
}

void frm_BadRequests::show_state() {
    for (Control* control : std::initializer_list<Control*>{
             &cmb_Protocol, &txt_Address, &txt_Read, &txt_Other, &cmb_Check, &txt_Wait, &cmdStart})
        control->set_Enabled(!running_);
    cmdStart.hold(running_ ? std::string() : link_.refusal());
    cmdCancel.set_Enabled(running_);
    const bool has_report = !running_ && !result_.lines.empty();
    cmdSave.set_Enabled(has_report);
    mnuSave.set_Enabled(has_report);
}

void frm_BadRequests::sending(int number, int of, const std::string& name) {
    ProgressBar1.set_Max(of);
    ProgressBar1.set_Value(number - 1);
    lbl_Status.set_Caption(std::to_string(number) + " of " + std::to_string(of) + ": " + name);
}

void frm_BadRequests::listed(const BadRequestLine& line) {
    lst_Lines.AddItem(line.name + "\t" + shortened(line.sent, kShownBytes) + "\t" + line.expected +
                      "\t" + shortened(line.answer, kShownBytes) + "\t" + line.verdict_text());
    lst_Lines.set_ListIndex(lst_Lines.ListCount() - 1);
}

bool frm_BadRequests::go_on() {
    services_.desktop.let_events_run();
    return !canceled_;
}

std::vector<std::string> frm_BadRequests::column_titles() {
    return {"Request", "Sent", "Expected", "Came", "Verdict"};
}

std::vector<std::string> frm_BadRequests::columns_of(const std::string& line) {
    std::vector<std::string> columns = split(line, '\t');
    columns.resize(column_titles().size());
    return columns;
}

} // namespace pelvan
