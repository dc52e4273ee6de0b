// Names of hosts to addresses, by the system's ways.
#pragma once

#include <string>
#include <vector>

namespace pelvan {

struct Lookup {
    std::vector<std::string> addresses; // numeric, in the order in which they should be tried
    int error = 0;                      // else an error number of serial_port.h, and why
    std::string reason;
};

/// Blocks for as long as the system asks its name servers, which may be half a minute; for an
/// address not at all.
[[nodiscard]] Lookup look_up(const std::string& host);

} // namespace pelvan
