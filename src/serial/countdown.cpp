#include "serial/countdown.h"

#include <algorithm>

#include "platform/run_time_error.h"

namespace pelvan {
namespace {

/// Required: at a wrap the largest value of the tick is added, not the number of its values, so
/// such a countdown ends 1 ms late. `tick_span` is the one to use elsewhere.
constexpr double kMaxTick = 4294967295.0;

} // namespace

std::int16_t CountdownPool::start_countdown(float duration_ms) {
    auto& in_use = state_.gTimerInUse;
    state_.gTimersInitialised = true;
    const auto slot = std::find(in_use.begin(), in_use.end(), false) - in_use.begin();
    if (slot == static_cast<std::ptrdiff_t>(in_use.size())) {
        state_.gTimerStart.push_back(0);
        state_.gTimerRemaining.push_back(0);
        in_use.push_back(false);
    }
    const std::size_t index = static_cast<std::size_t>(slot);
    state_.gTimerStart[index] = read_tick();
    state_.gTimerRemaining[index] = static_cast<double>(duration_ms);
    in_use[index] = true;
    return static_cast<std::int16_t>(slot);
}

bool CountdownPool::countdown_expired(std::int16_t slot) {
    const std::size_t index = checked_index(slot, state_.gTimerInUse.size());
    double& start = state_.gTimerStart[index];
    double& remaining = state_.gTimerRemaining[index];
    const double now = read_tick();
    remaining -= now >= start ? now - start : (kMaxTick - start) + now;
    if (remaining > 0) {
        start = now;
        return false;
    }
    stop_countdown(slot);
    return true;
}

void CountdownPool::stop_countdown(std::int16_t slot) {
    const std::size_t index = checked_index(slot, state_.gTimerInUse.size());
    state_.gTimerRemaining[index] = 0;
    state_.gTimerInUse[index] = false;
}

double CountdownPool::read_tick() {
    state_.gLastTick = tick_.timeGetTime();
    return state_.gLastTick;
}

void CountdownPool::wait(float duration_ms) {
    const std::int16_t slot = start_countdown(duration_ms);
    while (!countdown_expired(slot)) {
    }
}

} // namespace pelvan
