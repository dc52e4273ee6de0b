// "Data Logging": a grid of controller values that are polled at an interval, shown, and on request
// appended to a text file. The log set (rows, interval, file options) lives in these controls and
// nowhere else. The read of one row is LogPoller's, the waiting lines are LogBuffer's, the readings
// that are kept for curves are Trend's.
#pragma once

#include "config/ini.h"
#include "forms/form.h"
#include "forms/lists.h"
#include "logging/log_buffer.h"
#include "logging/log_poller.h"
#include "logging/trend.h"
#include "platform/message_gate.h"
#include "platform/services.h"

namespace pelvan {

/// Columns of the grid.
namespace log_column {
inline constexpr int kLog = 0;
inline constexpr int kAddress = 1;
inline constexpr int kCommand = 2;
inline constexpr int kRegister = 3;
inline constexpr int kDecimals = 4;
inline constexpr int kValue = 5;
} // namespace log_column

inline constexpr int kLogRows = 100;

class frm_DataLogging : public Form {
  public:
    frm_DataLogging(Services& services, MessageGate& messages, const ConfigState& config,
                    Link& link, Modbus& modbus, LoggingState& state);

    /// Row data word: -1 not in use, else the row's number.
    Grid MSFlexGrid1{"MSFlexGrid1", "Log|Address|Command|Register|Dec. Pl.|   Value  ",
                     kLogRows + 1};
    Frame fram_LoggingInterval{"fram_LoggingInterval", "Logging Interval"};
    /// Hours, minutes, seconds. The bars count downwards: their upper arrow adds.
    std::array<ScrollBar, 3> scrl_LoggingInterval;
    std::array<TextBox, 3> txt_LoggingInterval;
    std::array<Label, 3> lbl_LoggingInterval;
    Label lbl_LogFilename{"lbl_LogFilename", "Log Fil&e"};
    TextBox txt_LogFilename{"txt_LogFilename", "",
                            "Enter the data logging path and filename here."};
    CheckBox chk_LogToFile{
        "chk_LogToFile", "Log To File",
        "Check to log data to file and display, uncheck to log to the display only."};
    // The wording and the blank before the full stop are required.
    CheckBox chk_SingleLine{"chk_SingleLine", "Single Line",
                            "Check to format the logging file in a \"Spreadsheet friendly\" "
                            "format, uncheck to create a file is a more readable format ."};
    Label Label4{"Label4", "LOGGING  ACTIVE", "The specified registers are being logged."};
    Timer tmr_LoggingInterval{"tmr_LoggingInterval"};
    /// The last pass, its length, the next pass, and the lines that wait in the buffer.
    Label lbl_Status{"lbl_Status"};
    /// What the port had to say during the last pass; empty when nothing.
    Label lbl_Message{"lbl_Message"};

    MenuEntry mnuFile{"mnuFile", "&File"};
    MenuEntry mnuFileOptions{"mnuFileOptions", "File &Options"};
    MenuEntry mnuLogtoFile{"mnuLogtoFile", "Log to &File"};
    MenuEntry mnuSingleLine{"mnuSingleLine", "&Single Line"};
    MenuEntry mnuLoadSet{"mnuLoadSet", "&Load Set", "Ctrl+O"};
    MenuEntry mnuSaveSet{"mnuSaveSet", "&Save Set", "Ctrl+S"};
    MenuEntry mnuClose{"mnuClose", "E&xit Data Logging", "Ctrl+W"};
    MenuEntry mnuLogging{"mnuLogging", "&Logging"};
    MenuEntry mnuStartLogging{"mnuStartLogging", "&Start Logging", "F5"};
    MenuEntry mnuStopLogging{"mnuStopLogging", "S&top Logging", "Shift+F5"};
    MenuEntry mnuTrend{"mnuTrend", "T&rend", "Ctrl+T", "Show the latest readings as curves."};
    MenuEntry mnuHelp{"mnuHelp", "&Help"};
    MenuEntry mnuHelpContents{"mnuHelpContents", "&Contents"};
    MenuEntry mnuIndexHelp{"mnuIndexHelp", "&Search For help On..."};

