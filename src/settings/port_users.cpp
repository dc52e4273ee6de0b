#include "settings/port_users.h"

#include <array>

#include "config/ini.h"
#include "platform/run_time_error.h"
#include "serial/serial_state.h"

namespace pelvan {
namespace {

constexpr std::array<const char*, kChannelLimit> kNames{"Full", "Modbus", "Xon", "Tellura/AB"};

} // namespace

std::string protocol_name(int channel) {
    return kNames[checked_index(channel, kNames.size())];
}

std::string protocol_names(const std::vector<int>& channels) {
    std::string text;
    for (std::size_t i = 0; i < channels.size(); ++i)
        text += (i == 0                     ? ""
                 : i + 1 == channels.size() ? " and "
                                            : ", ") +
                protocol_name(channels[i]);
    return text;
}

std::vector<int> channels_on_port(int number, const std::string& ini_file) {
    std::vector<int> users;
    for (int channel = 0; channel < static_cast<int>(kChannelLimit); ++channel) {
        int port = ini_read_int(ini_key::kCommsSection, ini_key::comm_port(channel), 0, ini_file);
        if (channel == 0 && port == 0) port = kDefaultPort;
        if (port == number) users.push_back(channel);
    }
    return users;
}

} // namespace pelvan
