#include "app/line_panel.h"

#include "app/application.h"
#include "platform/serial_devices.h"

namespace pelvan {
namespace {

constexpr int kLookEveryMs = 500;

std::string device_trouble(const NetworkLines& network, const std::string& device) {
    if (is_network(device)) {
        if (!parse_network_address(device)) return "not understood";
        const std::string trouble = network.trouble(device);
        return trouble.empty() ? "" : "not open: " + trouble;
    }
    if (simulator::is_simulated(device))
        return simulator::parse_simulated_device(device) ? "" : "not understood";
    const DeviceState state = probe_device(device);
    return state == DeviceState::Openable ? "" : device_state_text(state, device);
}

/// A tool that comes back to the line again and again, or hears all of it, and keeps nobody out
/// meanwhile.
std::string tool_at_work(const Application& app, int port) {
    const auto& devices = app.session.serial.gCommDevice;
    constexpr std::size_t kModbus{kModbusChannel};
    if (devices.size() > kModbus && devices[kModbus]->CommPort() == port) {
        const DataLogger& logger = app.data_logger;
        if (logger.timer().running() || logger.in_pass()) return app.logging_link.user();
        if (app.profile_logic.run.watching()) return app.profile_link.user();
    }
    const ListenState& listen = app.session.listen;
    const bool heard = listen.gListening && listen.gListenDevice != nullptr &&
                       listen.gListenDevice->CommPort() == port;
    return heard ? app.listen_link.user() : std::string();
}

} // namespace

LinePanel::LinePanel(Application& application, MenuEntry& port_settings)
    : application_(application),
      observer_(application.channels, application.session.config,
                [&application](const std::string& device) {
                    if (!application.adapters.another_at(device).empty())
                        return std::string("not there: another adapter has its name");
                    return device_trouble(application.network,
                                          application.adapters.path_of(device));
                }) {
    frm_Pelvan5VB& console = application.console;
    cmd_Line.Click = [&port_settings] { port_settings.choose(); };
    tmr_Line.set_Interval(kLookEveryMs);
    tmr_Line.Tick = [this] { look(); };
    changes_.push_back(application.channels.line_use().changed.subscribe([this] { look(); }));
    changes_.push_back(application.network.opening.subscribe([this](const std::string& device) {
        cmd_Line.set_Caption("Opening " + device + " ...");
        before_block.raise();
    }));
    changes_.push_back(console.opt_Protocol.watch([this] { look(); }));
    changes_.push_back(console.chk_GenerateBadChecksum.watch([this] { show_checksum(); }));
    show_checksum();
}

void LinePanel::look() {
    const OptionGroup& protocols = application_.console.opt_Protocol;
    LineStatus status = observer_.look(protocols.Value());
    if (status.user.empty()) status.user = tool_at_work(application_, status.port);
    trouble_ =
        (status.state != LineStatus::State::Open && status.state != LineStatus::State::Closed) ||
        !status.echo.empty();
    cmd_Line.set_Caption(line_text(protocols.option(protocols.Value()).caption, status));
    const std::string place = application_.adapters.path_of(status.device);
    const bool is_open = status.state == LineStatus::State::Open;
    const std::string moved = place == status.device || !is_open ? "" : ", now " + place;
    const std::string device = status.device.empty() ? "" : status.device + moved + ". ";
    const std::string errors =
        status.errors ? "Since it was opened: " + line_errors_text(*status.errors) + ". " : "";
    cmd_Line.set_ToolTipText(device + errors + "Click or F9: Port Settings.");
}

void LinePanel::show_checksum() {
    lbl_BadChecksum.set_Visible(application_.console.chk_GenerateBadChecksum.checked());
}

} // namespace pelvan
