#include "settings/channel_choices.h"

#include <array>

namespace pelvan {
namespace {

struct Choice {
    std::string (*key)(int channel);
    const char* on;
    const char* off;
    bool ChannelChoices::*member;
};

constexpr std::array<Choice, 3> kChoices{
    {{ini_key::exchange, "COMPLETE", "QUIET", &ChannelChoices::complete},
     {ini_key::echo, ini_key::kYes, "NO", &ChannelChoices::echo},
     {ini_key::xon_xoff, "PROGRAM", "DRIVER", &ChannelChoices::own_handshake}}};

} // namespace

ChannelChoices read_choices(const ConfigState& config, int channel) {
    ChannelChoices choices;
    for (const Choice& each : kChoices)
        choices.*each.member = ini_read_string(ini_key::kCommsSection, each.key(channel), {},
                                               config.gIniFile) == each.on;
    return choices;
}

bool store_choices(const ConfigState& config, int channel, const ChannelChoices& choices) {
    const ChannelChoices stored = read_choices(config, channel);
    for (const Choice& each : kChoices)
        if (stored.*each.member != choices.*each.member)
            ini_write_string(ini_key::kCommsSection, each.key(channel),
                             choices.*each.member ? each.on : each.off, config.gIniFile);
    return read_choices(config, channel) == choices;
}

} // namespace pelvan
