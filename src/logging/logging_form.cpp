#include "logging/logging_form.h"

#include "platform/run_time_error.h"
#include "platform/text_file.h"
#include "text/numbers.h"

namespace pelvan {
namespace {

constexpr int kHours = 0;
constexpr int kMinutes = 1;
constexpr int kSeconds = 2;
constexpr int kMostHours = 99;
constexpr int kMostSixtieths = 59;
constexpr int kDesignerSeconds = 10;

constexpr char kLoadLogFile[] = "LOG.DAT";
constexpr char kActivateLogFile[] = "PELVAN7_LOG.txt";
constexpr std::int16_t kDefaultTickMs = 1000;

} // namespace

frm_DataLogging::frm_DataLogging(Services& services, MessageGate& messages,
                                 const ConfigState& config, Link& link, Modbus& modbus,
                                 LoggingState& state)
    : Form("frm_DataLogging", "Data Logging"),
      scrl_LoggingInterval{
          ScrollBar("scrl_LoggingInterval(0)", kMostHours, 0, 0,
                    "Click on the up/down arrows to adjust the logging timer interval Hours."),
          ScrollBar("scrl_LoggingInterval(1)", kMostSixtieths, 0, 0,
                    "Click on the up/down arrows to adjust the logging timer interval Minutes."),
          ScrollBar("scrl_LoggingInterval(2)", kMostSixtieths, 0, kDesignerSeconds,
                    "Click on the up/down arrows to adjust the logging timer interval seconds.")},
      txt_LoggingInterval{TextBox("txt_LoggingInterval(0)"), TextBox("txt_LoggingInterval(1)"),
                          TextBox("txt_LoggingInterval(2)")},
      lbl_LoggingInterval{Label("lbl_LoggingInterval(0)", "Hours"),
                          Label("lbl_LoggingInterval(1)", "   Min"),
                          Label("lbl_LoggingInterval(2)", "  Sec")},
      services_(services), messages_(messages), config_(config), state_(state),
      poller_(link, modbus), buffer_(state, services.dialogs) {
    set_help_page("logging");
    mnuFileOptions.children = {&mnuLogtoFile.make_checkable(), &mnuSingleLine.make_checkable()};
    mnuFile.children = {&mnuFileOptions, nullptr, &mnuLoadSet, &mnuSaveSet, nullptr, &mnuClose};
    mnuLogging.children = {&mnuStartLogging, &mnuStopLogging, nullptr, &mnuTrend};
    mnuHelp.children = {&mnuHelpContents, &mnuIndexHelp};
    menus = {&mnuFile, &mnuLogging, &mnuHelp};
    for (TextBox& box : txt_LoggingInterval)
        box.set_Locked(true);
    wire_events();
    reset_controls();
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

/// A window that is opened again begins as it did the first time.
void frm_DataLogging::reset_controls() {
    for (int row = 1; row <= kLogRows; ++row) {
        MSFlexGrid1.set_RowData(row, kNotInUse);
        for (int column = log_column::kLog; column <= log_column::kValue; ++column)
            MSFlexGrid1.set_TextMatrix(row, column, "");
        set_row_state(row, RowState::NotPolled);
    }
    scrl_LoggingInterval[kSeconds].set_Value(kDesignerSeconds);
    scrl_LoggingInterval[kMinutes].set_Value(0);
    scrl_LoggingInterval[kHours].set_Value(0);
    for (std::size_t i = 0; i < 3; ++i)
        txt_LoggingInterval[i].set_Text(plain_number(scrl_LoggingInterval[i].Value()));
    chk_LogToFile.set_Value(0);
    chk_SingleLine.set_Value(0);
    chk_LogToFile_Click();
    chk_SingleLine_Click();
    show_stopped();
    tick_count_ = 0;
    set_file_.clear();
    last_pass_at_.clear();
    lbl_Message.set_Caption("");
    show_status();
}

void frm_DataLogging::Form_Load() {
    reset_controls();
    txt_LogFilename.set_Text(path_in(services_.application_directory, kLoadLogFile));
    txt_LogFilename_Change();
}

void frm_DataLogging::Form_Activate() {
    const int tick_ms = ini_read_int(ini_key::kCommsSection, ini_key::kTimerOffset, kDefaultTickMs,
                                     config_.gIniFile);
    if (tick_ms < 0) throw RunTimeError(error_number::kInvalidPropertyValue);
    tmr_LoggingInterval.set_Interval(tick_ms);
    recompute_interval();
    // Required: coming back to the window overrides a name that was typed or loaded, and takes
    // every row out of use while the texts and "Yes" marks stay. The rows are polled again only
    // after Load Set or a new edit, also when logging was running meanwhile.
    txt_LogFilename.set_Text(path_in(services_.application_directory, kActivateLogFile));
    for (int row = 1; row <= kLogRows; ++row)
        MSFlexGrid1.set_RowData(row, kNotInUse);
    show_status();
}

bool frm_DataLogging::Form_Unload() {
    tmr_LoggingInterval.stop();
    // Required: whatever the count, so that lines which Stop Logging wrote are written once more.
    if (chk_LogToFile.checked()) FlushLogBuffer();
    if (restore_other_windows) restore_other_windows();
    return true;
}

void frm_DataLogging::chk_LogToFile_Click() {
    const bool on = chk_LogToFile.checked();
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
    recompute_interval();
}

void frm_DataLogging::recompute_interval() {
    interval_seconds_ = scrl_LoggingInterval[kHours].Value() * 3600 +
                        scrl_LoggingInterval[kMinutes].Value() * 60 +
                        scrl_LoggingInterval[kSeconds].Value();
    state_.gLogIntervalSeconds = interval_seconds_;
    show_status();
}

void frm_DataLogging::txt_LogFilename_Change() {
    state_.gLogFileName = txt_LogFilename.Text();
}

void frm_DataLogging::txt_LogFilename_GotFocus() {
    txt_LogFilename.select_all();
}

void frm_DataLogging::txt_LoggingInterval_GotFocus(int index) {
    scrl_LoggingInterval[static_cast<std::size_t>(index)].SetFocus();
}

void frm_DataLogging::mnuLoadSet_Click() {
    ChooseAndReadSet();
}

void frm_DataLogging::mnuSaveSet_Click() {
    ChooseAndWriteSet();
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

RowState frm_DataLogging::row_state(int row) const {
    return row_states_[checked_index(row, row_states_.size())];
}

void frm_DataLogging::set_row_state(int row, RowState state) {
    RowState& there = row_states_[static_cast<std::size_t>(row)];
    if (there == state) return;
    there = state;
    if (row_state_changed) row_state_changed(row);
}

} // namespace pelvan
