#include "network/module/network_line.h"

#include <poll.h>

#include <algorithm>
#include <cmath>
#include <utility>

#include "platform/run_time_error.h"

namespace pelvan {
namespace {

using std::chrono::steady_clock;

constexpr std::chrono::seconds kWriteGrace{2}; // beyond the wire time of the bytes
constexpr double kWriteWaitMs = 10;
constexpr char kXon = 0x11;
constexpr char kXoff = 0x13;

} // namespace

NetworkLine::NetworkLine(std::unique_ptr<FarPort> far, std::unique_ptr<Connection> connection,
                         const NetworkAttempt& attempt)
    : far_(std::move(far)), connection_(std::move(connection)),
      name_(attempt.address.host + ":" + std::to_string(attempt.address.port)),
      tell_lost_(attempt.lost), character_time_us_(character_time_us(attempt.settings)),
      strips_flow_control_(attempt.settings.xon_xoff && !attempt.address.rfc2217) {
    connection_->line_state = [this](unsigned state) { count(state); };
    connection_->received.clear(); // what arrived while nobody had the line open
}

void NetworkLine::count(unsigned state) {
    errors_.parity += (state & SERGENSIO_LINESTATE_PARITY_ERR) != 0 ? 1 : 0;
    errors_.framing += (state & SERGENSIO_LINESTATE_FRAMING_ERR) != 0 ? 1 : 0;
    errors_.overruns += (state & SERGENSIO_LINESTATE_OVERRUN_ERR) != 0 ? 1 : 0;
    errors_.breaks += (state & SERGENSIO_LINESTATE_BREAK) != 0 ? 1 : 0;
}

std::optional<LineErrors> NetworkLine::errors() const {
    if (!connection_->far_port()) return {};
    return errors_;
}

void NetworkLine::take_in() {
    for (const char value : std::exchange(connection_->received, {})) {
        if (strips_flow_control_ && (value == kXon || value == kXoff))
            stopped_ = value == kXoff;
        else
            received_ += value;
    }
    if (connection_->lost() != 0 && tell_lost_)
        std::exchange(tell_lost_, nullptr)("the connection was lost: " +
                                           network_error_text(connection_->lost()));
}

bool NetworkLine::read_into(std::string& buffer) {
    connection_->work_off();
    take_in();
    buffer += std::exchange(received_, {});
    return connection_->lost() == 0;
}

void NetworkLine::wait_for_input(double timeout_ms) {
    const auto end = steady_clock::now() +
                     std::chrono::nanoseconds(std::llround(std::max(timeout_ms, 0.0) * 1e6));
    for (;;) {
        take_in();
        const double left_ms =
            std::chrono::duration<double, std::milli>(end - steady_clock::now()).count();
        if (!received_.empty() || connection_->lost() != 0 || left_ms <= 0) return;
        connection_->work(left_ms);
    }
}

void NetworkLine::discard_input() {
    connection_->work_off();
    take_in();
    received_.clear();
    fail_if_lost();
}

void NetworkLine::write(const std::string& bytes) {
    const double wire_time_us = character_time_us_ * static_cast<double>(bytes.size());
    const auto deadline =
        steady_clock::now() + std::chrono::microseconds(std::llround(wire_time_us)) + kWriteGrace;
    connection_->work_off(); // the server may have gone, or have asked to stop
    take_in();
    std::size_t done = 0;
    while (done < bytes.size()) {
        fail_if_lost();
        if (may_send()) done += connection_->send(bytes.data() + done, bytes.size() - done);
        if (done == bytes.size()) return;
        if (steady_clock::now() >= deadline)
            throw RunTimeError(error_number::kDeviceInputOutput, name_ + " (time-out)");
        connection_->work(kWriteWaitMs);
        take_in();
    }
}

void NetworkLine::fail_if_lost() const {
    if (connection_->lost() != 0) throw RunTimeError(error_number::kDeviceInputOutput, name_);
}

void NetworkLine::set_rts(bool on) {
    if (sergensio* const port = connection_->far_port())
        sergensio_rts(port, on ? SERGENSIO_RTS_ON : SERGENSIO_RTS_OFF, nullptr, nullptr);
    fail_if_lost();
}

void NetworkLine::set_dtr(bool on) {
    if (sergensio* const port = connection_->far_port())
        sergensio_dtr(port, on ? SERGENSIO_DTR_ON : SERGENSIO_DTR_OFF, nullptr, nullptr);
    fail_if_lost();
}

bool NetworkLine::hung_up() const {
    pollfd watched{connection_->descriptor(), POLLRDHUP, 0};
    return connection_->lost() != 0 ||
           (::poll(&watched, 1, 0) > 0 && (watched.revents & (POLLRDHUP | POLLHUP | POLLERR)) != 0);
}

std::string network_error_text(int error) {
    switch (error) {
    case GE_CONNREFUSE:
        return "no server listens on this port of the host";
    case GE_REMCLOSE:
        return "the server closed it; it may serve another client";
    case GE_TIMEDOUT:
        return "the host does not answer";
    case GE_HOSTDOWN:
    case GE_OSERR: // as no way to the host's network
        return "the host cannot be reached";
    default:
        return gensio_err_to_str(error);
    }
}

} // namespace pelvan
