// The object that owns everything, and the start-up order. Front ends (the windows, the terminal)
// hand in the platform's services and drive the forms; tests do the same with fakes.
#pragma once

#include "app/error_boundary.h"
#include "app/session.h"
#include "console/console_form.h"
#include "console/history_form.h"
#include "listen/listen_form.h"
#include "logging/logging_form.h"
#include "platform/event.h"
#include "platform/line_port.h"
#include "platform/message_gate.h"
#include "serial/link.h"
#include "settings/comms_settings_form.h"
#include "settings/serial_devices_form.h"
#include "simulator/line/simulator_registry.h"
#include "transfer/download_parm_form.h"

namespace pelvan {

class Application;

/// The frame window; loading it starts everything.
class MDIPelvan6 : public Form {
  public:
    explicit MDIPelvan6(Application& application);

    /// The tools and settings are reached from every window.
    MenuEntry mnuTools{"mnuTools", "&Tools"};
    MenuEntry mnuListen{"mnuListen", "&Listening Mode", "Ctrl+Shift+L",
                        "Watch a line without sending anything."};
    MenuEntry mnuTransfer{"mnuTransfer", "&Save/Restore Setup", "Ctrl+Shift+S",
                          "A controller's registers into a file and back."};
    MenuEntry mnuDataLogging{"mnuDataLogging", "&Data Logging", "Ctrl+Shift+D",
                             "Poll registers at an interval and log them."};
    MenuEntry mnuSettings{"mnuSettings", "&Settings"};
    MenuEntry mnuPortSettings{"mnuPortSettings", "&Port Settings...", "F9",
                              "Port, baud rate and format of the selected protocol's channel."};
    MenuEntry mnuSerialDevices{"mnuSerialDevices", "&Serial Devices...", "Shift+F9",
                               "Which device of this machine a port number stands for."};
    MenuEntry mnuWindow{"mnuWindow", "&Window"};
    MenuEntry mnuArrange{"mnuArrange", "&Arrange", "Ctrl+Shift+A",
                         "Put the three windows back where they were at the start."};
    MenuEntry mnuShowConsole{"mnuShowConsole", "Command &Center", "Ctrl+1"};
    MenuEntry mnuShowCommand{"mnuShowCommand", "Command &History", "Ctrl+2"};
    MenuEntry mnuShowResponse{"mnuShowResponse", "Command &Response", "Ctrl+3"};

    /// Sets the help file, loads the console, then the two history windows, and arranges the three.
    void MDIForm_Load();
    /// The console along the top, Command History and Command Response side by side below it.
    void arrange();
    /// Data Logging at the frame's top left, over the three windows.
    void mnuDataLogging_Click();

    void Form_Load() override { MDIForm_Load(); }
    /// Closing the frame closes its windows: data logging writes what it has gathered, and the
    /// console ends the program. A running transfer asks whether to cancel; the frame then closes
    /// when it has ended.
    bool Form_Unload() override;

  private:
    Application& application_;
    Subscription transfer_end_; // the frame closes then
};

class Application : private SettingsHost {
  public:
    /// `opener` opens the devices that are not simulated.
    Application(Services services, LineOpener opener);
    Application(const Application&) = delete;
    Application& operator=(const Application&) = delete;

    MessageGate messages;
    Services services; // its dialogs are the gate
    Session session;
    ErrorBoundary events;
    simulator::SimulatorRegistry simulators;
    ErrorLog error_log;
    frm_Comms comms;
    ChannelTable channels;
    CountdownPool countdowns;
    Link link;
    Modbus modbus;
    History history;
    Senders senders;
    frm_Pelvan5VB console;
    ListenMonitor listen_monitor;
    frm_Listen listen;
    frm_DownloadParm transfer;
    DataLogger data_logger;
    frm_DataLogging logging;
    frm_CommsSettings comms_settings;
    frm_SerialDevices serial_devices;
    MDIPelvan6 frame;

  private:
    [[nodiscard]] int selected_protocol() const override { return console.opt_Protocol.Value(); }
    void hold_windows(bool held) override;
    void restore_windows();
    [[nodiscard]] std::unique_ptr<SerialPort> make_port();
    LineOpener opener_;
    Subscription logging_closed_;
    Subscription console_busy_;
    Subscription jumper_moved_;
};

} // namespace pelvan
