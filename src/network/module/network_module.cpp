// The entry of the library for ports over the network.
#include "network/network_module.h"

#include <algorithm>
#include <chrono>

#include "network/module/far_port.h"
#include "network/module/lookup.h"
#include "network/module/network_line.h"
#include "platform/run_time_error.h"

#define PELVAN_EXPORT __attribute__((visibility("default")))

namespace pelvan {
namespace {

using std::chrono::steady_clock;

NetworkOpening refusal(int error, std::string reason, bool late = false) {
    return {nullptr, error, std::move(reason), late};
}

NetworkOpening not_agreed(bool late) {
    return refusal(error_number::kCannotSetState,
                   "the server does not answer in RFC 2217; a plain one is reached by tcp://",
                   late);
}

/// What the error of an opening means, whose connection may have come about all the same.
NetworkOpening refusal_of(int error, const Connection& connection, const NetworkAttempt& attempt) {
    const bool late = error == GE_TIMEDOUT;
    if (late && attempt.address.rfc2217 && connection.connected()) return not_agreed(late);
    return refusal(error_number::kHardwareNotAvailable, network_error_text(error), late);
}

/// The line of an open connection, whose far port is set up first where there is one.
NetworkOpening finish(std::unique_ptr<Connection> connection, NetworkAttempt& attempt,
                      Deadline deadline) {
    auto far = std::make_unique<FarPort>(attempt.settings);
    // Ends before the far port, on this way and in the line.
    std::unique_ptr<Connection> open = std::move(connection);
    if (attempt.address.rfc2217) {
        switch (far->set_up(*open, deadline)) {
        case FarPort::Outcome::Set:
            break;
        case FarPort::Outcome::Refused:
            if (!open->far_port()) return not_agreed(false);
            return refusal(error_number::kCannotSetState,
                           "the server has not set its port as it was asked to");
        case FarPort::Outcome::Silent:
            if (open->lost() != 0) return refusal_of(open->lost(), *open, attempt);
            return not_agreed(true);
        }
    }
    return {std::make_unique<NetworkLine>(std::move(far), std::move(open), attempt), 0, "", false};
}

NetworkOpening open_line(NetworkAttempt& attempt) {
    auto lookup = std::static_pointer_cast<const Lookup>(attempt.looked_up);
    if (!lookup) {
        lookup =
            std::make_shared<const Lookup>(look_up(attempt.address.host, attempt.address.port));
        if (lookup->error != 0) return refusal(lookup->error, lookup->reason);
        attempt.looked_up = lookup;
    }
    const Deadline deadline = steady_clock::now() + std::chrono::milliseconds(attempt.timeout_ms);
    NetworkOpening result = refusal(error_number::kHardwareNotAvailable, "the host has no address");
    auto addresses_left = static_cast<int>(lookup->addresses.size());
    const auto connected = [&attempt] {
        if (attempt.address.rfc2217) attempt.phase = NetworkPhase::Setting;
    };
    for (const sockaddr_in6& address : lookup->addresses) {
        attempt.phase = NetworkPhase::Connecting;
        // A share of the time each: a host may have an address that nothing leads to.
        const auto now = steady_clock::now();
        const Deadline end = now + std::max(deadline - now, {}) / addresses_left--;
        auto connection = std::make_unique<Connection>();
        const int error = connection->open(address, attempt.address.rfc2217, end, connected);
        if (error == 0) return finish(std::move(connection), attempt, deadline);
        result = refusal_of(error, *connection, attempt);
    }
    return result;
}

} // namespace
} // namespace pelvan

extern "C" PELVAN_EXPORT void pelvan_open_network_line(pelvan::NetworkAttempt& attempt,
                                                       pelvan::NetworkOpening& opening) {
    try {
        opening = pelvan::open_line(attempt);
    } catch (const std::exception& error) {
        opening = pelvan::refusal(pelvan::error_number::kHardwareNotAvailable, error.what());
    }
}
