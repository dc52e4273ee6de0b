#include "network/network_lines.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <system_error>
#include <thread>
#include <utility>

#include "platform/run_time_error.h"
#include "platform/shared_library.h"

namespace pelvan {
namespace {

constexpr int kUnsupportedDevice = 8006; // as `open_port` has a text for it
constexpr char kNoLibrary[] =
    "ports over the network need the library libgensio (Debian: libgensio4), and it cannot be "
    "loaded";

std::string late_reason(NetworkPhase phase) {
    switch (phase) {
    case NetworkPhase::LookingUp:
        return "the host's name was not found out in time";
    case NetworkPhase::Connecting:
        return "the host does not answer";
    case NetworkPhase::Setting:
        break;
    }
    return "the server does not answer in RFC 2217; a plain one is reached by tcp://";
}

} // namespace

FindNetworkModule network_module_in(const std::string& folder) {
    return [folder](std::string& error) {
        const auto found = find_in_library(folder + "/" + kNetworkModule, kOpenNetworkLine, error);
        return reinterpret_cast<OpenNetworkLine>(found);
    };
}

/// What the thread of an opening and whoever waits for it share.
class NetworkLines::Opening {
  public:
    explicit Opening(NetworkAttempt& wanted) {
        attempt.address = std::move(wanted.address);
        attempt.settings = wanted.settings;
        attempt.timeout_ms = wanted.timeout_ms;
        attempt.looked_up = std::move(wanted.looked_up);
        attempt.lost = std::move(wanted.lost);
    }

    void run(OpenNetworkLine module) {
        NetworkOpening result;
        module(attempt, result);
        const std::lock_guard lock(mutex_);
        if (given_up_)
            result.line.reset(); // before anybody opens another
        else
            result_ = std::move(result);
        ended_ = true;
        end_.notify_all();
    }

    /// What became of it, or nothing when it is still under way after the time.
    std::optional<NetworkOpening> wait(int timeout_ms) {
        std::unique_lock lock(mutex_);
        const bool ended =
            end_.wait_for(lock, std::chrono::milliseconds(timeout_ms), [this] { return ended_; });
        given_up_ = !ended;
        if (!ended) return {};
        return std::move(result_);
    }

    NetworkAttempt attempt;

  private:
    std::mutex mutex_;
    std::condition_variable end_;
    bool ended_ = false;
    bool given_up_ = false;
    NetworkOpening result_;
};

std::unique_ptr<SerialLine> NetworkLines::open(const std::string& device,
                                               const LineSettings& settings) {
    const auto address = parse_network_address(device);
    if (!address) fail(device, error_number::kInvalidPortNumber, network_address_fault(device));
    // Asked for on purpose, and no trouble of the port: bytes alone have no parity.
    if (settings.foreign_parity && !address->rfc2217)
        throw RunTimeError(error_number::kCannotSetState, device + ": no parity");
    std::string error;
    const OpenNetworkLine module = find_module_(error);
    if (!module) fail(device, kUnsupportedDevice, std::string(kNoLibrary) + ": " + error);
    const double begin_ms = tick_.timeGetTime();
    opening.raise(device);
    int timeout_ms = patience_for(device);
    // One at a time: a server for one client would take the next one for a second. What is waited
    // for the earlier one is no more there for this one.
    if (const auto earlier = given_up_.find(device); earlier != given_up_.end()) {
        if (!earlier->second->wait(timeout_ms * 3 / 4)) fail_late(device, *earlier->second);
        keep_addresses(device, *earlier->second);
        given_up_.erase(earlier);
        const double waited_ms = tick_span(begin_ms, tick_.timeGetTime());
        timeout_ms -= static_cast<int>(std::min(waited_ms, timeout_ms * 3 / 4.0));
    }
    const auto opening_now = begin(device, settings, timeout_ms, module);
    auto result = opening_now->wait(timeout_ms);
    if (!result) {
        silent_since_.try_emplace(device, tick_.timeGetTime());
        given_up_[device] = opening_now;
        fail_late(device, *opening_now);
    }
    keep_addresses(device, *opening_now);
    if (result->late) silent_since_.try_emplace(device, tick_.timeGetTime());
    if (!result->line) fail(device, result->error, result->reason);
    silent_since_.erase(device);
    troubles_->now.erase(device);
    return std::move(result->line);
}

std::shared_ptr<NetworkLines::Opening> NetworkLines::begin(const std::string& device,
                                                           const LineSettings& settings,
                                                           int timeout_ms, OpenNetworkLine module) {
    NetworkAttempt wanted;
    wanted.address = *parse_network_address(device);
    wanted.settings = settings;
    wanted.timeout_ms = timeout_ms * 9 / 10; // it knows best what it has waited for
    wanted.looked_up = known_addresses(device);
    wanted.lost = [device, troubles = troubles_](const std::string& reason) {
        troubles->tell_loss(device, reason);
    };
    auto opening_now = std::make_shared<Opening>(wanted);
    try {
        std::thread([opening_now, module] { opening_now->run(module); }).detach();
    } catch (const std::system_error& error) {
        fail(device, error_number::kHardwareNotAvailable, error.what());
    }
    return opening_now;
}

/// Of an opening that has ended, whatever its end.
void NetworkLines::keep_addresses(const std::string& device, const Opening& one) {
    if (one.attempt.looked_up)
        looked_up_.try_emplace(device, LookUp{one.attempt.looked_up, tick_.timeGetTime()});
}

std::shared_ptr<const void> NetworkLines::known_addresses(const std::string& device) {
    const auto known = looked_up_.find(device);
    if (known == looked_up_.end()) return nullptr;
    if (tick_span(known->second.at, tick_.timeGetTime()) < patience_.recent_ms)
        return known->second.addresses;
    looked_up_.erase(known);
    return nullptr;
}

int NetworkLines::patience_for(const std::string& device) {
    const auto silent = silent_since_.find(device);
    if (silent == silent_since_.end()) return patience_.first_ms;
    if (tick_span(silent->second, tick_.timeGetTime()) < patience_.recent_ms)
        return patience_.again_ms;
    silent_since_.erase(silent);
    return patience_.first_ms;
}

std::string NetworkLines::trouble(const std::string& device) const {
    const auto found = troubles_->now.find(device);
    return found == troubles_->now.end() ? "" : found->second;
}

void NetworkLines::fail_late(const std::string& device, const Opening& one) {
    const NetworkPhase phase = one.attempt.phase;
    fail(device,
         phase == NetworkPhase::Setting ? error_number::kCannotSetState
                                        : error_number::kHardwareNotAvailable,
         late_reason(phase));
}

/// Once in all: a server may close after each reply, or at once, and each command opens it anew.
void NetworkLines::Troubles::tell_loss(const std::string& device, const std::string& reason) {
    now[device] = reason;
    if (std::exchange(last_loss[device], reason) != reason) told.raise(device + ": " + reason);
}

void NetworkLines::fail(const std::string& device, int error, const std::string& reason) {
    // Once for an outage: a tool may ask for hundreds of registers meanwhile.
    if (std::exchange(troubles_->now[device], reason) != reason)
        troubles_->told.raise(device + ": " + reason);
    throw RunTimeError(error, device + ": " + reason);
}

} // namespace pelvan
