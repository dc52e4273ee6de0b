// Time, injected: the millisecond tick that every wait polls, and the wall clock that file lines
// and headers carry. Tests hand in their own of both.
#pragma once

#include <cstdint>
#include <memory>

namespace pelvan {

/// The platform's millisecond tick.
class TickSource {
  public:
    virtual ~TickSource() = default;

    /// Milliseconds since some moment; wraps to 0 after 4294967295. Never blocks.
    virtual std::uint32_t timeGetTime() = 0;
};

/// Local calendar time.
struct LocalTime {
    int year = 0;
    int month = 0; // 1..12
    int day = 0;   // 1..31
    int hour = 0;  // 0..23
    int minute = 0;
    int second = 0;
    int millisecond = 0;
};

/// The machine's local time at a moment given in milliseconds since 1970 began (UTC).
[[nodiscard]] LocalTime local_time(double epoch_ms);

class Clock {
  public:
    virtual ~Clock() = default;
    virtual LocalTime now() = 0;
};

/// The machine's monotonic tick, 0 when the program started, and its local time.
[[nodiscard]] std::unique_ptr<TickSource> make_system_tick();
[[nodiscard]] std::unique_ptr<Clock> make_system_clock();

} // namespace pelvan
