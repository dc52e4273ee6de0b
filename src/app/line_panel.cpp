#include "app/line_panel.h"

#include "app/core.h"
#include "console/console_form.h"
#include "platform/serial_devices.h"

namespace pelvan {
namespace {

constexpr int kLookEveryMs = 500;

std::string device_trouble(const std::string& device) {
    if (simulator::is_simulated(device))
        return simulator::parse_simulated_device(device) ? "" : "not understood";
    const DeviceState state = probe_device(device);
    return state == DeviceState::Openable ? "" : device_state_text(state, device);
}

} // namespace

LinePanel::LinePanel(Core& core, frm_Pelvan5VB& console, MenuEntry& port_settings)
    : console_(console), observer_(core.channels, core.session.config, device_trouble) {
    cmd_Line.Click = [&port_settings] { port_settings.choose(); };
    tmr_Line.set_Interval(kLookEveryMs);
    tmr_Line.Tick = [this] { look(); };
    changes_.push_back(core.channels.line_use().changed.subscribe([this] { look(); }));
    changes_.push_back(console.opt_Protocol.watch([this] { look(); }));
    changes_.push_back(console.chk_GenerateBadChecksum.watch([this] { show_checksum(); }));
    show_checksum();
}

void LinePanel::look() {
    const OptionGroup& protocols = console_.opt_Protocol;
    const LineStatus status = observer_.look(protocols.Value());
    cmd_Line.set_Caption(line_text(protocols.option(protocols.Value()).caption, status));
    const std::string device = status.device.empty() ? "" : status.device + ". ";
    cmd_Line.set_ToolTipText(device + "Click or F9: Port Settings.");
}

void LinePanel::show_checksum() {
    lbl_BadChecksum.set_Visible(console_.chk_GenerateBadChecksum.checked());
}

} // namespace pelvan
