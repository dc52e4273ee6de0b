#include "listen/listen_form.h"

#include "listen/capture_file.h"

namespace pelvan {
namespace {

constexpr int kRightButton = 2;
constexpr int kMaxLines = 10000;
/// Raw lines of a line that never falls silent are long: 10,000 of them would fill the memory.
constexpr std::size_t kMaxListBytes = std::size_t{32} << 20;
constexpr int kSettleMs = 250;

/// Selects an option and runs its click handler, also when it was selected already.
void click_option(OptionGroup& group, int index) {
    if (group.Value() == index)
        group.Click(index);
    else
        group.set_Value(index);
}

} // namespace

frm_Listen::frm_Listen(Services& services, ListenMonitor& monitor,
                       std::function<std::int16_t()> selected_channel)
    : Form("frm_Listen", "Listening Mode"), frames(services, monitor), services_(services),
      monitor_(monitor), selected_channel_(std::move(selected_channel)) {
    set_help_page("listen");
    join_statistics();
    join_options();
    join_menus();
    tmr_Settle.set_Interval(kSettleMs);
    tmr_Settle.Tick = [this] {
        monitor_.settle();
        show_line_errors();
    };
    lst_Times.set_Visible(false);
    lst_CommsCommand.Click = [this] {
        if (lst_CommsCommand.ListIndex() < lst_Times.ListCount())
            lst_Times.set_ListIndex(lst_CommsCommand.ListIndex());
    };
    lst_Times.Click = [this] { lst_CommsCommand.set_ListIndex(lst_Times.ListIndex()); };
}

void frm_Listen::join_statistics() {
    const auto& statistics = monitor_.statistics().all();
    for (std::size_t i = 0; i < statistics.size(); ++i) {
        statistic_boxes()[i].label->set_Caption(statistics[i]->caption());
        statistic_boxes()[i].box->set_Locked(true);
    }
}

void frm_Listen::join_options() {
    opt_DataFormat.Click = [this](int index) { opt_DataFormat_Click(index); };
    opt_DataDirection.Click = [this](int index) { opt_DataDirection_Click(index); };
    opt_CharacterDelay.Click = [this](int index) { opt_CharacterDelay_Click(index); };
    cmd_Start.Click = [this] { mnuStartListen_Click(); };
    cmd_Stop.Click = [this] { mnuStopListen_Click(); };
    chk_Pause.Click = [this] { chk_Pause_Click(); };
    chk_LogToFile.Click = [this] { log_to_file(chk_LogToFile.checked()); };
}

void frm_Listen::join_menus() {
    mnuFile.children = {&mnuClearScreen, &mnuStartListen, &mnuStopListen, &mnuExitListen};
    mnuCapture.children = {&mnuShowTimes,     &mnuPause, nullptr,        &mnuCopyFrames,
                           &mnuCopyFramesCsv, nullptr,   &mnuSaveCapture};
    mnuHelp.children = {&mnucontents, &mnuIndexHelp};
    menus = {&mnuFile, &mnuCapture, &mnuHelp};
    HiddenMenu.children = {&Loglistenlist.make_checkable()};
    mnuShowTimes.make_checkable();
    mnuPause.make_checkable().Click = [this] { chk_Pause.set_Value(chk_Pause.checked() ? 0 : 1); };
    mnuCopyFrames.Click = [this] { frames.copy(false); };
    mnuCopyFramesCsv.Click = [this] { frames.copy(true); };
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

void frm_Listen::join_monitor() {
    results_ = {monitor_.line_added.subscribe(
                    [this](const std::string& line, const Burst& burst) { add_line(line, burst); }),
                monitor_.hit_counted.subscribe([this] { show_statistics(); }),
                monitor_.status_changed.subscribe(
                    [this](const std::string& status) { show_status(status); })};
}

void frm_Listen::Form_Load() {
    join_monitor();
    mnuClearScreen_Click();
    log_to_file(false);
    chk_Pause.set_Value(0);
    frames.cmd_AllFrames.press();
    mnuShowTimes.set_Checked(false);
    lst_Times.set_Visible(false);
    show_status("Not listening.");
    // Through the handlers, so that the monitor has what is shown.
    click_option(opt_DataDirection, 0);
    click_option(opt_DataFormat, 0);
    click_option(opt_CharacterDelay, 0);
}

bool frm_Listen::Form_Unload() {
    monitor_.ListenStop();
    results_ = {};
    return true;
}

void frm_Listen::Form_MouseUp(int button) {
    if (button == kRightButton) pop_up.raise(HiddenMenu);
}

void frm_Listen::mnuStartListen_Click() {
    monitor_.ListenStart(selected_channel_());
}

void frm_Listen::mnuStopListen_Click() {
    monitor_.ListenStop();
}

void frm_Listen::mnuExitListen_Click() {
    Unload();
}

void frm_Listen::mnuClearScreen_Click() {
    monitor_.clear();
    show_statistics();
    clear_lists();
    frames.clear();
}

void frm_Listen::clear_lists() {
    lst_CommsCommand.Clear();
    lst_Times.Clear();
    list_bytes_ = 0;
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
    save_capture(*path, traffic().frames());
    lbl_Status.set_Caption(std::to_string(traffic().frames().size()) + " frames saved.");
}

void frm_Listen::mnucontents_Click() {
    services_.desktop.show_help(help_page());
}

void frm_Listen::mnuIndexHelp_Click() {
    services_.desktop.show_help(""); // the contents, which can be searched
}

void frm_Listen::opt_DataDirection_Click(int index) {
    monitor_.options.direction = static_cast<ListenDirection>(index);
}

void frm_Listen::opt_CharacterDelay_Click(int index) {
    monitor_.choose_timeout(index);
}

void frm_Listen::opt_DataFormat_Click(int index) {
    monitor_.options.format = static_cast<ListenFormat>(index);
    // Bytes are bytes in either direction.
    const bool decoded = monitor_.options.format != ListenFormat::Raw;
    fram_DataDirection.set_Enabled(decoded);
    for (int i = 0; i < opt_DataDirection.count(); ++i)
        opt_DataDirection.set_option_enabled(i, decoded);
}

void frm_Listen::Loglistenlist_Click() {
    log_to_file(!Loglistenlist.Checked());
}

void frm_Listen::log_to_file(bool on) {
    if (monitor_.options.log_to_file != on) monitor_.set_log_to_file(on);
    show_log();
}

void frm_Listen::chk_Pause_Click() {
    mnuPause.set_Checked(chk_Pause.checked());
    frames.set_paused(chk_Pause.checked());
}

bool frm_Listen::lst_CommsCommand_KeyDown(bool control, char key) {
    if (!control || (key != 'C' && key != 'c')) return false;
    std::string text;
    for (int i = 0; i < lst_CommsCommand.ListCount(); ++i)
        text += lst_CommsCommand.List(i) + "\r\n";
    services_.desktop.set_clipboard_text(text);
    return true;
}

void frm_Listen::add_line(const std::string& line, const Burst& burst) {
    // Required: the list is emptied when it holds more than 10,000 lines, so it may hold 10,001.
    if (lst_CommsCommand.ListCount() > kMaxLines || list_bytes_ > kMaxListBytes) clear_lists();
    list_bytes_ += line.size();
    lst_CommsCommand.AddItem(line);
    lst_CommsCommand.set_ListIndex(lst_CommsCommand.ListCount() - 1);
    lst_Times.AddItem(burst_note(burst));
    lst_Times.set_ListIndex(lst_Times.ListCount() - 1);
}

std::array<frm_Listen::StatisticBox, ListenStatistics::kCount> frm_Listen::statistic_boxes() {
    return {{{&lbl_HitCount, &txt_HitCount},
             {&lbl_LastHitTime, &txt_LastHitTime},
             {&lbl_TotalHitTime, &txt_TotalHitTime},
             {&lbl_HitsPerMinute, &txt_HitsPerMinute},
             {&lbl_MaxHits, &txt_MaxHits},
             {&lbl_BurstHitRate, &txt_BurstHitRate}}};
}

void frm_Listen::show_statistics() {
    const auto& statistics = monitor_.statistics().all();
    for (std::size_t i = 0; i < statistics.size(); ++i)
        statistic_boxes()[i].box->set_Text(statistics[i]->text());
    show_line_errors();
    show_log();
}

/// What was counted stays when the listening ends, as the statistics do.
void frm_Listen::show_line_errors() {
    const auto errors = monitor_.line_errors();
    if (monitor_.listening() || errors) lbl_LineErrors.set_Caption(line_errors_sentence(errors));
}

/// The log may have been switched off because it cannot be written.
void frm_Listen::show_log() {
    const bool on = monitor_.options.log_to_file;
    Loglistenlist.set_Checked(on);
    chk_LogToFile.set_Value(on ? 1 : 0);
    lbl_Log.set_Caption(on ? std::string(ListenMonitor::kLogFileName) + ": " +
                                 std::to_string(monitor_.logged_lines()) + " lines"
                           : std::string());
}

void frm_Listen::show_status(const std::string& status) {
    lbl_Status.set_Caption(status);
    cmd_Start.set_Enabled(!monitor_.listening());
    cmd_Stop.set_Enabled(monitor_.listening());
    if (monitor_.listening())
        tmr_Settle.start();
    else
        tmr_Settle.stop();
    show_line_errors();
    show_log();
    frames.refresh_note();
}

} // namespace pelvan
