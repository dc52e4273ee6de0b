#include <fcntl.h>
#include <unistd.h>

#include <QSocketNotifier>
#include <array>
#include <csignal>
#include <utility>

#include "desktop/end_signals.h"

namespace pelvan::desktop {
namespace {

constexpr std::array kSignals{SIGTERM, SIGINT, SIGHUP};

/// Both ends of the pipe through which a handler, which may do next to nothing, wakes the loop.
std::array<int, 2> pipe_ends{-1, -1};

void told(int signal_number) {
    std::signal(signal_number, SIG_DFL);
    const char byte = 0;
    [[maybe_unused]] const auto ignored = ::write(pipe_ends[1], &byte, 1);
}

} // namespace

EndSignals::EndSignals(std::function<void()> end) {
    if (::pipe2(pipe_ends.data(), O_CLOEXEC | O_NONBLOCK) != 0) return; // they end it as ever
    auto* notifier = new QSocketNotifier(pipe_ends[0], QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this, [notifier, end = std::move(end)] {
        notifier->setEnabled(false);
        end();
    });
    for (const int each : kSignals)
        std::signal(each, told);
}

EndSignals::~EndSignals() {
    if (pipe_ends[0] < 0) return;
    for (const int each : kSignals)
        std::signal(each, SIG_DFL);
    for (int& end : pipe_ends)
        ::close(std::exchange(end, -1));
}

} // namespace pelvan::desktop
