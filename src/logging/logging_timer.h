// The logging timer: whether it runs, how long a tick is, and the ticks since the last pass. All
// stopping and starting goes through here; a front end makes the real ticks and follows `changed`.
#pragma once

#include <cstdint>

#include "platform/event.h"

namespace pelvan {

class LoggingTimer {
  public:
    /// Holds the timer for as long as it lives; the timer goes on when the outermost one ends,
    /// unless it was stopped meanwhile.
    class Pause {
      public:
        explicit Pause(LoggingTimer& timer) : timer_(timer) { timer_.hold(+1); }
        Pause(const Pause&) = delete;
        Pause& operator=(const Pause&) = delete;
        ~Pause() { timer_.hold(-1); }

      private:
        LoggingTimer& timer_;
    };

    void start() { change(true, holds_); }
    void stop() { change(false, holds_); }
    [[nodiscard]] bool running() const { return started_ && holds_ == 0; }

    void set_tick_ms(int ms);
    /// 0: it never ticks.
    [[nodiscard]] int tick_ms() const { return tick_ms_; }

    /// Counts a tick; 6 (overflow) beyond 32 bits.
    void count_tick();
    void reset_count() { ticks_ = 0; }
    [[nodiscard]] std::int32_t ticks() const { return ticks_; }

    /// It began or ceased to run, or the length of a tick changed.
    Event<> changed;

  private:
    void hold(int more) { change(started_, holds_ + more); }
    void change(bool started, int holds);

    bool started_ = false;
    int holds_ = 0;
    int tick_ms_ = 0;
    std::int32_t ticks_ = 0;
    float tick_total_ = 0; // counted and never read
};

} // namespace pelvan
