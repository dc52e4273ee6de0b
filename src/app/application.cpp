#include "app/application.h"

namespace pelvan {

Application::Application(Services given, LineOpener opener)
    : Core(std::move(given), std::move(opener)), history(services),
      console(services, session.config, channels, link, senders, history),
      listen(services, listen_monitor,
             [this] { return static_cast<std::int16_t>(console.opt_Protocol.Value()); }),
      transfer(services, transfer_link, modbus), logging(services, data_logger),
      profile_logic(services, profile_link, modbus),
      comms_settings(services, session.config, channels, *this),
      serial_devices(services, session.config, channels), frame(*this) {
    logging_closed_ = logging.closed.subscribe([this] { restore_windows(); });
    history.join_console(console, console.mnuFile);
    line_use_ = channels.line_use().changed.subscribe([this] { hold_menus(); });
    frame.mnuHoldProfile.hold(profile_logic.hold_refusal());
    hold_permitted_ = profile_logic.permitted.subscribe(
        [this] { frame.mnuHoldProfile.hold(profile_logic.hold_refusal()); });
    jumper_moved_ =
        console.simulated_jumper_moved.subscribe([this](bool in) { simulators.set_jumper(in); });
}

/// While a tool has claimed the lines, the others and the settings of the ports wait.
void Application::hold_menus() {
    frame.mnuListen.hold(listen_link.refusal());
    frame.mnuDataLogging.hold(logging_link.refusal());
    frame.mnuTransfer.hold(transfer_link.refusal());
    profile_logic.permit();
    const std::string holder = channels.line_use().refusal(nullptr);
    frame.mnuPortSettings.hold(holder);
    frame.mnuSerialDevices.hold(holder);
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
