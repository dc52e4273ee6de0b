// What may be chosen for a channel beside its required keys: how replies end, whether the line
// echoes, and who looks after XON and XOFF. All are off without their keys.
#pragma once

#include "config/ini.h"

namespace pelvan {

/// From this rate on the settle time is 0, so that a pause cuts replies.
inline constexpr double kNoPauseBaud = 38400;

struct ChannelChoices {
    bool complete = false;      // replies end with their frame
    bool echo = false;          // the line gives back what is sent
    bool own_handshake = false; // XON/XOFF by the program, where the channel has it
    bool operator==(const ChannelChoices&) const = default;
};

/// What the configuration file says of a channel.
[[nodiscard]] ChannelChoices read_choices(const ConfigState& config, int channel);
/// Writes the keys whose choice is another one than the file's; false when they do not stand in the
/// file then. They take effect with the next rebuild of the channels.
[[nodiscard]] bool store_choices(const ConfigState& config, int channel,
                                 const ChannelChoices& choices);

} // namespace pelvan
