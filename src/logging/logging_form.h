// "Data Logging": the window over DataLogger. It turns its boxes into values for the logger and
// shows the logger's set, readings and status; it knows no rule of polling, lines or set files.
#pragma once

#include <array>

#include "forms/form.h"
#include "forms/lists.h"
#include "logging/data_logger.h"

namespace pelvan {

class frm_DataLogging : public Form {
  public:
    /// Both must outlive this.
    frm_DataLogging(Services& services, DataLogger& logger);

    /// Row data word: -1 not in use, else the row's number.
    Grid MSFlexGrid1{"MSFlexGrid1", "Log|Address|Command|Register|Dec. Pl.|   Value  |Name|Unit",
                     kLogRows + 1};
    Frame fram_LoggingInterval{"fram_LoggingInterval", "Logging Interval"};
    /// Hours, minutes, seconds. The bars count downwards: their upper arrow adds.
    std::array<ScrollBar, 3> scrl_LoggingInterval;
    std::array<TextBox, 3> txt_LoggingInterval;
    std::array<Label, 3> lbl_LoggingInterval;
    Label lbl_LogFilename{"lbl_LogFilename", "Log Fil&e"};
    TextBox txt_LogFilename{"txt_LogFilename", "",
                            "Enter the data logging path and filename here."};
    Button cmd_Browse{"cmd_Browse", "&Browse...",
                      "Choose the log file. Lines are added at its end."};
    CheckBox chk_LogToFile{
        "chk_LogToFile", "Log To File",
        "Check to log data to file and display, uncheck to log to the display only."};
    // The wording and the space before the full stop are required.
    CheckBox chk_SingleLine{"chk_SingleLine", "Single Line",
                            "Check to format the logging file in a \"Spreadsheet friendly\" "
                            "format, uncheck to create a file is a more readable format ."};
    CheckBox chk_Together{"chk_Together", "Read &neighbours together",
                          "Check to read rows whose registers follow one another with one request "
                          "(up to 125), which is much quicker. What the controller refuses so is "
                          "read singly; readings and files stay the same."};
    Label Label4{"Label4", "LOGGING  ACTIVE", "The specified registers are being logged."};
    Timer tmr_LoggingInterval{"tmr_LoggingInterval"};
    /// The last pass, its length, the next pass, and the lines that wait in the buffer.
    Label lbl_Status{"lbl_Status"};
    /// What the port had to say during the last pass; empty when nothing.
    Label lbl_Message{"lbl_Message"};
    /// There when no row is polled, with what helps, or when something keeps the set from it.
    Label lbl_NotPolled{"lbl_NotPolled"};
    Button cmd_LoadAgain{"cmd_LoadAgain", "Load A&gain"};

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
    /// Asks first when rows are being logged.
    bool Form_Unload() override;
    /// Closes the window without a question.
    void close_unasked();

    void chk_LogToFile_Click();
    void mnuLogtoFile_Click();
    void chk_SingleLine_Click();
    void mnuSingleLine_Click();
    void chk_Together_Click();
    void scrl_LoggingInterval_Change(int index);
    void cmd_Browse_Click();
    void txt_LogFilename_Change();
    void txt_LogFilename_GotFocus();
    void txt_LoggingInterval_GotFocus(int index);
    /// The cell editor: asks for the current cell's value. Inert while the timer runs.
    void MSFlexGrid1_MouseUp(bool left);
    void cmd_LoadAgain_Click();
    void mnuLoadSet_Click();
    void mnuSaveSet_Click();
    void mnuHelpContents_Click();
    void mnuIndexHelp_Click();
    void mnuClose_Click();
    void mnuStartLogging_Click();
    void mnuStopLogging_Click();
    void tmr_LoggingInterval_Timer();

    void ChooseAndReadSet();
    /// A set file that was dropped on the window, as if it had been chosen.
    void read_set(const std::string& path);
    void ChooseAndWriteSet();

    [[nodiscard]] DataLogger& logger() { return logger_; }
    [[nodiscard]] const DataLogger& logger() const { return logger_; }
    [[nodiscard]] const std::string& set_file_name() const { return set_file_; }

    /// The window was closed: time to give the other windows back their normal state.
    Event<> closed;

  private:
    void add_menus();
    void wire_events();
    void follow_logger();
    void take_interval();
    /// Asks for an address, command, register or decimals; false when it was out of range.
    [[nodiscard]] bool ask_for_cell(int row, int column);
    void ask_for_label(int row, int column);
    /// Whether the log file can be written, or somebody wants to start all the same.
    [[nodiscard]] bool may_start();
    [[nodiscard]] bool knows_set() const;
    void show_set();
    void show_row(int row);
    void show_timer();
    void show_status();
    void show_not_polled();
    void show_pass(int row);
    void show_active(bool active);
    void enable_interval(bool on);

    Services& services_;
    DataLogger& logger_;
    std::string set_file_;
    bool asks_to_close_ = true;
    double shown_at_ = 0; // tick, while a pass is under way
    std::vector<Subscription> subscriptions_;
};

} // namespace pelvan
