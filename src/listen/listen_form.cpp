#include "listen/listen_form.h"

#include "listen/capture_file.h"

namespace pelvan {
namespace {

constexpr int kRaw = 2;
constexpr int kRightButton = 2;
/// Required: the option called "1 Sec" waits two seconds.
constexpr float kTimeoutsMs[] = {500, 2000, 10000};

/// Selects an option and runs its click handler, also when it was selected already.
void click_option(OptionGroup& group, int index) {
    if (group.Value() == index)
        group.Click(index);
    else
        group.set_Value(index);
}

} // namespace

frm_Listen::frm_Listen(Services& services, Link& link, Modbus& modbus, ListenState& state,
                       std::function<std::int16_t()> selected_channel)
    : Form("frm_Listen", "Listening Mode"),
      fram_DataDirection("fram_DataDirection", "Data Direction",
                         "Select in which direction to monitor the data."),
      // "recieved" is spelled as it always was here; keep it.
      opt_DataDirection("opt_DataDirection",
                        {{"To Device", "Logged data being transmitted to the device."},
                         {"From Device", "Logged data being recieved from the device."}}),
      fram_DataFormat("fram_DataFormat", "Data Format",
                      "Select the format to display the data in."),
      // The blank before the last full stop belongs to the text.
      opt_DataFormat("opt_DataFormat",
                     {{"Decimal", "Display the logged data in a decimal format."},
                      {"Hex", "Display the logged data in a hexadecimal format."},
                      {"Raw", "Display the logged data as \"Raw\" decimal byte values ."}}),
      fram_CharacterDelay("fram_CharacterDelay", "Timeout", "Select the Timeout duration."),
      opt_CharacterDelay("opt_CharacterDelay", {{".5 Sec", "Timeout after .5 Seconds"},
                                                {"1 Sec", "Timeout after 1 Second."},
                                                {"10 Sec", "Timeout after 10 Seconds."}}),
      lst_CommsCommand("lst_CommsCommand", "", "Displays data recorded from the port."),
      lst_Times("lst_Times", "",
                "When each line began, how long after the one before, and what it is."),
      txt_HitCount("txt_HitCount", "", "Number of bursts."),
      txt_LastHitTime("txt_LastHitTime", "", "How long the last burst took to come in."),
      txt_TotalHitTime("txt_TotalHitTime", "", "Time since the first burst."),
      txt_HitsPerMinute("txt_HitsPerMinute", "", "Average rate since the first burst."),
      txt_MaxHits("txt_MaxHits", "", "Highest average seen."),
      txt_BurstHitRate("txt_BurstHitRate", "", "Rate that the shortest gap would give."),
      mnuClearScreen("mnuClearScreen", "&Clear Screen", "Ctrl+L"),
      mnuStartListen("mnuStartListen", "&Start Listen", "F5"),
      mnuStopListen("mnuStopListen", "Stop &Listen", "Shift+F5"),
      mnuExitListen("mnuExitListen", "&Exit Listen", "Ctrl+F4"),
      mnuShowTimes("mnuShowTimes", "&Times and Gaps", "Ctrl+T",
                   "Show beside each line when it came, and which request a reply belongs to."),
      mnuSaveCapture("mnuSaveCapture", "&Save Capture...", "Ctrl+S",
                     "Save the bursts as a file for Wireshark."),
      Loglistenlist("Loglistenlist", "Log to file", "", "Append every line to listenlog.txt."),
      services_(services), link_(link), modbus_(modbus), state_(state),
      selected_channel_(std::move(selected_channel)) {
    set_help_page("listen");
    for (TextBox* box : {&txt_HitCount, &txt_LastHitTime, &txt_TotalHitTime, &txt_HitsPerMinute,
                         &txt_MaxHits, &txt_BurstHitRate})
        box->set_Locked(true);
    lst_Times.set_Visible(false);
    opt_DataFormat.Click = [this](int index) { opt_DataFormat_Click(index); };
    opt_DataDirection.Click = [](int) {}; // looked at when a burst is rendered
    opt_CharacterDelay.Click = [this](int index) { opt_CharacterDelay_Click(index); };
    lst_CommsCommand.Click = [this] {
        if (lst_CommsCommand.ListIndex() < lst_Times.ListCount())
            lst_Times.set_ListIndex(lst_CommsCommand.ListIndex());
    };
    lst_Times.Click = [this] { lst_CommsCommand.set_ListIndex(lst_Times.ListIndex()); };
    join_menus();
}

void frm_Listen::join_menus() {
    mnuFile.children = {&mnuClearScreen, &mnuStartListen, &mnuStopListen, &mnuExitListen};
    mnuCapture.children = {&mnuShowTimes, &mnuSaveCapture};
    mnuHelp.children = {&mnucontents, &mnuIndexHelp};
    menus = {&mnuFile, &mnuCapture, &mnuHelp};
    HiddenMenu.children = {&Loglistenlist.make_checkable()};
    mnuShowTimes.make_checkable();
    mnuClearScreen.Click = [this] { mnuClearScreen_Click(); };
    mnuStartListen.Click = [this] { mnuStartListen_Click(); };
    mnuStopListen.Click = [this] { mnuStopListen_Click(); };
    mnuExitListen.Click = [this] { mnuExitListen_Click(); };
    mnuShowTimes.Click = [this] {
        mnuShowTimes.set_Checked(!mnuShowTimes.Checked());
        lst_Times.set_Visible(mnuShowTimes.Checked());
    };
    mnuSaveCapture.Click = [this] { mnuSaveCapture_Click(); };
    mnucontents.Click = [this] { mnucontents_Click(); };
    mnuIndexHelp.Click = [this] { mnuIndexHelp_Click(); };
    Loglistenlist.Click = [this] { Loglistenlist_Click(); };
}

void frm_Listen::Form_Load() {
    // A window that is opened again begins as it did the first time.
    mnuClearScreen_Click();
    Loglistenlist.set_Checked(false);
    mnuShowTimes.set_Checked(false);
    lst_Times.set_Visible(false);
    lbl_Status.set_Caption("Not listening.");
    // Through the handlers, so that the time-out is never 0.
    click_option(opt_DataDirection, 0);
    click_option(opt_DataFormat, 0);
    click_option(opt_CharacterDelay, 0);
}

bool frm_Listen::Form_Unload() {
    ListenStop();
    return true;
}

void frm_Listen::Form_MouseUp(int button) {
    if (button == kRightButton && pop_up) pop_up(HiddenMenu);
}

void frm_Listen::mnuStartListen_Click() {
    ListenStart(selected_channel_());
}

void frm_Listen::mnuStopListen_Click() {
    ListenStop();
}

void frm_Listen::mnuExitListen_Click() {
    Unload();
}

void frm_Listen::mnuClearScreen_Click() {
    for (TextBox* box : {&txt_HitCount, &txt_LastHitTime, &txt_TotalHitTime, &txt_HitsPerMinute,
                         &txt_MaxHits, &txt_BurstHitRate})
        box->set_Text("");
    clear_list();
    traffic_.clear();
    if (traffic_changed) traffic_changed(nullptr);
}

void frm_Listen::clear_list() {
    lst_CommsCommand.Clear();
    lst_Times.Clear();
}

void frm_Listen::mnuSaveCapture_Click() {
    FileDialogRequest request;
    request.title = "Save Capture";
    request.filter = "Captures (*.pcapng)|*.pcapng|All Files (*.*)|*.*|";
    request.initial_directory = services_.application_directory;
    request.file_name = "listen.pcapng";
    request.default_extension = "pcapng";
    request.overwrite_prompt = true;
    const auto path = services_.dialogs.save_file(request);
    if (!path) return;
    save_capture(*path, traffic_.bursts());
    lbl_Status.set_Caption(std::to_string(traffic_.bursts().size()) + " bursts saved.");
}

void frm_Listen::mnucontents_Click() {
    services_.desktop.show_help(help_page());
}

void frm_Listen::mnuIndexHelp_Click() {
    services_.desktop.show_help(""); // the contents, which can be searched
}

void frm_Listen::opt_CharacterDelay_Click(int index) {
    state_.gListenTimeout = kTimeoutsMs[checked_index(index, std::size(kTimeoutsMs))];
}

void frm_Listen::opt_DataFormat_Click(int index) {
    const bool decoded = index != kRaw; // bytes are bytes in either direction
    fram_DataDirection.set_Enabled(decoded);
    for (int i = 0; i < opt_DataDirection.count(); ++i)
        opt_DataDirection.set_option_enabled(i, decoded);
}

void frm_Listen::Loglistenlist_Click() {
    Loglistenlist.set_Checked(!Loglistenlist.Checked());
}

bool frm_Listen::lst_CommsCommand_KeyDown(bool control, char key) {
    if (!control || (key != 'C' && key != 'c')) return false;
    std::string text;
    for (int i = 0; i < lst_CommsCommand.ListCount(); ++i)
        text += lst_CommsCommand.List(i) + "\r\n";
    services_.desktop.set_clipboard_text(text);
    return true;
}

} // namespace pelvan
