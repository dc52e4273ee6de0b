// What the monitor learns from the bursts beyond the six boxes: when each began and how long after
// the one before, which request a reply belongs to and how fast it came, and how often and how
// regularly each address and each function is seen. Times are the program's tick, read when a burst
// is noticed, on the wall clock's time of the session's beginning: differences hold to the
// millisecond also when the wall clock is set meanwhile.
#pragma once

#include <array>
#include <cstdint>
#include <deque>
#include <map>
#include <optional>
#include <string>

#include "listen/frame_kind.h"
#include "platform/tick.h"

namespace pelvan {

struct Burst {
    double start_ms = 0;          // since 1970
    std::optional<double> gap_ms; // from the start of the burst before; none for a session's first
    std::optional<double> reply_ms; // of a reply: from the end of its request to its first byte
    FrameInfo frame;
    std::string bytes;
};

/// Count, smallest, mean and largest of a time in milliseconds.
struct TimeSummary {
    long count = 0;
    double minimum = 0;
    double maximum = 0;
    double sum = 0;

    void add(double ms);
    [[nodiscard]] double mean() const { return count > 0 ? sum / static_cast<double>(count) : 0; }
};

/// How many times fell into each class; the classes rise 1, 2, 5, 10 ... so that a two-millisecond
/// echo and a time-out of ten seconds stand in one picture.
class Histogram {
  public:
    /// Upper limits of all classes but the last, in ms; a class holds what is below its limit.
    static constexpr std::array<int, 13> kLimits{1,   2,   5,    10,   20,   50,   100,
                                                 200, 500, 1000, 2000, 5000, 10000};
    static constexpr std::size_t kClasses = kLimits.size() + 1;

    void add(double ms);
    [[nodiscard]] long count(std::size_t index) const { return counts_.at(index); }
    /// "5-10", "10000+".
    [[nodiscard]] static std::string label(std::size_t index);

  private:
    std::array<long, kClasses> counts_{};
};

/// One row of the second tab.
struct TrafficRow {
    long requests = 0;
    long replies = 0; // exceptions among them
    long exceptions = 0;
    TimeSummary reply;
    TimeSummary gap;
};

/// Bursts that are kept for saving; the oldest go first beyond either limit.
inline constexpr std::size_t kKeptBursts = 200000;
inline constexpr std::size_t kKeptBytes = std::size_t{32} << 20;

class Traffic {
  public:
    /// Begins a session: the first burst has no gap, no reply belongs to an earlier request.
    void start(double tick, const LocalTime& now);
    /// Records a burst whose first byte was there at `start_tick` and its last one `length_ms`
    /// later.
    const Burst& add(double start_tick, double length_ms, const std::string& bytes);
    void clear();

    /// Another number whenever anything below is another.
    [[nodiscard]] unsigned long revision() const { return revision_; }
    [[nodiscard]] const std::deque<Burst>& bursts() const { return bursts_; }
    [[nodiscard]] const TrafficRow& all() const { return all_; }
    [[nodiscard]] const std::map<int, TrafficRow>& by_address() const { return by_address_; }
    [[nodiscard]] const std::map<int, TrafficRow>& by_function() const { return by_function_; }
    [[nodiscard]] long damaged() const { return damaged_; }
    [[nodiscard]] const Histogram& reply_times() const { return reply_times_; }
    [[nodiscard]] const Histogram& gaps() const { return gaps_; }

  private:
    void pair(Burst& burst);
    void count(const Burst& burst);
    void keep(Burst burst);

    SteadyTime clock_; // since 1970
    std::optional<double> last_start_ms_;
    std::string pending_; // the request that waits for its reply
    double pending_end_ms_ = 0;

    unsigned long revision_ = 0;
    std::deque<Burst> bursts_;
    std::size_t kept_bytes_ = 0;
    TrafficRow all_;
    std::map<int, TrafficRow> by_address_;
    std::map<int, TrafficRow> by_function_;
    long damaged_ = 0;
    Histogram reply_times_;
    Histogram gaps_;
};

/// "16:30:05.250  +120 ms  reply after 12 ms": the column beside the line.
[[nodiscard]] std::string burst_note(const Burst& burst);

} // namespace pelvan
