// Names of hosts to addresses, by the system's ways.
#pragma once

#include <netinet/in.h>

#include <string>
#include <vector>

namespace pelvan {

struct Lookup {
    std::vector<sockaddr_in6> addresses; // or sockaddr_in, in the order in which to try them
    int error = 0;                       // else an error number of serial_port.h, and why
    std::string reason;
};

/// The addresses have the port. Blocks for as long as the system asks its name servers, which may
/// be half a minute; for an address not at all.
[[nodiscard]] Lookup look_up(const std::string& host, int port);

} // namespace pelvan
