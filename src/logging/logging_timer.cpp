#include "logging/logging_timer.h"

#include "platform/run_time_error.h"

namespace pelvan {

void LoggingTimer::set_tick_ms(int ms) {
    if (ms == tick_ms_) return;
    tick_ms_ = ms;
    changed.raise();
}

void LoggingTimer::count_tick() {
    ++tick_total_;
    ticks_ = int32_from(ticks_ + 1.0);
}

void LoggingTimer::change(bool started, int holds) {
    const bool ran = running();
    started_ = started;
    holds_ = holds;
    if (running() != ran) changed.raise();
}

} // namespace pelvan