    void Form_Load() override;
    void Form_Activate() override;
    bool Form_Unload() override;

    void chk_LogToFile_Click();
    void mnuLogtoFile_Click();
    void chk_SingleLine_Click();
    void mnuSingleLine_Click();
    void scrl_LoggingInterval_Change(int index);
    void txt_LogFilename_Change();
    void txt_LogFilename_GotFocus();
    void txt_LoggingInterval_GotFocus(int index);
    /// The cell editor: asks for the current cell's value. Inert while the timer runs.
    void MSFlexGrid1_MouseUp(bool left);
    void mnuLoadSet_Click();
    void mnuSaveSet_Click();
    void mnuHelpContents_Click();
    void mnuIndexHelp_Click();
    void mnuClose_Click();
    void mnuStartLogging_Click();
    void mnuStopLogging_Click();
    void tmr_LoggingInterval_Timer();

    void ChooseAndReadSet();
    void ChooseAndWriteSet();
    /// Replaces the log set by the file's and starts or stops logging as its "START MODE" says. A
    /// missing file reads as all defaults. 6 for an interval above 32767, 9 for a 101st row.
    void ReadLogSet(const std::string& file);
    /// The part of `ReadLogSet` before the start mode.
    void read_set(const std::string& file);
    /// A failed write goes unnoticed.
    void WriteLogSet(const std::string& file);

    /// Polls every row in use once and flushes by rule. Blocks for all exchanges. A run-time error
    /// ends logging, so that it does not come back with every pass, and is passed on.
    void RunLoggingPass();
    void PollLogRows();
    /// False when the warning was shown.
    bool FlushLogBuffer();
    /// Whether everything that was to be written so far is written.
    [[nodiscard]] bool last_flush_worked() const { return last_flush_worked_; }

    [[nodiscard]] bool in_use(int row) const { return MSFlexGrid1.RowData(row) != kNotInUse; }
    [[nodiscard]] RowState row_state(int row) const;
    [[nodiscard]] Trend& trend() { return trend_; }
    [[nodiscard]] const std::string& set_file_name() const { return set_file_; }

    /// Hears of a row whose state changed.
    std::function<void(int row)> row_state_changed;
    /// Called after a pass of the start, the timer or an automatic set, when what follows it is
    /// done too.
    std::function<void()> pass_done;
    /// Asked between two rows; true ends the pass there.
    std::function<bool()> interrupted;
    /// Gives the other windows back their normal state.
    std::function<void()> restore_other_windows;

  private:
    static constexpr std::int32_t kNotInUse = -1;

    void wire_events();
    void reset_controls();
    void recompute_interval();
    void enable_interval(bool on);
    void show_stopped();
    void show_status();
    [[nodiscard]] std::string next_pass_text() const;

    void read_interval(const std::string& file);
    void read_rows(const std::string& file);
    void write_row(int row, const std::string& file);
    void apply_start_mode(const std::string& file);

    void poll_and_flush();
    void pass_ended();
    void poll_row(int row, std::string& record);
    [[nodiscard]] LogRow row_numbers(int row) const;
    void set_row_state(int row, RowState state);
    void begin_trend_pass();

    Services& services_;
    MessageGate& messages_;
    const ConfigState& config_;
    LoggingState& state_;
    LogPoller poller_;
    LogBuffer buffer_;
    Trend trend_{kLogRows};

    std::int32_t interval_seconds_ = 0;
    std::int32_t tick_count_ = 0;
    float tick_total_ = 0; // counted and never read
    std::string set_file_;
    bool in_pass_ = false;
    bool last_flush_worked_ = true;
    std::array<RowState, kLogRows + 1> row_states_{};

    std::string last_pass_at_; // time of day; empty before the first pass
    double last_pass_ms_ = 0;
    bool trend_begun_ = false;
    double trend_ms_ = 0; // local calendar time of the last pass
    std::uint32_t trend_tick_ = 0;
};

} // namespace pelvan
