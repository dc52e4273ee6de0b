#include "console/start_up.h"

#include "console/protocol_number.h"
#include "platform/text_file.h"

namespace pelvan {

std::string configuration_path(const std::string& application_directory) {
    return path_in(application_directory, "pelvan7.ini");
}

void start_session(ConfigState& config, ChannelTable& channels,
                   const std::string& application_directory) {
    config.gIniFile = configuration_path(application_directory);
    channels.init_comms();
}

int saved_protocol(const ConfigState& config) {
    return ini_read_int(ini_key::kCommsSection, ini_key::kDefaultProtocol, protocol::kModbus,
                        config.gIniFile);
}

} // namespace pelvan
