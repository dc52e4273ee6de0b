#include "app/frame_form.h"

#include <algorithm>

#include "app/application.h"

namespace pelvan {
namespace {

constexpr char kHelpFile[] = "Pelvan7.hlp";
constexpr int kTwipsPerPixel = 15;
constexpr int kConsoleHeight = 2750;
constexpr double kConsoleWidth = 0.97;
constexpr double kCommandWidth = 0.21;
constexpr double kResponseWidth = 0.76;
constexpr double kHistoryHeight = 0.94;
constexpr int kHistoryHeightLess = 3000;
constexpr int kLeastHistoryHeight = 1500;

int part_of(double share, int twips) {
    return static_cast<int>(share * twips);
}

} // namespace

MDIPelvan6::MDIPelvan6(Application& application)
    : Form("MDIPelvan6", "Pelvan 7"), line(application, mnuPortSettings),
      application_(application) {
    menus = {&mnuTools, &mnuSettings};
    mnuTools.children.push_back(&mnuListen);
    mnuListen.Click = [this] { application_.listen.Show(); };
    mnuTools.children.push_back(&mnuTransfer);
    mnuTransfer.Click = [this] { application_.transfer.Show(); };
    mnuTools.children.push_back(&mnuDataLogging);
    mnuDataLogging.Click = [this] { mnuDataLogging_Click(); };
    mnuTools.children.push_back(&mnuProfileLogic);
    mnuProfileLogic.Click = [this] { application_.profile_logic.Show(); };
    mnuTools.children.push_back(nullptr);
    mnuTools.children.push_back(&mnuHoldProfile);
    mnuHoldProfile.reach_everywhere().Click = [this] { application_.profile_logic.hold(); };
    mnuBusScan.Click = [this] { application_.scan.Show(); };
    mnuSettings.children = {&mnuPortSettings, &mnuSerialDevices, nullptr, &mnuTheme};
    mnuPortSettings.Click = [this] { application_.comms_settings.Show(); };
    mnuSerialDevices.Click = [this] { application_.serial_devices.Show(); };
    mnuBadRequests.Click = [this] { application_.bad_requests.Show(); };
    mnuAbout.Click = [this] { mnuAbout_Click(); };
    make_theme_menu();
    make_window_menu();
}

void MDIPelvan6::make_theme_menu() {
    mnuTheme.children = {&mnuThemeDesktop, &mnuThemeLight, &mnuThemeDark};
    for (MenuEntry* entry : mnuTheme.children)
        entry->make_checkable();
    const auto choose = [this](ThemeChoice choice) {
        return [this, choice] {
            show_theme(choice);
            theme_chosen.raise(choice);
        };
    };
    mnuThemeDesktop.Click = choose(ThemeChoice::AsDesktop);
    mnuThemeLight.Click = choose(ThemeChoice::Light);
    mnuThemeDark.Click = choose(ThemeChoice::Dark);
    show_theme(ThemeChoice::AsDesktop);
}

void MDIPelvan6::show_theme(ThemeChoice choice) {
    mnuThemeDesktop.set_Checked(choice == ThemeChoice::AsDesktop);
    mnuThemeLight.set_Checked(choice == ThemeChoice::Light);
    mnuThemeDark.set_Checked(choice == ThemeChoice::Dark);
}

void MDIPelvan6::make_window_menu() {
    mnuWindow.children = {&mnuArrange, nullptr, &mnuShowConsole, &mnuShowCommand, &mnuShowResponse};
    mnuArrange.Click = [this] {
        arranged.raise();
        arrange();
    };
    mnuShowConsole.Click = [this] { application_.console.Show(); };
    mnuShowCommand.Click = [this] { application_.history.frmCommand.Show(); };
    mnuShowResponse.Click = [this] { application_.history.frmResponse.Show(); };
}

void MDIPelvan6::MDIForm_Load() {
    Application& app = application_;
    app.services.desktop.set_help_file(kHelpFile);
    app.events.run([&] { app.console.Load(); });
    app.events.run([&] { app.history.frmCommand.Load(); });
    app.events.run([&] { app.history.frmResponse.Load(); });
    app.events.run([&] { arrange(); });
    line.tmr_Line.start();
    line.look();
    // Ready to type: Enter sends from there.
    app.console.focus_entry();
}

void MDIPelvan6::arrange() {
    frm_Pelvan5VB& console = application_.console;
    HistoryForm& command = application_.history.frmCommand;
    HistoryForm& response = application_.history.frmResponse;
    command.Show();
    response.Show();
    console.Show();
    for (Form* form : std::initializer_list<Form*>{&console, &command, &response})
        form->set_State(WindowState::Normal);
    place_windows();
    command.hscrl_List.set_Max(HistoryForm::kScrollMaximum);
    response.hscrl_List.set_Max(HistoryForm::kScrollMaximum);
}

void MDIPelvan6::place_windows() {
    const ScreenSize screen = application_.services.desktop.screen_size();
    const Size size = frame_size ? frame_size() : Size{screen, screen};
    const int width = size.outside.width * kTwipsPerPixel;
    const int height = size.outside.height * kTwipsPerPixel;
    const int command_width = part_of(kCommandWidth, width);
    // As much of the frame as of a screen, but never beyond the room that its bars leave.
    const int room = size.inside.height * kTwipsPerPixel - kConsoleHeight;
    const int history_height = std::max(
        std::min(part_of(kHistoryHeight, height) - kHistoryHeightLess, room), kLeastHistoryHeight);
    const TwipRect top{0, 0, part_of(kConsoleWidth, width), kConsoleHeight};
    const TwipRect left{0, kConsoleHeight, command_width, history_height};
    const TwipRect right{command_width, kConsoleHeight, part_of(kResponseWidth, width),
                         history_height};
    const std::pair<Form*, const TwipRect&> places[] = {{&application_.console, top},
                                                        {&application_.history.frmCommand, left},
                                                        {&application_.history.frmResponse, right}};
    for (const auto& [form, place] : places)
        if (form->State() == WindowState::Normal) form->Move(place);
}

void MDIPelvan6::mnuExit_Click() {
    if (loaded())
        Unload();
    else
        application_.console.Unload();
}

void MDIPelvan6::mnuAbout_Click() {
    application_.services.dialogs.message_box(
        "Pelvan 7, version " PELVAN_VERSION
        "\n\nA service tool for controllers on serial lines.\n\nConfiguration:\n" +
            application_.session.config.gIniFile + directory_note,
        "About Pelvan 7");
}

void MDIPelvan6::mnuDataLogging_Click() {
    frm_DataLogging& logging = application_.logging;
    const bool opening = !logging.loaded();
    logging.Show();
    if (!opening) return;
    const TwipRect& console = application_.console.Position();
    const TwipRect& response = application_.history.frmResponse.Position();
    logging.Move({0, 0, console.width, console.height + response.height});
}

void MDIPelvan6::close_after(Event<>& ended) {
    work_end_ = ended.subscribe([this] {
        work_end_.end();
        Unload();
    });
}

/// Ends a scan without a question, for it has changed nothing; the frame closes when it has ended.
bool MDIPelvan6::scan_ends() {
    frm_BusScan& scan = application_.scan;
    if (!scan.running()) return false;
    scan.cancel();
    close_after(scan.ended);
    return true;
}

bool MDIPelvan6::Form_Unload() {
    if (scan_ends()) return false;
    frm_DownloadParm& transfer = application_.transfer;
    if (transfer.running()) {
        transfer.cmdCancel_Click();
        // The end of the transfer still has things to do with the controller, and to tell.
        if (transfer.canceled()) close_after(transfer.ended);
    }
    if (transfer.running()) return false;
    if (application_.bad_requests.running()) {
        application_.bad_requests.cancel();
        close_after(application_.bad_requests.ended);
        return false;
    }
    if (!application_.profile_logic.Unload()) return false;
    if (!application_.logging.Unload()) return false;
    return application_.console.Unload();
}

} // namespace pelvan
