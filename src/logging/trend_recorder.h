// Puts the readings of each pass into the trend, on one line of time for the whole session.
#pragma once

#include "logging/log_poller.h"
#include "logging/log_set.h"
#include "logging/trend.h"

namespace pelvan {

class TrendRecorder {
  public:
    explicit TrendRecorder(Trend& trend) : trend_(trend) {}

    /// Opens a pass and drops the rows that are no longer in use. Both times are of now.
    void begin_pass(const LogSet& set, const LocalTime& clock, std::uint32_t tick_ms);
    /// Gives the curves that are there the rows' names and units.
    void name_rows(const LogSet& set);
    void record(int row, const LogRow& numbers, const LogReading& reading);

  private:
    Trend& trend_;
    bool begun_ = false;
    double time_ms_ = 0; // local calendar time of the last pass
    std::uint32_t tick_ms_ = 0;
};

} // namespace pelvan
