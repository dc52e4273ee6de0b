#include "scan/scan_channel.h"

#include <algorithm>

#include "config/device_map.h"
#include "network/network_address.h"

namespace pelvan {

void prepare_scan(ScanOptions& options, const SerialState& channels, const ConfigState& config,
                  std::int16_t port, int preferred_channel) {
    options.port = port;
    const auto address = parse_network_address(device_for_port(port, config.gIniFile).value_or(""));
    options.over_network = address.has_value();
    options.fixed_settings = address && !address->rfc2217;
    for (std::size_t i = channels.gCommDevice.size(); i-- > 0;) {
        const SerialPort& device = *channels.gCommDevice[i];
        const bool preferred = static_cast<int>(i) == preferred_channel;
        if (device.CommPort() != port || (options.present && !preferred)) continue;
        options.present = parse_line_settings(device.Settings());
        options.line_mode = channels.gRtsToggle[i] ? 2 : device.RTSEnable() ? 1 : 0;
        if (preferred) break;
    }
    const auto first = std::find(options.protocols.begin(), options.protocols.end(),
                                 static_cast<ScanProtocol>(preferred_channel));
    if (first != options.protocols.end()) std::rotate(options.protocols.begin(), first, first + 1);
}

} // namespace pelvan
