// The Xon end of a simulated controller: commands and replies are lines that end in a carriage
// return. A read is answered with its value, a write with "OK", a refused command with "ERROR" and
// its code.
#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include "simulator/slaves/station.h"

namespace pelvan::simulator {

/// Replies to bytes that are whole lines of printable characters; nothing (and nothing done) when
/// they are not.
[[nodiscard]] std::optional<std::vector<Reply>> xon_replies(Station& station,
                                                            std::string_view bytes);

/// Whether bytes may be the beginning of a command that somebody is typing.
[[nodiscard]] bool is_xon_beginning(std::string_view bytes);

} // namespace pelvan::simulator
