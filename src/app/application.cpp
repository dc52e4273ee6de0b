#include "app/application.h"

#include <algorithm>
#include <array>

#include "app/scan_settings.h"
#include "config/device_map.h"

namespace pelvan {

Application::Application(Services given, LineOpener opener)
    : Core(std::move(given), std::move(opener)), history(services),
      console(services, session.config, channels, link, senders, history, repeat),
      listen(services, listen_monitor,
             [this] { return static_cast<std::int16_t>(console.opt_Protocol.Value()); }),
      transfer(services, transfer_link, modbus), logging(services, data_logger),
      profile_logic(services, profile_link, modbus),
      scan(services, session.config, scan_link, bus_scan, *this),
      bad_requests(services, messages, bad_request_link,
                   [this] { return console.opt_Protocol.Value(); }),
      comms_settings(services, session.config, channels, *this, device_lookup()),
      serial_devices(services, session.config, channels, device_lookup()), frame(*this) {
    logging_closed_ = logging.closed.subscribe([this] { restore_windows(); });
    history.join_console(console, console.mnuFile);
    line_use_ = channels.line_use().changed.subscribe([this] { hold_menus(); });
    frame.mnuHoldProfile.hold(profile_logic.hold_refusal());
    hold_permitted_ = profile_logic.permitted.subscribe(
        [this] { frame.mnuHoldProfile.hold(profile_logic.hold_refusal()); });
    jumper_moved_ =
        console.simulated_jumper_moved.subscribe([this](bool in) { simulators.set_jumper(in); });
    join_menus();
    console.mnuDiagnostics.Opening = [this] { show_jumper_menu(); };
}

/// Ending the program asks what closing the frame asks, from wherever it is chosen.
void Application::join_menus() {
    const std::array diagnostics{&console.mnuDiagnostics, &history.frmCommand.mnuDiagnostics,
                                 &history.frmResponse.mnuDiagnostics};
    for (MenuEntry* menu : diagnostics) {
        menu->children.insert(menu->children.begin() + 1, &frame.mnuBusScan);
        constexpr std::ptrdiff_t kBehindChecksum = 3;
        menu->children.insert(menu->children.begin() + kBehindChecksum, &frame.mnuBadRequests);
    }
    console.mnuExit.reach_everywhere().Click = [this] { frame.mnuExit_Click(); };
    for (Form* form :
         std::initializer_list<Form*>{&console, &history.frmCommand, &history.frmResponse, &listen,
                                      &transfer, &logging, &profile_logic, &scan, &bad_requests}) {
        for (MenuEntry* menu : form->menus)
            if (menu != nullptr && menu->Caption() == "&Help")
                menu->children.insert(menu->children.end(), {nullptr, &frame.mnuAbout});
    }
}

/// While a tool has claimed the lines, the others and the settings of the ports wait.
void Application::hold_menus() {
    frame.mnuListen.hold(listen_link.refusal());
    frame.mnuDataLogging.hold(logging_link.refusal());
    frame.mnuTransfer.hold(transfer_link.refusal());
    frame.mnuBusScan.hold(scan_link.refusal());
    frame.mnuBadRequests.hold(bad_request_link.refusal());
    profile_logic.permit();
    const std::string holder = channels.line_use().refusal(nullptr);
    frame.mnuPortSettings.hold(holder);
    frame.mnuSerialDevices.hold(holder);
}

/// The jumper of a simulated plug means nothing to whoever has none.
void Application::show_jumper_menu() {
    const auto& ports = session.serial.gCommDevice;
    const bool simulated = std::any_of(ports.begin(), ports.end(), [this](SerialPort* port) {
        const auto device = device_for_port(port->CommPort(), session.config.gIniFile);
        return device && simulator::is_simulated(*device);
    });
    console.mnuSimulatedJumper.set_Visible(simulated);
}

std::string Application::use_settings(const ScanFind& find, std::int16_t port, int line_mode) {
    UsedSettings used =
        use_scanned_settings(find, port, line_mode, session.config, channels, messages);
    if (!used.saved || find.protocol == ScanProtocol::Xon) return std::move(used.told);
    console.ask_controller(static_cast<int>(find.protocol), find.address, find.crc);
    return used.told + (used.told.ends_with(" ") ? "" : " ") + "The Command Center asks address " +
           std::to_string(find.address) + ".";
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

} // namespace pelvan
