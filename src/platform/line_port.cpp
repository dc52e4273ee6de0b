#include "platform/line_port.h"

#include <utility>

#include "platform/run_time_error.h"

namespace pelvan {
namespace {

constexpr std::int16_t kXonXoff = 1;

/// What waits unread never grows beyond this; what follows is dropped, as a full hardware buffer
/// drops it.
constexpr std::size_t kReceiveLimit = std::size_t{1} << 20;

} // namespace

LinePort::LinePort(DeviceMap devices, LineOpener opener)
    : devices_(std::move(devices)), opener_(std::move(opener)) {}

void LinePort::set_CommPort(std::int16_t number) {
    if (open_) throw RunTimeError(error_number::kOpenNotAllowed);
    if (!is_port_number(number)) throw RunTimeError(error_number::kInvalidPortNumber);
    comm_port_ = number;
}

void LinePort::set_DTREnable(bool on) {
    dtr_ = on;
    if (open_) use_line([on](SerialLine& line) { line.set_dtr(on); });
}

void LinePort::set_RTSEnable(bool on) {
    rts_ = on;
    if (open_) use_line([on](SerialLine& line) { line.set_rts(on); });
}

void LinePort::set_PortOpen(bool open_it) {
    if (open_it)
        open();
    else
        close();
}

/// A line that is there is not read: bytes taken here would announce themselves to nobody.
bool LinePort::lost() {
    if (line_ && line_->hung_up()) {
        pump(); // what had arrived
        if (line_) release_line();
    }
    return open_ && !line_;
}

void LinePort::open() {
    if (open_) throw RunTimeError(error_number::kPortAlreadyOpen);
    const auto device = devices_(comm_port_);
    if (!device) throw RunTimeError(error_number::kInvalidPortNumber);
    auto settings = parse_line_settings(settings_);
    if (!settings) throw RunTimeError(error_number::kCannotSetState, settings_);
    settings->xon_xoff = handshaking_ == kXonXoff;
    settings->foreign_parity = other_parity_ != '\0' && other_parity_ != settings->parity;
    if (settings->foreign_parity) settings->parity = other_parity_;
    settings->dtr = dtr_;
    settings->rts = rts_;
    line_ = opener_(*device, *settings);
    open_ = true;
    watch_changed.raise();
}

void LinePort::close() {
    if (!open_) return;
    open_ = false;
    loss_reported_ = false;
    input_taken_ = false;
    received_.clear();
    release_line();
}

/// Gives up the line at once: a dead handle that is kept makes the system give the adapter another
/// name when it comes back. Whoever watches the handle is notified while it is still a valid one.
void LinePort::release_line() {
    const auto released = std::move(line_);
    watch_changed.raise();
}

long LinePort::InBufferCount() {
    require_open();
    pump();
    if (received_.empty() && !line_) {
        // One empty answer after the last bytes of a lost line: whoever collects a reply until the
        // count falls to 0 thus gets the short reply before the next call gets the error.
        if (!std::exchange(input_taken_, false))
            throw RunTimeError(error_number::kCannotReadDevice);
    }
    return static_cast<long>(received_.size());
}

void LinePort::set_InBufferCount(long zero) {
    require_open();
    if (zero != 0) throw RunTimeError(error_number::kIllegalCall);
    received_.clear();
    input_taken_ = false;
    use_line([](SerialLine& line) { line.discard_input(); });
}

std::string LinePort::Input() {
    require_open();
    pump();
    if (received_.empty()) {
        if (!line_) throw RunTimeError(error_number::kCannotReadDevice);
        return {};
    }
    input_taken_ = true;
    return std::exchange(received_, {});
}

void LinePort::wait_for_input(double timeout_ms) {
    require_open();
    if (received_.empty() && line_) line_->wait_for_input(timeout_ms);
}

void LinePort::set_Output(const std::string& bytes) {
    require_open();
    input_taken_ = false;
    use_line([&bytes](SerialLine& line) { line.write(bytes); });
}

void LinePort::set_RThreshold(std::int16_t count) {
    threshold_ = count;
    watch_changed.raise();
}

std::optional<LineErrors> LinePort::line_errors() const {
    return line_ ? line_->errors() : std::nullopt;
}

int LinePort::CommID() const {
    return line_ ? line_->descriptor() : -1;
}

// The wire alone: DTREnable and RTSEnable keep what they say and rule again at the next opening.
void LinePort::EscapeCommFunction(EscapeCode code) {
    require_open();
    use_line([code](SerialLine& line) {
        switch (code) {
        case EscapeCode::SETRTS:
        case EscapeCode::CLRRTS:
            return line.set_rts(code == EscapeCode::SETRTS);
        case EscapeCode::SETDTR:
        case EscapeCode::CLRDTR:
            return line.set_dtr(code == EscapeCode::SETDTR);
        }
    });
}

void LinePort::check_receive() {
    if (open_) pump();
    const bool enough = threshold_ > 0 && received_.size() >= static_cast<std::size_t>(threshold_);
    const bool last_bytes = loss_to_report() && !received_.empty();
    if (!enough && !last_bytes) {
        if (!loss_to_report()) return;
        loss_reported_ = true;
        input_taken_ = false; // so that this event's handler meets the error
    }
    OnComm.raise(); // last, for the handler may end this object
}

bool LinePort::loss_to_report() const {
    return open_ && !line_ && threshold_ > 0 && !loss_reported_;
}

void LinePort::require_open() const {
    if (!open_) throw RunTimeError(error_number::kPortNotOpen);
}

void LinePort::pump() {
    if (!line_) return;
    const bool there = line_->read_into(received_);
    if (received_.size() > kReceiveLimit) received_.resize(kReceiveLimit);
    if (!there) release_line();
}

/// 57 when the line is lost. After a failure the line is read once, for that tells a line that is
/// gone from one that merely takes no bytes.
void LinePort::use_line(const std::function<void(SerialLine&)>& action) {
    if (!line_) throw RunTimeError(error_number::kDeviceInputOutput);
    try {
        action(*line_);
    } catch (const RunTimeError&) {
        pump();
        throw;
    }
}

} // namespace pelvan
