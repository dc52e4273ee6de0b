#include "serial/handshake.h"

#include <algorithm>

namespace pelvan {
namespace {

constexpr char kXon = 0x11;
constexpr char kXoff = 0x13;

/// What waits unread wakes nobody: then the line is looked at so often.
constexpr double kLookEveryMs = 1;

/// Sleeps until something comes, at most so long, and takes it in.
void take_in(SerialPort& port, TickSource& tick, double at_most_ms) {
    if (port.InBufferCount() > 0)
        tick.sleep_for_ms(std::min(at_most_ms, kLookEveryMs));
    else
        port.wait_for_input(at_most_ms);
    static_cast<void>(port.InBufferCount());
}

} // namespace

std::string Handshake::receive(std::string_view bytes) {
    std::string others;
    for (const char byte : bytes) {
        if (byte == kXon || byte == kXoff)
            stopped_ = byte == kXoff;
        else
            others += byte;
    }
    return others;
}

std::size_t Handshake::send(SerialPort& port, TickSource& tick, std::string_view bytes,
                            const Pace& pace) {
    double patience_ms = pace.timeout_ms;
    static_cast<void>(port.InBufferCount());
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        while (stopped_ && patience_ms > 0) {
            const double begun_ms = tick.precise_ms();
            take_in(port, tick, patience_ms);
            patience_ms -= tick.precise_ms() - begun_ms;
        }
        if (stopped_) {
            stopped_ = false;
            return i;
        }
        port.set_Output(std::string(1, bytes[i]));
        const double out_ms = tick.precise_ms() + pace.character_ms;
        double left_ms = pace.character_ms;
        while (left_ms > 0) {
            take_in(port, tick, left_ms);
            left_ms = out_ms - tick.precise_ms();
        }
    }
    return bytes.size();
}

} // namespace pelvan
