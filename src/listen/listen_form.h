// The window "Listening Mode": the options of the listen monitor, the lines that it has captured,
// with their times beside them if wanted, and its six statistics. The monitor itself works without
// the window; opened again, the window begins as it did the first time.
#pragma once

#include <functional>

#include "forms/form.h"
#include "forms/lists.h"
#include "listen/frames_panel.h"
#include "listen/listen_monitor.h"
#include "platform/services.h"

namespace pelvan {

class frm_Listen : public Form {
  public:
    /// `selected_channel` answers the channel that is selected on the console.
    frm_Listen(Services& services, ListenMonitor& monitor,
               std::function<std::int16_t()> selected_channel);

    Frame fram_DataDirection{"fram_DataDirection", "Data Direction",
                             "Select in which direction to monitor the data."};
    /// "recieved" is spelled as it always was here; keep it.
    OptionGroup opt_DataDirection{"opt_DataDirection",
                                  {{"To Device", "Logged data being transmitted to the device."},
                                   {"From Device", "Logged data being recieved from the device."}}};
    Frame fram_DataFormat{"fram_DataFormat", "Data Format",
                          "Select the format to display the data in."};
    /// The space before the last full stop belongs to the text.
    OptionGroup opt_DataFormat{
        "opt_DataFormat",
        {{"Decimal", "Display the logged data in a decimal format."},
         {"Hex", "Display the logged data in a hexadecimal format."},
         {"Raw", "Display the logged data as \"Raw\" decimal byte values ."}}};
    Frame fram_CharacterDelay{"fram_CharacterDelay", "Timeout", "Select the Timeout duration."};
    OptionGroup opt_CharacterDelay{"opt_CharacterDelay",
                                   {{".5 Sec", "Timeout after .5 Seconds"},
                                    {"1 Sec", "Timeout after 1 Second."},
                                    {"10 Sec", "Timeout after 10 Seconds."}}};
    ListBox lst_CommsCommand{"lst_CommsCommand", "", "Displays data recorded from the port."};
    /// Time, gap and kind of the line of the same number; hidden at first.
    ListBox lst_Times{"lst_Times", "",
                      "When each line began, how long after the one before, and what it is."};
    Label lbl_HitCount{"lbl_HitCount"};
    TextBox txt_HitCount{"txt_HitCount", "", "Number of bursts."};
    Label lbl_LastHitTime{"lbl_LastHitTime"};
    TextBox txt_LastHitTime{"txt_LastHitTime", "", "How long the last burst took to come in."};
    Label lbl_TotalHitTime{"lbl_TotalHitTime"};
    TextBox txt_TotalHitTime{"txt_TotalHitTime", "", "Time since the first burst."};
    Label lbl_HitsPerMinute{"lbl_HitsPerMinute"};
    TextBox txt_HitsPerMinute{"txt_HitsPerMinute", "", "Average rate since the first burst."};
    Label lbl_MaxHits{"lbl_MaxHits"};
    TextBox txt_MaxHits{"txt_MaxHits", "", "Highest average seen."};
    Label lbl_BurstHitRate{"lbl_BurstHitRate"};
    TextBox txt_BurstHitRate{"txt_BurstHitRate", "", "Rate that the shortest gap would give."};
    /// What the hardware has counted since the listening began; empty before.
    Label lbl_LineErrors{"lbl_LineErrors"};
    /// Whether the window listens, to what, and why it stopped.
    Label lbl_Status{"lbl_Status"};
    Button cmd_Start{"cmd_Start", "Start",
                     "Listen on the channel that is selected in the Command Center (F5)."};
    Button cmd_Stop{"cmd_Stop", "Stop", "Listen no more (Shift+F5)."};
    CheckBox chk_Pause{"chk_Pause", "Pause",
                       "Hold what is shown (F8). Listening, counting and logging go on."};
    /// The same as `Loglistenlist`, in sight.
    CheckBox chk_LogToFile{"chk_LogToFile", "Log to file",
                           "Append every line to listenlog.txt in the program's directory."};
    /// What the log has got.
    Label lbl_Log{"lbl_Log"};
    FramesPanel frames;
    /// Lets the monitor look at the time while it listens.
    Timer tmr_Settle{"tmr_Settle"};

