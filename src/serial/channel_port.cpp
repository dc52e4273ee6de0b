#include "serial/channel_port.h"

#include <utility>

#include "platform/run_time_error.h"

namespace pelvan {

std::size_t waiting_bytes(SerialPort& port) {
    try {
        return static_cast<std::size_t>(port.InBufferCount());
    } catch (const RunTimeError&) {
        return 0;
    }
}

long FilteredPort::InBufferCount() {
    try {
        if (port().InBufferCount() > 0) waiting_ += filtered(port().Input());
    } catch (const RunTimeError&) {
        if (waiting_.empty()) throw; // else it is met by whoever asks when they are taken
    }
    return static_cast<long>(waiting_.size());
}

void FilteredPort::set_InBufferCount(long zero) {
    if (looks_at_all() && zero == 0) {
        if (port().InBufferCount() > 0) static_cast<void>(filtered(port().Input()));
    } else {
        port().set_InBufferCount(zero);
    }
    waiting_.clear();
}

std::string FilteredPort::Input() {
    if (waiting_.empty()) InBufferCount();
    return std::exchange(waiting_, {});
}

void FilteredPort::wait_for_input(double timeout_ms) {
    if (waiting_.empty()) port().wait_for_input(timeout_ms);
}

} // namespace pelvan
