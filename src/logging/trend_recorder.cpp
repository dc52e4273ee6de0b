#include "logging/trend_recorder.h"

#include <limits>
#include <map>

#include "platform/run_time_error.h"
#include "text/numbers.h"

namespace pelvan {
namespace {

constexpr double kClockJumpMs = 60000; // the machine slept, or its clock was set

std::string kind_of(double command) {
    using namespace log_command;
    if (command == kReadCoils) return "Coil ";
    if (command == kReadInputStatus) return "Input ";
    if (command == kReadInputRegisters) return "Input register ";
    if (command == kReadHoldingRegisters || command == kRead32) return "Register ";
    return "Command " + plain_number(command) + " register ";
}

/// What is read, most telling first: names are cut at their end where room is short.
std::string source_of(const LogRow& row) {
    return kind_of(row.command) + plain_number(static_cast<double>(row.start_register)) + " at " +
           plain_number(row.address) + (row.command == log_command::kRead32 ? ", 32-bit" : "");
}

/// Of the row in the set; a row of a file may hold what is no number.
std::string shown_name(const LogSetRow& row) {
    try {
        return row.name.empty() ? source_of(row.numbers()) : row.name;
    } catch (const RunTimeError&) {
        return row.texts[log_column::kRegister]; // polling it will say why
    }
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
    name_rows(set);
    trend_.begin_pass(time_ms_);
}

void TrendRecorder::name_rows(const LogSet& set) {
    std::map<std::string, int> uses;
    std::map<int, std::string> names;
    for (int row = 1; row <= kLogRows; ++row)
        if (set.row(row).in_use) ++uses[names[row] = shown_name(set.row(row))];
    for (const auto& [row, name] : names)
        trend_.describe(row - 1, {uses[name] > 1 ? name + " (row " + plain_number(row) + ")" : name,
                                  set.row(row).unit});
}

void TrendRecorder::record(int row, const LogRow& numbers, const LogReading& reading) {
    trend_.record(row - 1, source_of(numbers),
                  reading.state == RowState::Answered ? leading_number(reading.value)
                                                      : std::numeric_limits<double>::quiet_NaN());
}

} // namespace pelvan
