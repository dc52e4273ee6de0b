#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <QSocketNotifier>
#include <array>
#include <utility>

#include "desktop/system/end_signals.h"

namespace pelvan::desktop {
namespace {

constexpr std::array kSignals{SIGTERM, SIGINT, SIGHUP};

/// Both ends of the pipe through which a handler, which may do next to nothing, wakes the loop.
std::array<int, 2> pipe_ends{-1, -1};
std::array<struct sigaction, kSignals.size()> former{};
struct sigaction former_pipe {};

volatile sig_atomic_t signal_came = 0;

struct sigaction action(void (*handler)(int)) {
    struct sigaction made {};
    made.sa_handler = handler;
    made.sa_flags = SA_RESTART;
    return made;
}

/// A second interrupt ends the process at once. The end of the session may come twice, from the
/// terminal and from the shell, and only ever asks.
void told(int) {
    signal_came = 1;
    const struct sigaction usual = action(SIG_DFL);
    for (const int each : kSignals)
        if (each != SIGHUP) sigaction(each, &usual, nullptr);
    const char byte = 0;
    [[maybe_unused]] const auto ignored = ::write(pipe_ends[1], &byte, 1);
}

} // namespace

EndSignals::EndSignals(std::function<void()> end) {
    if (::pipe(pipe_ends.data()) != 0) return; // they end the program as ever
    for (const int each : pipe_ends) {
        ::fcntl(each, F_SETFD, FD_CLOEXEC);
        ::fcntl(each, F_SETFL, O_NONBLOCK);
    }
    auto* notifier = new QSocketNotifier(pipe_ends[0], QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this, [notifier, end = std::move(end)] {
        notifier->setEnabled(false);
        end();
    });
    const struct sigaction asked = action(told);
    for (std::size_t i = 0; i < kSignals.size(); ++i) {
        sigaction(kSignals[i], nullptr, &former[i]);
        if (former[i].sa_handler != SIG_IGN) sigaction(kSignals[i], &asked, nullptr);
    }
    // A terminal that is gone must not end the windows when something is printed.
    const struct sigaction ignored = action(SIG_IGN);
    sigaction(SIGPIPE, &ignored, &former_pipe);
}

EndSignals::~EndSignals() {
    signal_came = 0;
    if (pipe_ends[0] < 0) return;
    for (std::size_t i = 0; i < kSignals.size(); ++i)
        sigaction(kSignals[i], &former[i], nullptr);
    sigaction(SIGPIPE, &former_pipe, nullptr);
    for (int& end : pipe_ends)
        ::close(std::exchange(end, -1));
}

bool EndSignals::pending() {
    return signal_came != 0;
}

} // namespace pelvan::desktop
