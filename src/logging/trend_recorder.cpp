#include "logging/trend_recorder.h"

#include <limits>

#include "text/numbers.h"

namespace pelvan {
namespace {

constexpr double kClockJumpMs = 60000; // the machine slept, or its clock was set

std::string trend_name(const LogRow& row) {
    std::string name = "Address " + plain_number(row.address) + " register " +
                       plain_number(static_cast<double>(row.start_register));
    if (row.command == log_command::kRead32) return name + " (32-bit)";
    if (row.command == log_command::kReadHoldingRegisters) return name;
    return name + " (command " + plain_number(row.command) + ")";
}

} // namespace

void TrendRecorder::begin_pass(const LogSet& set, const LocalTime& clock, std::uint32_t tick_ms) {
    const double calendar_ms = calendar_milliseconds(clock);
    // The clock tells whole seconds and may be set back; the tick is finer and never does.
    time_ms_ += tick_ms - tick_ms_;
    tick_ms_ = tick_ms;
    if (!begun_ || calendar_ms > time_ms_ + kClockJumpMs) time_ms_ = calendar_ms;
    begun_ = true;
    for (int row = 1; row <= kLogRows; ++row)
        if (!set.row(row).in_use) trend_.forget(row - 1);
    trend_.begin_pass(time_ms_);
}

void TrendRecorder::record(int row, const LogRow& numbers, const LogReading& reading) {
    trend_.record(row - 1, trend_name(numbers),
                  reading.state == RowState::Answered ? leading_number(reading.value)
                                                      : std::numeric_limits<double>::quiet_NaN());
}

} // namespace pelvan
