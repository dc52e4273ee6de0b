#include "app/application.h"

#include "config/device_map.h"

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

int part_of(double share, int twips) {
    return static_cast<int>(share * twips);
}

} // namespace

MDIPelvan6::MDIPelvan6(Application& application)
    : Form("MDIPelvan6", "Pelvan 7"), application_(application) {
    mnuWindow.children = {&mnuArrange, nullptr, &mnuShowConsole, &mnuShowCommand, &mnuShowResponse};
    menus = {&mnuTools, &mnuSettings};
    mnuTools.children.push_back(&mnuListen);
    mnuListen.Click = [this] { application_.listen.Show(); };
    mnuTools.children.push_back(&mnuTransfer);
    mnuTransfer.Click = [this] { application_.transfer.Show(); };
    mnuTools.children.push_back(&mnuDataLogging);
    mnuDataLogging.Click = [this] { mnuDataLogging_Click(); };
    mnuSettings.children = {&mnuPortSettings, &mnuSerialDevices};
    mnuPortSettings.Click = [this] { application_.comms_settings.Show(); };
    mnuSerialDevices.Click = [this] { application_.serial_devices.Show(); };
    mnuArrange.Click = [this] { arrange(); };
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
    // Ready to type: Enter sends from there.
    app.console.focus_entry();
}

void MDIPelvan6::arrange() {
    const ScreenSize pixels = application_.services.desktop.screen_size();
    const int width = pixels.width * kTwipsPerPixel;
    const int height = pixels.height * kTwipsPerPixel;
    const int command_width = part_of(kCommandWidth, width);
    const int history_height = part_of(kHistoryHeight, height) - kHistoryHeightLess;
    frm_Pelvan5VB& console = application_.console;
    HistoryForm& command = application_.history.frmCommand;
    HistoryForm& response = application_.history.frmResponse;
    command.Show();
    response.Show();
    console.Show();
    for (Form* form : std::initializer_list<Form*>{&console, &command, &response})
        form->set_State(WindowState::Normal);
    console.Move({0, 0, part_of(kConsoleWidth, width), kConsoleHeight});
    command.Move({0, kConsoleHeight, command_width, history_height});
    response.Move({command_width, kConsoleHeight, part_of(kResponseWidth, width), history_height});
    command.hscrl_List.set_Max(HistoryForm::kScrollMaximum);
    response.hscrl_List.set_Max(HistoryForm::kScrollMaximum);
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

bool MDIPelvan6::Form_Unload() {
    frm_DownloadParm& transfer = application_.transfer;
    if (transfer.running()) {
        transfer.cmdCancel_Click();
        // The end of the transfer still has things to do with the controller, and to tell.
        if (transfer.canceled())
            transfer_end_ = transfer.ended.subscribe([this] {
                transfer_end_.end();
                Unload();
            });
    }
    if (transfer.running()) return false;
    application_.logging.Unload();
    return application_.console.Unload();
}

Application::Application(Services given, LineOpener opener)
    : messages(given.dialogs), services{given.tick, given.clock, messages, given.desktop,
                                        std::move(given.application_directory)},
      events(services.dialogs), simulators(services.tick), error_log(services.clock),
      comms([this] { return make_port(); }),
      channels(session.serial, session.config, comms, services.dialogs, error_log),
      countdowns(session.serial, services.tick),
      link(channels, countdowns, services.dialogs, error_log), modbus(session.modbus),
      history(services), senders(link, modbus, services.clock, services.dialogs),
      console(services, session.config, channels, link, senders, history),
      listen_monitor(link, modbus, session.listen, services.clock, services.application_directory),
      listen(services, listen_monitor,
             [this] { return static_cast<std::int16_t>(console.opt_Protocol.Value()); }),
      transfer(services, link, modbus),
      data_logger(services, messages, session.config, link, modbus, session.logging),
      logging(services, data_logger), comms_settings(services, session.config, channels, *this),
      serial_devices(services, session.config, channels), frame(*this), opener_(std::move(opener)) {
    logging_closed_ = logging.closed.subscribe([this] { restore_windows(); });
    history.join_console(console, console.mnuFile);
    console_busy_ = console.busy_changed.subscribe([this](bool busy) {
        for (MenuEntry* entry : {&frame.mnuListen, &frame.mnuTransfer, &frame.mnuDataLogging,
                                 &frame.mnuPortSettings, &frame.mnuSerialDevices})
            entry->set_Enabled(!busy);
    });
    jumper_moved_ =
        console.simulated_jumper_moved.subscribe([this](bool in) { simulators.set_jumper(in); });
}

void Application::restore_windows() {
    for (Form* form :
         std::initializer_list<Form*>{&console, &history.frmCommand, &history.frmResponse})
        form->set_State(WindowState::Normal);
}

void Application::hold_windows(bool held) {
    for (Form* form :
         std::initializer_list<Form*>{&console, &history.frmCommand, &history.frmResponse})
        form->set_Enabled(!held);
    if (!held) console.focus_entry(); // a window that is held loses the focus
}

std::unique_ptr<SerialPort> Application::make_port() {
    return std::make_unique<LinePort>(
        [this](int number) { return device_for_port(number, session.config.gIniFile); },
        [this](const std::string& device, const LineSettings& settings) {
            if (simulator::is_simulated(device)) return simulators.open(device, settings);
            return opener_(device, settings);
        });
}

} // namespace pelvan
