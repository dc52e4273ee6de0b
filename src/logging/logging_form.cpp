#include "logging/logging_form.h"

#include "platform/text_file.h"
#include "text/numbers.h"

namespace pelvan {
namespace {

constexpr std::size_t kHours = 0;
constexpr std::size_t kMinutes = 1;
constexpr std::size_t kSeconds = 2;
constexpr int kMaxHours = 99;
constexpr int kMaxSixtieths = 59;
constexpr std::int32_t kNotInUse = -1;

constexpr char kLoadLogFile[] = "LOG.DAT";
constexpr char kActivateLogFile[] = "PELVAN7_LOG.txt";
constexpr char kDefaultSetFile[] = "CNTRLSET.PV5";
constexpr char kExtension[] = "PV5";
constexpr char kSetKind[] = "set";
constexpr char kFilter[] = "Log Sets (*.PV5)|*.PV5|All Files (*.*)|*.*|";

} // namespace

frm_DataLogging::frm_DataLogging(Services& services, DataLogger& logger)
    : Form("frm_DataLogging", "Data Logging"),
      scrl_LoggingInterval{
          ScrollBar("scrl_LoggingInterval(0)", kMaxHours, 0, 0,
                    "Click on the up/down arrows to adjust the logging timer interval Hours."),
          ScrollBar("scrl_LoggingInterval(1)", kMaxSixtieths, 0, 0,
                    "Click on the up/down arrows to adjust the logging timer interval Minutes."),
          ScrollBar("scrl_LoggingInterval(2)", kMaxSixtieths, 0, kDefaultLogInterval,
                    "Click on the up/down arrows to adjust the logging timer interval seconds.")},
      txt_LoggingInterval{TextBox("txt_LoggingInterval(0)"), TextBox("txt_LoggingInterval(1)"),
                          TextBox("txt_LoggingInterval(2)")},
      lbl_LoggingInterval{Label("lbl_LoggingInterval(0)", "Hours"),
                          Label("lbl_LoggingInterval(1)", "   Min"),
                          Label("lbl_LoggingInterval(2)", "  Sec")},
      services_(services), logger_(logger) {
    set_help_page("logging");
    for (TextBox& box : txt_LoggingInterval)
        box.set_Locked(true);
    add_menus();
    wire_events();
    follow_logger();
    show_set();
    chk_LogToFile_Click();
    chk_SingleLine_Click();
    show_active(false);
}

void frm_DataLogging::add_menus() {
    mnuFileOptions.children = {&mnuLogtoFile.make_checkable(), &mnuSingleLine.make_checkable()};
    mnuFile.children = {&mnuFileOptions, nullptr, &mnuLoadSet, &mnuSaveSet, nullptr, &mnuClose};
    mnuLogging.children = {&mnuStartLogging, &mnuStopLogging, nullptr, &mnuTrend};
    mnuHelp.children = {&mnuHelpContents, &mnuIndexHelp};
    menus = {&mnuFile, &mnuLogging, &mnuHelp};
}

void frm_DataLogging::wire_events() {
    for (int i = 0; i < 3; ++i) {
        const auto index = static_cast<std::size_t>(i);
        scrl_LoggingInterval[index].Change = [this, i] { scrl_LoggingInterval_Change(i); };
        txt_LoggingInterval[index].GotFocus = [this, i] { txt_LoggingInterval_GotFocus(i); };
    }
    txt_LogFilename.Change = [this] { txt_LogFilename_Change(); };
    txt_LogFilename.GotFocus = [this] { txt_LogFilename_GotFocus(); };
    chk_LogToFile.Click = [this] { chk_LogToFile_Click(); };
    chk_SingleLine.Click = [this] { chk_SingleLine_Click(); };
    MSFlexGrid1.MouseUp = [this](bool left) { MSFlexGrid1_MouseUp(left); };
    mnuLogtoFile.Click = [this] { mnuLogtoFile_Click(); };
    mnuSingleLine.Click = [this] { mnuSingleLine_Click(); };
    mnuLoadSet.Click = [this] { mnuLoadSet_Click(); };
    mnuSaveSet.Click = [this] { mnuSaveSet_Click(); };
    mnuClose.Click = [this] { mnuClose_Click(); };
    mnuStartLogging.Click = [this] { mnuStartLogging_Click(); };
    mnuStopLogging.Click = [this] { mnuStopLogging_Click(); };
    mnuHelpContents.Click = [this] { mnuHelpContents_Click(); };
    mnuIndexHelp.Click = [this] { mnuIndexHelp_Click(); };
    tmr_LoggingInterval.Tick = [this] { tmr_LoggingInterval_Timer(); };
}

void frm_DataLogging::follow_logger() {
    subscriptions_.push_back(logger_.set_replaced.subscribe([this] { show_set(); }));
    subscriptions_.push_back(logger_.row_changed.subscribe([this](int row) { show_row(row); }));
    subscriptions_.push_back(logger_.timer_changed.subscribe([this] { show_timer(); }));
    subscriptions_.push_back(logger_.status_changed.subscribe([this] { show_status(); }));
    subscriptions_.push_back(logger_.stopped.subscribe([this] { show_active(false); }));
}

/// A window that is opened again begins as it did the first time.
void frm_DataLogging::Form_Load() {
    logger_.reset();
    chk_LogToFile_Click();
    chk_SingleLine_Click();
    show_active(false);
    set_file_.clear();
    txt_LogFilename.set_Text(path_in(services_.application_directory, kLoadLogFile));
    txt_LogFilename_Change();
}

void frm_DataLogging::Form_Activate() {
    logger_.read_tick_length();
    take_interval();
    // Required: coming back to the window overrides a name that was typed or loaded, and takes
    // every row out of use while the texts and "Yes" marks stay. The rows are polled again only
    // after Load Set or a new edit, also when logging was running meanwhile.
    txt_LogFilename.set_Text(path_in(services_.application_directory, kActivateLogFile));
    logger_.take_rows_out_of_use();
    for (int row = 1; row <= kLogRows; ++row)
        show_row(row);
}

bool frm_DataLogging::Form_Unload() {
    logger_.close();
    closed.raise();
    return true;
}

void frm_DataLogging::chk_LogToFile_Click() {
    const bool on = chk_LogToFile.checked();
    logger_.set_log_to_file(on);
    txt_LogFilename.set_Enabled(on);
    mnuSingleLine.set_Enabled(on);
    chk_SingleLine.set_Enabled(on); // its value stays
    mnuLogtoFile.set_Checked(on);
}

void frm_DataLogging::mnuLogtoFile_Click() {
    chk_LogToFile.set_Value(chk_LogToFile.checked() ? 0 : 1);
    mnuLogtoFile.set_Checked(chk_LogToFile.checked());
    chk_LogToFile_Click();
}

void frm_DataLogging::chk_SingleLine_Click() {
    logger_.set_single_line(chk_SingleLine.checked());
    mnuSingleLine.set_Checked(chk_SingleLine.checked());
}

void frm_DataLogging::mnuSingleLine_Click() {
    chk_SingleLine.set_Value(chk_SingleLine.checked() ? 0 : 1);
    chk_SingleLine_Click();
}

void frm_DataLogging::scrl_LoggingInterval_Change(int index) {
    const auto& bars = scrl_LoggingInterval;
    if (bars[kHours].Value() == 0 && bars[kMinutes].Value() == 0 && bars[kSeconds].Value() == 0)
        scrl_LoggingInterval[kSeconds].set_Value(1); // an interval of zero is never allowed
    const auto changed = static_cast<std::size_t>(index);
    txt_LoggingInterval[changed].set_Text(plain_number(bars[changed].Value()));
    take_interval();
}

void frm_DataLogging::take_interval() {
    logger_.set_interval(scrl_LoggingInterval[kHours].Value() * 3600 +
                         scrl_LoggingInterval[kMinutes].Value() * 60 +
                         scrl_LoggingInterval[kSeconds].Value());
}

void frm_DataLogging::txt_LogFilename_Change() {
    logger_.set_file_name(txt_LogFilename.Text());
}

void frm_DataLogging::txt_LogFilename_GotFocus() {
    txt_LogFilename.select_all();
}

void frm_DataLogging::txt_LoggingInterval_GotFocus(int index) {
    scrl_LoggingInterval[static_cast<std::size_t>(index)].SetFocus();
}

void frm_DataLogging::MSFlexGrid1_MouseUp(bool left) {
    const int row = MSFlexGrid1.Row();
    const int column = MSFlexGrid1.Col();
    const CellQuestion* question = cell_question(column);
    if (!left || logger_.timer().running() || row < 1 || !question) return;
    const std::string answer =
        services_.dialogs.input_box(question->prompt, "Enter Value", question->default_text);
    // Required: an empty answer, which is also what Cancel gives, empties the cell.
    if (!logger_.enter_cell(row, column, answer))
        services_.dialogs.message_box("Value is out of range!");
    show_row(row);
}

void frm_DataLogging::mnuLoadSet_Click() {
    ChooseAndReadSet();
}

void frm_DataLogging::mnuSaveSet_Click() {
    ChooseAndWriteSet();
}

void frm_DataLogging::ChooseAndReadSet() {
    FileDialogRequest request;
    request.title = "Load Set";
    request.filter = kFilter;
    request.initial_directory = set_file_.empty() ? services_.application_directory : set_file_;
    request.file_name = std::string("*.") + kExtension;
    request.default_extension = kExtension;
    request.kind = kSetKind;
    request.must_exist = true;
    const auto chosen = services_.dialogs.open_file(request);
    if (!chosen) return;
    set_file_ = *chosen;
    logger_.ReadLogSet(set_file_);
}

void frm_DataLogging::ChooseAndWriteSet() {
    // The default name is remembered before the dialog and so also when it is cancelled.
    if (set_file_.empty()) set_file_ = path_in(services_.application_directory, kDefaultSetFile);
    FileDialogRequest request;
    request.title = "Save Set";
    request.filter = kFilter;
    request.initial_directory = set_file_;
    request.file_name = set_file_;
    request.default_extension = kExtension;
    request.kind = kSetKind;
    request.overwrite_prompt = true;
    request.refuse_read_only = true;
    const auto chosen = services_.dialogs.save_file(request);
    if (!chosen) return;
    set_file_ = *chosen;
    logger_.WriteLogSet(set_file_);
}

void frm_DataLogging::mnuHelpContents_Click() {
    services_.desktop.show_help(help_page());
}

void frm_DataLogging::mnuIndexHelp_Click() {
    services_.desktop.show_help(""); // the contents, which can be searched
}

void frm_DataLogging::mnuClose_Click() {
    Unload();
}

void frm_DataLogging::mnuStartLogging_Click() {
    if (logger_.start()) show_active(true);
}

void frm_DataLogging::mnuStopLogging_Click() {
    static_cast<void>(logger_.stop()); // the warning was shown
}

void frm_DataLogging::tmr_LoggingInterval_Timer() {
    logger_.tick();
}

void frm_DataLogging::show_set() {
    const LogSet& set = logger_.set();
    const auto parts = interval_parts(set.interval_seconds);
    for (std::size_t i = 0; i < parts.size(); ++i)
        scrl_LoggingInterval[i].set_Value(parts[i]);
    for (std::size_t i = 0; i < parts.size(); ++i)
        txt_LoggingInterval[i].set_Text(plain_number(scrl_LoggingInterval[i].Value()));
    txt_LogFilename.set_Text(set.file_name);
    chk_LogToFile.set_Value(set.log_to_file ? 1 : 0);
    chk_SingleLine.set_Value(set.single_line ? 1 : 0);
    for (int row = 1; row <= kLogRows; ++row)
        show_row(row);
}

void frm_DataLogging::show_row(int row) {
    const LogSetRow& shown = logger_.set().row(row);
    for (std::size_t column = 0; column < shown.texts.size(); ++column)
        MSFlexGrid1.set_TextMatrix(row, static_cast<int>(column), shown.texts[column]);
    MSFlexGrid1.set_TextMatrix(row, log_column::kValue, logger_.reading(row).value);
    MSFlexGrid1.set_RowData(row, shown.in_use ? row : kNotInUse);
}

void frm_DataLogging::show_timer() {
    tmr_LoggingInterval.set_Interval(logger_.timer().tick_ms());
    if (logger_.timer().running())
        tmr_LoggingInterval.start();
    else
        tmr_LoggingInterval.stop();
}

void frm_DataLogging::show_status() {
    const bool in_pass = logger_.in_pass();
    set_Pointer(in_pass ? MousePointer::Hourglass : MousePointer::Normal);
    lbl_Message.set_Caption(logger_.port_message());
    if (!in_pass) lbl_Status.set_Caption(status_text(logger_.status()));
}

void frm_DataLogging::show_active(bool active) {
    enable_interval(!active);
    Label4.set_Visible(active);
    set_Caption(active ? "Data Logging - ACTIVE" : "Data Logging");
    show_status();
}

void frm_DataLogging::enable_interval(bool on) {
    for (std::size_t i = 0; i < scrl_LoggingInterval.size(); ++i) {
        scrl_LoggingInterval[i].set_Enabled(on);
        txt_LoggingInterval[i].set_Enabled(on);
    }
}

} // namespace pelvan
