#include "simulator/line/pty_server.h"

// Only this header tells a rate that is none of the usual ones. It cannot be
// included together with <termios.h>, which linux_pty.cpp needs.
#include <asm/termbits.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cmath>
#include <cstring>

#include "simulator/line/linux_pty.h"
#include "simulator/line/plug.h"
#include "simulator/line/simulator_registry.h"
#include "simulator/line/wire.h"

namespace pelvan::simulator {
namespace {

constexpr double kMaxWaitMs = 100; // how late a stop is noticed at most
constexpr double kUsualBaud = 9600;

double baud_rate(const termios2& settings) {
    return settings.c_ospeed == 0 ? kUsualBaud : settings.c_ospeed;
}

/// A pseudo-terminal has no parity and always 8 bits: its rate alone tells what a client has set.
bool hears(const SimulatedDevice& device, int master) {
    termios2 settings{};
    return !device.line || ::ioctl(master, TCGETS2, &settings) != 0 ||
           baud_rate(settings) == device.line->baud_rate;
}

/// What the client's end is set to; asked of the controlling side.
double character_ms(int master) {
    termios2 settings{};
    if (::ioctl(master, TCGETS2, &settings) != 0) return 10000 / kUsualBaud;
    double bits = 2;
    switch (settings.c_cflag & CSIZE) {
    case CS5:
        bits += 5;
        break;
    case CS6:
        bits += 6;
        break;
    case CS7:
        bits += 7;
        break;
    default:
        bits += 8;
        break;
    }
    if ((settings.c_cflag & PARENB) != 0) ++bits;
    if ((settings.c_cflag & CSTOPB) != 0) ++bits;
    return bits * 1000 / baud_rate(settings);
}

double now_ms() {
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration<double, std::milli>(now).count();
}

/// Whether `fd` is readable before the time is over.
bool readable_within(int fd, double ms) {
    const auto nanoseconds = static_cast<long>(std::ceil(std::max(ms, 0.0) * 1e6));
    const timespec time{nanoseconds / 1000000000, nanoseconds % 1000000000};
    pollfd watched{fd, POLLIN, 0};
    return ::ppoll(&watched, 1, &time, nullptr) > 0 && (watched.revents & POLLIN) != 0;
}

/// Carries bytes between the clients and a `Wire` or a `Plug`.
template <class Peer>
void serve(int master, Peer peer, const SimulatedDevice& device, const std::atomic<bool>& stop) {
    while (!stop) {
        const double next = peer.next_ms();
        const double wait = next < 0 ? kMaxWaitMs : std::min(next - now_ms(), kMaxWaitMs);
        if (readable_within(master, wait)) {
            std::array<char, 4096> bytes{};
            const ssize_t count = ::read(master, bytes.data(), bytes.size());
            if (count > 0 && hears(device, master)) {
                peer.set_char_ms(character_ms(master));
                peer.host_writes({bytes.data(), static_cast<std::size_t>(count)}, now_ms());
            }
        }
        const std::string due = peer.arrived(now_ms());
        // What a client does not read while its end is full is lost, as on a real line.
        if (!due.empty()) static_cast<void>(!::write(master, due.data(), due.size()));
    }
}

} // namespace

int serve_on_pty(const PtyServerOptions& options, std::atomic<bool>& stop,
                 const std::function<void(const std::string&)>& report) {
    const Pty pty;
    if (!pty.good()) {
        report(std::string("Cannot make a pseudo-terminal: ") + std::strerror(errno));
        return 1;
    }
    PtyLink link(options.link, pty.path());
    if (!options.link.empty()) {
        const std::string refusal = link.make();
        if (!refusal.empty()) {
            report("Cannot make the link: " + refusal);
            return 1;
        }
    }
    report("Serving " + served_device_text(options.device) + " on " +
           (options.link.empty() ? pty.path() : options.link + " (" + pty.path() + ")"));
    const double char_ms = character_ms(pty.master());
    if (options.device.loopback) {
        serve(pty.master(), Plug(options.device.jumper_in.value_or(true), char_ms), options.device,
              stop);
    } else {
        serve(pty.master(), Wire(make_station(options.device), char_ms), options.device, stop);
    }
    return 0;
}

} // namespace pelvan::simulator
