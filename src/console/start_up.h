// What every front end begins with: the configuration file's place, the channels that it describes,
// and the protocol that is saved in it.
#pragma once

#include <string>

#include "config/ini.h"
#include "serial/channel_table.h"

namespace pelvan {

/// The configuration file of a program whose files lie in `application_directory`.
[[nodiscard]] std::string configuration_path(const std::string& application_directory);

/// Sets `gIniFile`, then builds every channel from that file. Raises what `init_comms` raises.
void start_session(ConfigState& config, ChannelTable& channels,
                   const std::string& application_directory);

/// The number of the saved protocol as it stands in the file, Modbus without one.
[[nodiscard]] int saved_protocol(const ConfigState& config);

} // namespace pelvan
