#include "network/module/far_port.h"

#include <algorithm>
#include <cmath>

namespace pelvan {
namespace {

constexpr double kWaitMs = 20;
constexpr double kSpeedTolerance = 0.03; // servers round to what their hardware divides to
constexpr unsigned kOneAndAHalfStopBits = 3;
constexpr unsigned kWatchedErrors = SERGENSIO_LINESTATE_OVERRUN_ERR |
                                    SERGENSIO_LINESTATE_PARITY_ERR |
                                    SERGENSIO_LINESTATE_FRAMING_ERR | SERGENSIO_LINESTATE_BREAK;

unsigned parity_code(char parity) {
    switch (parity) {
    case 'O':
        return SERGENSIO_PARITY_ODD;
    case 'E':
        return SERGENSIO_PARITY_EVEN;
    case 'M':
        return SERGENSIO_PARITY_MARK;
    case 'S':
        return SERGENSIO_PARITY_SPACE;
    default:
        return SERGENSIO_PARITY_NONE;
    }
}

unsigned stop_code(double stop_bits) {
    if (stop_bits > 1 && stop_bits < 2) return kOneAndAHalfStopBits;
    return stop_bits > 1 ? 2 : 1;
}

} // namespace

FarPort::FarPort(const LineSettings& settings)
    : line_(settings), format_{{
                           {sergensio_baud, static_cast<unsigned>(settings.baud_rate),
                            kSpeedTolerance},
                           {sergensio_datasize, static_cast<unsigned>(settings.data_bits), 0},
                           {sergensio_parity, parity_code(settings.parity), 0},
                           {sergensio_stopbits, stop_code(settings.stop_bits), 0},
                       }} {}

FarPort::Outcome FarPort::set_up(Connection& connection, Deadline deadline) {
    sergensio* const port = connection.far_port();
    if (!port) return Outcome::Refused;
    for (Setting& setting : format_) {
        const auto note = [](sergensio*, int error, unsigned value, void* data) {
            auto& self = *static_cast<Setting*>(data);
            const double deviation = std::abs(static_cast<double>(value) - self.wanted);
            self.answered = true;
            self.taken = error == 0 && deviation <= self.tolerance * self.wanted;
        };
        if (setting.set(port, setting.wanted, note, &setting) != 0) return Outcome::Refused;
    }
    while (!all_answered()) {
        if (connection.lost() != 0 || std::chrono::steady_clock::now() >= deadline)
            return Outcome::Silent;
        connection.work(kWaitMs);
    }
    const bool taken = std::all_of(format_.begin(), format_.end(),
                                   [](const Setting& setting) { return setting.taken; });
    if (!taken) return Outcome::Refused;
    set_wires(port);
    return Outcome::Set;
}

/// Nobody's word is waited for: ports without these wires, and servers without these messages, say
/// nothing. They come last, because the library tells no answer that comes behind one missing.
void FarPort::set_wires(sergensio* port) const {
    sergensio_flowcontrol(
        port, line_.xon_xoff ? SERGENSIO_FLOWCONTROL_XON_XOFF : SERGENSIO_FLOWCONTROL_NONE, nullptr,
        nullptr);
    sergensio_dtr(port, line_.dtr ? SERGENSIO_DTR_ON : SERGENSIO_DTR_OFF, nullptr, nullptr);
    sergensio_rts(port, line_.rts ? SERGENSIO_RTS_ON : SERGENSIO_RTS_OFF, nullptr, nullptr);
    sergensio_linestate(port, kWatchedErrors);
}

bool FarPort::all_answered() const {
    return std::all_of(format_.begin(), format_.end(),
                       [](const Setting& setting) { return setting.answered; });
}

} // namespace pelvan
