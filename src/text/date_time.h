// A calendar date with a time of day, its texts, and its arithmetic. Which texts a file or a list
// uses is its owner's; what the time is comes from platform/tick.h.
#pragma once

#include <string>

namespace pelvan {

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

/// "11-05-2026"
[[nodiscard]] std::string date_text(const LocalTime& time);
/// "2026-11-05"
[[nodiscard]] std::string iso_date_text(const LocalTime& time);
/// "11/5/2026"
[[nodiscard]] std::string slash_date_text(const LocalTime& time);
/// "16:30:05"
[[nodiscard]] std::string time_text(const LocalTime& time);
/// "16:30:05.250"
[[nodiscard]] std::string time_ms_text(const LocalTime& time);

/// Local time as milliseconds since 1970 began, as if there were no time zones; and back.
[[nodiscard]] double calendar_milliseconds(const LocalTime& time);
[[nodiscard]] LocalTime calendar_time(double calendar_ms);

} // namespace pelvan
