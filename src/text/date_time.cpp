#include "text/date_time.h"

#include <array>
#include <chrono>
#include <cmath>
#include <cstdio>

namespace pelvan {
namespace {

constexpr double kDayMs = 86400000;

template <class... Numbers> std::string formatted(const char* pattern, Numbers... numbers) {
    std::array<char, 64> out{};
    std::snprintf(out.data(), out.size(), pattern, numbers...);
    return out.data();
}

} // namespace

std::string date_text(const LocalTime& time) {
    return formatted("%02d-%02d-%04d", time.month, time.day, time.year);
}

std::string iso_date_text(const LocalTime& time) {
    return formatted("%04d-%02d-%02d", time.year, time.month, time.day);
}

std::string slash_date_text(const LocalTime& time) {
    return formatted("%d/%d/%04d", time.month, time.day, time.year);
}

std::string time_text(const LocalTime& time) {
    return formatted("%02d:%02d:%02d", time.hour, time.minute, time.second);
}

std::string time_ms_text(const LocalTime& time) {
    return time_text(time) + formatted(".%03d", time.millisecond);
}

double calendar_milliseconds(const LocalTime& time) {
    const std::chrono::year_month_day date{std::chrono::year{time.year},
                                           std::chrono::month{static_cast<unsigned>(time.month)},
                                           std::chrono::day{static_cast<unsigned>(time.day)}};
    const auto days = static_cast<double>(std::chrono::sys_days{date}.time_since_epoch().count());
    return days * kDayMs + ((time.hour * 60.0 + time.minute) * 60.0 + time.second) * 1000.0 +
           time.millisecond;
}

LocalTime calendar_time(double calendar_ms) {
    const double day = std::floor(calendar_ms / kDayMs);
    const std::chrono::year_month_day date{
        std::chrono::sys_days{std::chrono::days{static_cast<int>(day)}}};
    const int ms = static_cast<int>(calendar_ms - day * kDayMs);
    return {static_cast<int>(date.year()),
            static_cast<int>(static_cast<unsigned>(date.month())),
            static_cast<int>(static_cast<unsigned>(date.day())),
            ms / 3600000,
            ms / 60000 % 60,
            ms / 1000 % 60,
            ms % 1000};
}

} // namespace pelvan
