#include "logging/logging_form.h"

#include "platform/text_file.h"
#include "registers/register_names.h"
#include "text/numbers.h"

namespace pelvan {
namespace {

constexpr std::size_t kHours = 0;
constexpr std::size_t kMinutes = 1;
constexpr std::size_t kSeconds = 2;
constexpr int kMaxHours = 99;
constexpr int kMaxSixtieths = 59;

constexpr char kLoadLogFile[] = "LOG.DAT";
constexpr char kActivateLogFile[] = "PELVAN7_LOG.txt";
constexpr char kDefaultSetFile[] = "CNTRLSET.PV5";
constexpr char kExtension[] = "PV5";
constexpr char kSetKind[] = "set";
constexpr char kLogFileFilter[] = "Text Files (*.txt)|*.txt|Log Files (*.log;*.dat)|*.log;*.dat|"
                                  "All Files (*.*)|*.*|";
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
    cmd_Browse.Click = [this] { cmd_Browse_Click(); };
    cmd_LoadAgain.Click = [this] { cmd_LoadAgain_Click(); };
    chk_LogToFile.Click = [this] { chk_LogToFile_Click(); };
    chk_SingleLine.Click = [this] { chk_SingleLine_Click(); };
    MSFlexGrid1.MouseUp = [this](bool left) { MSFlexGrid1_MouseUp(left); };
    mnuLogtoFile.Click = [this] { mnuLogtoFile_Click(); };
    mnuSingleLine.Click = [this] { mnuSingleLine_Click(); };
    chk_Together.Click = [this] { chk_Together_Click(); };
    mnuLoadSet.Click = [this] { mnuLoadSet_Click(); };
    FileDropped = [this](const std::string& path) { read_set(path); };
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
    subscriptions_.push_back(logger_.before_row.subscribe([this](int row) { show_pass(row); }));
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
    show_status();
}

bool frm_DataLogging::Form_Unload() {
    const bool logs = logger_.timer().running() && logger_.set().rows_in_use() > 0;
    if (logs && asks_to_close_ &&
        services_.dialogs.message_box("Data logging is running. Stop it and close the window?",
                                      "Data Logging", MessageButtons::YesNoPreferNo,
                                      MessageIcon::Exclamation) != MessageAnswer::Yes)
        return false;
    logger_.close();
    closed.raise();
    return true;
}

void frm_DataLogging::close_unasked() {
    asks_to_close_ = false;
    Unload();
    asks_to_close_ = true;
}

void frm_DataLogging::chk_LogToFile_Click() {
    const bool on = chk_LogToFile.checked();
    logger_.set_log_to_file(on);
    txt_LogFilename.set_Enabled(on);
    cmd_Browse.set_Enabled(on);
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

void frm_DataLogging::chk_Together_Click() {
    logger_.set_together(chk_Together.checked());
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

void frm_DataLogging::cmd_Browse_Click() {
    FileDialogRequest request;
    request.title = "Log File";
    request.filter = kLogFileFilter;
    request.initial_directory = txt_LogFilename.Text();
    request.file_name = txt_LogFilename.Text();
    request.default_extension = "txt";
    request.refuse_read_only = true;
    if (const auto chosen = services_.dialogs.save_file(request)) txt_LogFilename.set_Text(*chosen);
}

void frm_DataLogging::MSFlexGrid1_MouseUp(bool left) {
    const int row = MSFlexGrid1.Row();
    const int column = MSFlexGrid1.Col();
    // A click from before a pass may come in the middle of it.
    if (!left || logger_.timer().running() || logger_.in_pass() || row < 1) return;
    if (column == log_column::kName || column == log_column::kUnit)
        ask_for_label(row, column);
    else if (cell_question(column) && !ask_for_cell(row, column))
        services_.dialogs.message_box("Value is out of range!");
    show_row(row);
    show_status();
}

bool frm_DataLogging::ask_for_cell(int row, int column) {
    const CellQuestion* question = cell_question(column);
    const std::string answer =
        services_.dialogs.input_box(question->prompt, "Enter Value", question->default_text);
    // Required: an empty answer, which is also what Cancel gives, empties the cell.
    return logger_.enter_cell(row, column, answer);
}

void frm_DataLogging::ask_for_label(int row, int column) {
    const LogSetRow& there = logger_.set().row(row);
    TextQuestion question;
    if (column == log_column::kName) {
        question = {"Name of the value in row " + plain_number(row) + ":", "Name", there.name, {}};
        if (there.reads_holding_registers())
            question.suggestions = register_names(
                services_.application_directory,
                static_cast<float>(leading_number(there.texts[log_column::kRegister])));
    } else {
        question = {"Unit of the value in row " + plain_number(row) + ":",
                    "Unit",
                    there.unit,
                    {"\u00B0C", "\u00B0F", "%", "s", "min", "h", "A", "V", "mA"}};
    }
    const auto answer = services_.dialogs.ask_text(question);
    if (answer && !logger_.enter_label(row, column, *answer))
        services_.dialogs.message_box("A name may have " + plain_number(kMaxRowName) +
                                      " characters and a unit " + plain_number(kMaxRowUnit) +
                                      "; line ends and other control characters cannot be part of "
                                      "them.");
}

void frm_DataLogging::cmd_LoadAgain_Click() {
    if (!knows_set()) return ChooseAndReadSet();
    if (!logger_.agrees_with(set_file_) &&
        services_.dialogs.message_box("The rows, the interval or other settings were changed since "
                                      "the set was saved. Load it again and drop the changes?",
                                      "Load Set", MessageButtons::YesNoPreferNo,
                                      MessageIcon::Exclamation) != MessageAnswer::Yes)
        return;
    const bool active = Label4.Visible();
    logger_.load_again(set_file_);
    if (active && logger_.timer().running()) show_active(true);
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
    if (chosen) read_set(*chosen);
}

void frm_DataLogging::read_set(const std::string& path) {
    set_file_ = path;
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
    show_status();
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
    if (!may_start()) return;
    services_.desktop.paint_windows(); // the menu is gone before the first row is asked
    if (logger_.start()) show_active(true);
}

bool frm_DataLogging::may_start() {
    const LogSet& set = logger_.set();
    if (!set.log_to_file || can_append(set.file_name)) return true;
    return services_.dialogs.message_box("The log file cannot be written:\r\n" + set.file_name +
                                             "\r\n\r\nStart all the same? The readings are shown, "
                                             "and the newest lines wait for the file.",
                                         "WARNING", MessageButtons::YesNo,
                                         MessageIcon::Exclamation) == MessageAnswer::Yes;
}

void frm_DataLogging::mnuStopLogging_Click() {
    static_cast<void>(logger_.stop()); // the warning was shown
}

void frm_DataLogging::tmr_LoggingInterval_Timer() {
    logger_.tick();
}

} // namespace pelvan
