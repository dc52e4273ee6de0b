// What frames add up to: how often and how regularly each address and each function is seen, how
// fast replies come, and which requests got none.
#pragma once

#include <array>
#include <cstddef>
#include <map>
#include <optional>
#include <string>

#include "listen/frame_kind.h"
#include "text/time_summary.h"

namespace pelvan {

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

/// One row of the traffic table.
struct TrafficRow {
    long requests = 0;
    long unanswered = 0; // of the requests, once it is certain
    long replies = 0;    // exceptions among them
    long exceptions = 0;
    TimeSummary reply;
    TimeSummary gap;
};

/// What of a frame is counted; times that are not known are none.
struct CountedFrame {
    FrameInfo info;
    std::optional<double> gap_ms;
    std::optional<double> reply_ms;
};

class TrafficCounts {
  public:
    void add(const CountedFrame& frame);
    /// A request that was counted before is certain to have no reply.
    void add_unanswered(int address, int function);

    [[nodiscard]] const TrafficRow& all() const { return all_; }
    [[nodiscard]] const std::map<int, TrafficRow>& by_address() const { return by_address_; }
    [[nodiscard]] const std::map<int, TrafficRow>& by_function() const { return by_function_; }
    /// Pieces of the stream of which no frame could be made.
    [[nodiscard]] long damaged() const { return damaged_; }
    [[nodiscard]] const Histogram& reply_times() const { return reply_times_; }
    [[nodiscard]] const Histogram& gaps() const { return gaps_; }

  private:
    TrafficRow all_;
    std::map<int, TrafficRow> by_address_;
    std::map<int, TrafficRow> by_function_;
    long damaged_ = 0;
    Histogram reply_times_;
    Histogram gaps_;
};

} // namespace pelvan
