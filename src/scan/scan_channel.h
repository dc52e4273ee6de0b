// What a scan takes from the channels: the settings that a port has now, and what its lines do.
#pragma once

#include "config/ini.h"
#include "scan/scan_plan.h"
#include "serial/serial_state.h"

namespace pelvan {

/// The options for a port, as the channel that is preferred has it, else another one that has it:
/// its settings come first, and so does the preferred channel's protocol.
void prepare_scan(ScanOptions& options, const SerialState& channels, const ConfigState& config,
                  std::int16_t port, int preferred_channel);

} // namespace pelvan
