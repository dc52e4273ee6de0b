// Time, injected: the millisecond tick that every wait polls, and the wall clock that file lines
// and headers carry. Tests hand in their own of both.
#pragma once

#include <cstdint>
#include <memory>

#include "text/date_time.h"

namespace pelvan {

/// The platform's millisecond tick.
class TickSource {
  public:
    virtual ~TickSource() = default;

    /// Milliseconds since some moment; wraps to 0 after 4294967295. Never blocks.
    virtual std::uint32_t timeGetTime() = 0;

    /// Milliseconds with their fraction since some moment; neither wraps nor goes back.
    virtual double precise_ms() = 0;
    /// Blocks for so long without using the processor.
    virtual void sleep_for_ms(double ms) = 0;
};

/// Milliseconds from one reading of the tick to a later one, across a wrap (not across two).
[[nodiscard]] double tick_span(double from, double to);

/// Moments in milliseconds that go on with the tick from one that was given: the clock may tell
/// whole seconds only and may be set back, the tick does neither.
class SteadyTime {
  public:
    /// Says which moment a reading of the tick was.
    void start(double tick, double moment_ms);
    [[nodiscard]] bool started() const { return started_; }
    /// The moment of a later reading, at most one wrap of the tick (49 days) after the last one.
    double at(double tick);

  private:
    bool started_ = false;
    double tick_ = 0;
    double moment_ms_ = 0;
};

/// The machine's local time at a moment given in milliseconds since 1970 began (UTC).
[[nodiscard]] LocalTime local_time(double epoch_ms);
/// The other way round; where a change to winter time makes a local time ambiguous, the system
/// decides.
[[nodiscard]] double epoch_milliseconds(const LocalTime& time);

class Clock {
  public:
    virtual ~Clock() = default;
    virtual LocalTime now() = 0;
};

/// The machine's tick, 0 when the program started, which counts the machine's sleep too, and its
/// local time.
[[nodiscard]] std::unique_ptr<TickSource> make_system_tick();
[[nodiscard]] std::unique_ptr<Clock> make_system_clock();

} // namespace pelvan
