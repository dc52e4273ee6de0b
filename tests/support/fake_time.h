// A tick that moves a little at every reading, so that busy waits end in microseconds of real time.
#pragma once

#include <algorithm>
#include <cmath>

#include "platform/tick.h"

namespace pelvan::testing {

class FakeTick : public TickSource {
  public:
    explicit FakeTick(double start_ms = 1000) : now_ms_(start_ms) {}

    std::uint32_t timeGetTime() override {
        now_ms_ += step_ms;
        return wrapped();
    }
    double precise_ms() override { return now_ms_ += 0.001; }
    void sleep_for_ms(double ms) override { now_ms_ += std::max(ms, 0.001); }
    /// Time that passed since the first moment, without moving it.
    [[nodiscard]] double now() const { return now_ms_; }
    void advance(double ms) { now_ms_ += ms; }

    double step_ms = 0.05;

  private:
    [[nodiscard]] std::uint32_t wrapped() const {
        return static_cast<std::uint32_t>(std::fmod(now_ms_, 4294967296.0));
    }
    double now_ms_;
};

class FakeClock : public Clock {
  public:
    LocalTime now() override { return time; }
    LocalTime time{2026, 11, 15, 16, 30, 5};
};

} // namespace pelvan::testing
