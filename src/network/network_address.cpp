#include "network/network_address.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "text/numbers.h"
#include "text/strings.h"

namespace pelvan {
namespace {

constexpr std::string_view kTcp = "TCP://";
constexpr std::string_view kRfc2217 = "RFC2217://";
constexpr std::size_t kMaxHostLength = 253; // of a name in the domain name system
constexpr long kMaxPort = 65535;

constexpr std::string_view kLettersAndDigits =
    "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789";

bool consists_of(std::string_view text, std::string_view others) {
    return std::all_of(text.begin(), text.end(), [others](char character) {
        return kLettersAndDigits.find(character) != std::string_view::npos ||
               others.find(character) != std::string_view::npos;
    });
}

struct Reading {
    NetworkAddress address;
    std::string fault;
};

Reading faulty(std::string fault) {
    return {{}, std::move(fault)};
}

/// The host and what stands behind it, which begins with the colon of the port or is empty.
struct Parts {
    std::string_view host;
    std::string_view rest;
    bool bracketed;
};

std::optional<Parts> split_host(std::string_view text) {
    if (!text.starts_with('[')) {
        const std::size_t colon = std::min(text.find(':'), text.size());
        return Parts{text.substr(0, colon), text.substr(colon), false};
    }
    const std::size_t close = text.find(']');
    if (close == std::string_view::npos) return {};
    return Parts{text.substr(1, close - 1), text.substr(close + 1), true};
}

Reading read(const std::string& device) {
    const std::string scheme = upper_case(device.substr(0, kRfc2217.size()));
    const bool rfc2217 = scheme.starts_with(kRfc2217);
    const std::string form = rfc2217 ? "rfc2217://" : "tcp://";
    const auto parts = split_host(std::string_view(device).substr(form.size()));
    if (!parts) return faulty("lacks the bracket behind the address");
    const auto& [host, rest, bracketed] = *parts;
    if (!bracketed && rest.find(':', 1) != std::string_view::npos)
        return faulty("needs brackets round an IPv6 address, as in " + form + "[::1]:4001");
    if (host.empty()) return faulty("names no host: write " + form + "host:port");
    if (host.size() > kMaxHostLength || !consists_of(host, bracketed ? ":.%_-" : "._-"))
        return faulty("names a host that cannot be: names have letters, digits, dots and hyphens, "
                      "no blanks");
    if (rest.size() < 2 || rest.front() != ':')
        return faulty("names no port: write " + form + "host:port");
    const auto port = whole_number(rest.substr(1), 1, kMaxPort);
    if (!port) return faulty("names no port from 1 to 65535");
    return {{rfc2217, std::string(host), static_cast<int>(*port)}, ""};
}

} // namespace

bool is_network(const std::string& device) {
    const std::string scheme = upper_case(device.substr(0, kRfc2217.size()));
    return scheme.starts_with(kTcp) || scheme.starts_with(kRfc2217);
}

std::optional<NetworkAddress> parse_network_address(const std::string& device) {
    if (!is_network(device)) return {};
    Reading reading = read(device);
    if (!reading.fault.empty()) return {};
    return std::move(reading.address);
}

std::string network_address_fault(const std::string& device) {
    return read(device).fault;
}

} // namespace pelvan
