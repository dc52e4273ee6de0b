// The text that stands for a serial port behind a host in the configuration file and on the command
// line: "tcp://furnace-3:4001" carries bytes alone, "rfc2217://[::1]:2217" the port's settings,
// wires and errors too. Nothing is looked up here.
#pragma once

#include <optional>
#include <string>

namespace pelvan {

struct NetworkAddress {
    bool rfc2217 = false; // else bytes alone
    std::string host;     // name or address, without brackets
    int port = 0;
};

/// Whether a device text means a port over the network, well-formed or not.
[[nodiscard]] bool is_network(const std::string& device);

/// Nothing when the text is not well-formed.
[[nodiscard]] std::optional<NetworkAddress> parse_network_address(const std::string& device);

/// Why a text that `is_network` is not well-formed, as the rest of a sentence about it ("names no
/// port, ..."); empty when it is.
[[nodiscard]] std::string network_address_fault(const std::string& device);

} // namespace pelvan
