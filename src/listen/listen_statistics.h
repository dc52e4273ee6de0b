// The statistics of a listen session: six numbers that know how they are written, worked out burst
// by burst. Whoever shows them asks for the texts; nothing is ever read back from a text box.
#pragma once

#include <array>
#include <optional>
#include <string>

#include "listen/listen_state.h"

namespace pelvan {

/// One statistic; it has no value until it is measured, and none again after `clear`.
class Statistic {
  public:
    enum class Precision { Single, Double };

    Statistic(const char* caption, Precision precision)
        : caption_(caption), precision_(precision) {}

    [[nodiscard]] const char* caption() const { return caption_; }
    /// The number that the text shows (15 significant digits, 7 of a single); 0 without a value.
    [[nodiscard]] double value() const;
    /// Plain decimal form; empty without a value.
    [[nodiscard]] std::string text() const;

    void set(double value) { value_ = value; }
    void clear() { value_.reset(); }

  private:
    const char* caption_;
    Precision precision_;
    std::optional<double> value_;
};

class ListenStatistics {
  public:
    static constexpr std::size_t kCount = 6;

    /// `record` is the session's, borrowed.
    explicit ListenStatistics(ListenStats& record) : record_(record) {}

    /// The first burst of a session. The last hit tick stays, and so does everything shown.
    void begin(double tick);
    /// One burst: noticed at `start_tick`, collected and handled at `end_tick` (ms).
    void add(double start_tick, double end_tick);
    /// Forgets what is shown; the session's record goes on.
    void clear();

    [[nodiscard]] std::array<const Statistic*, kCount> all() const {
        return {&hit_count_,  &last_hit_ms_,    &total_s_,
                &per_minute_, &max_per_minute_, &burst_rate_};
    }
    [[nodiscard]] const Statistic& hit_count() const { return hit_count_; }

  private:
    ListenStats& record_;
    Statistic hit_count_{"Hits", Statistic::Precision::Double};
    Statistic last_hit_ms_{"Hit Time (mS)", Statistic::Precision::Single};
    Statistic total_s_{"Time (sec)", Statistic::Precision::Single};
    Statistic per_minute_{"Avg Hits/Min", Statistic::Precision::Double};
    Statistic max_per_minute_{"Max Hits/Min", Statistic::Precision::Double};
    Statistic burst_rate_{"Burst Hit Rate", Statistic::Precision::Double};
};

} // namespace pelvan