    MenuEntry mnuFile{"mnuFile", "&File"};
    MenuEntry mnuClearScreen{"mnuClearScreen", "&Clear Screen", "Ctrl+L"};
    MenuEntry mnuStartListen{"mnuStartListen", "&Start Listen", "F5"};
    MenuEntry mnuStopListen{"mnuStopListen", "Stop &Listen", "Shift+F5"};
    MenuEntry mnuExitListen{"mnuExitListen", "&Exit Listen", "Ctrl+F4"};
    MenuEntry mnuCapture{"mnuCapture", "&Capture"};
    MenuEntry mnuShowTimes{
        "mnuShowTimes", "&Times and Gaps", "Ctrl+T",
        "Show beside each line when it came, and which request a reply belongs to."};
    MenuEntry mnuPause{"mnuPause", "&Pause", "F8",
                       "Hold what is shown. Listening, counting and logging go on."};
    MenuEntry mnuCopyFrames{"mnuCopyFrames", "&Copy Frames", "Ctrl+Shift+C",
                            "Copy the selected frames of the tab Frames, or all, as text."};
    MenuEntry mnuCopyFramesCsv{"mnuCopyFramesCsv", "Copy Frames as CS&V", "Ctrl+Shift+V",
                               "Copy the selected frames of the tab Frames, or all, as CSV."};
    MenuEntry mnuSaveCapture{"mnuSaveCapture", "&Save Capture...", "Ctrl+S",
                             "Save the frames as a file for Wireshark."};
    MenuEntry mnuHelp{"mnuHelp", "&Help"};
    MenuEntry mnucontents{"mnucontents", "Contents"};
    MenuEntry mnuIndexHelp{"mnuIndexHelp", "Search For Help On..."};
    /// Belongs to no menu bar: it pops up under the right mouse button.
    MenuEntry HiddenMenu{"HiddenMenu"};
    MenuEntry Loglistenlist{"Loglistenlist", "Log to file", "",
                            "Append every line to listenlog.txt."};

    /// The boxes of the statistics, in the order of `ListenStatistics::all`.
    struct StatisticBox {
        Label* label;
        TextBox* box;
    };
    [[nodiscard]] std::array<StatisticBox, ListenStatistics::kCount> statistic_boxes();

    void Form_Load() override;
    bool Form_Unload() override;
    /// `button` 2 is the right one.
    void Form_MouseUp(int button);
    void mnuStartListen_Click();
    void mnuStopListen_Click();
    void mnuClearScreen_Click();
    void mnuExitListen_Click();
    void mnuSaveCapture_Click();
    void mnucontents_Click();
    void mnuIndexHelp_Click();
    void opt_DataDirection_Click(int index);
    void opt_CharacterDelay_Click(int index);
    void opt_DataFormat_Click(int index);
    void Loglistenlist_Click();
    void chk_Pause_Click();
    /// True when the key was Ctrl+C and all lines are on the clipboard.
    bool lst_CommsCommand_KeyDown(bool control, char key);

    [[nodiscard]] const Traffic& traffic() const { return monitor_.traffic(); }
    /// Asks the front end to pop up a menu at the pointer.
    Event<MenuEntry&> pop_up;

  private:
    void join_statistics();
    void join_options();
    void join_menus();
    void join_monitor();
    void add_line(const std::string& line, const Burst& burst);
    void log_to_file(bool on);
    void show_statistics();
    void show_log();
    void show_line_errors();
    void show_status(const std::string& status);
    void clear_lists();

    Services& services_;
    ListenMonitor& monitor_;
    std::function<std::int16_t()> selected_channel_;
    std::size_t list_bytes_ = 0;          // text in `lst_CommsCommand`
    std::array<Subscription, 3> results_; // held while the window is loaded
};

} // namespace pelvan
