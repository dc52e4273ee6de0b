// A found controller's settings put into the channel of its protocol, as the window of the port
// settings would save them.
#pragma once

#include <string>

#include "config/ini.h"
#include "scan/scan_find.h"

namespace pelvan {

struct UsedSettings {
    bool saved = false;
    std::string told; // what was done, or why not
};

/// Saves and rebuilds the channels. Asks whether channels before this one that have no port get
/// one. `line_mode` is what DTR and RTS did in the scan.
[[nodiscard]] UsedSettings use_scanned_settings(const ScanFind& find, std::int16_t port,
                                                int line_mode, const ConfigState& config,
                                                ChannelTable& channels, Dialogs& dialogs);

} // namespace pelvan
