#include <fcntl.h>
#include <unistd.h>

#include <QSocketNotifier>
#include <array>
#include <csignal>
#include <utility>

#include "desktop/system/end_signals.h"

namespace pelvan::desktop {
namespace {

constexpr std::array kSignals{SIGTERM, SIGINT, SIGHUP};

/// Both ends of the pipe through which a handler, which may do next to nothing, wakes the loop.
std::array<int, 2> pipe_ends{-1, -1};
std::array<void (*)(int), kSignals.size()> former{};

volatile std::sig_atomic_t signal_came = 0;

void told(int) {
    signal_came = 1;
    for (const int each : kSignals)
        std::signal(each, SIG_DFL);
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
    for (std::size_t i = 0; i < kSignals.size(); ++i) {
        former[i] = std::signal(kSignals[i], told);
        if (former[i] == SIG_IGN) std::signal(kSignals[i], SIG_IGN);
    }
}

EndSignals::~EndSignals() {
    signal_came = 0;
    if (pipe_ends[0] < 0) return;
    for (std::size_t i = 0; i < kSignals.size(); ++i)
        std::signal(kSignals[i], former[i]);
    for (int& end : pipe_ends)
        ::close(std::exchange(end, -1));
}

bool EndSignals::pending() {
    return signal_came != 0;
}

} // namespace pelvan::desktop
