// A burst as the list of lines has it: when it began, how long after the one before, and what it is
// taken as a whole. Whether it holds half a frame or two is not asked here: `Traffic` puts frames
// together. Times are the program's tick, read when bytes are noticed, on the wall clock's time of
// the session's beginning: differences hold to the millisecond also when the wall clock is set
// meanwhile.
#pragma once

#include <optional>
#include <string>

#include "listen/frame_kind.h"
#include "platform/tick.h"

namespace pelvan {

/// The largest time-out of the monitor: what comes later answers nothing.
inline constexpr double kMaxReplyMs = 10000;
inline constexpr int kBroadcastAddress = 0;

struct Burst {
    double start_ms = 0;          // since 1970
    std::optional<double> gap_ms; // from the start of the burst before; none for a session's first
    std::optional<double> reply_ms; // of a reply: from the end of its request to its first byte
    FrameInfo frame;
};

class BurstTimes {
  public:
    /// Begins a session: the first burst has no gap, no reply belongs to an earlier request.
    void start(double tick, const LocalTime& now);
    /// A burst whose first byte was there at `start_tick` and its last one `length_ms` later.
    Burst add(double start_tick, double length_ms, const std::string& bytes);
    /// The moment of a reading of the tick that is no earlier than those before, in ms since 1970.
    [[nodiscard]] double moment(double tick) { return clock_.at(tick); }
    [[nodiscard]] bool started() const { return clock_.started(); }

  private:
    void pair(Burst& burst, const std::string& bytes);

    SteadyTime clock_;
    std::optional<double> last_start_ms_;
    std::string pending_; // the request that waits for its reply
    double pending_end_ms_ = 0;
};

/// "16:30:05.250  +120 ms  reply after 12 ms": the column beside the line.
[[nodiscard]] std::string burst_note(const Burst& burst);

/// "12 ms": a time rounded to whole milliseconds.
[[nodiscard]] std::string rounded_ms(double ms);

} // namespace pelvan
