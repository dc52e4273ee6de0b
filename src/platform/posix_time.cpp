#include <chrono>
#include <cmath>
#include <ctime>
#include <thread>

#include "platform/tick.h"

namespace pelvan {
namespace {

/// The tick begins at 0 with the program, so that what keeps ticks in single precision keeps them
/// to the millisecond for the first 4.6 hours.
const auto kProgramStart = std::chrono::steady_clock::now();

class SystemTick : public TickSource {
  public:
    std::uint32_t timeGetTime() override {
        const auto since_start = std::chrono::steady_clock::now() - kProgramStart;
        return static_cast<std::uint32_t>(
            std::chrono::duration_cast<std::chrono::milliseconds>(since_start).count());
    }
    double precise_ms() override {
        const auto since_start = std::chrono::steady_clock::now() - kProgramStart;
        return std::chrono::duration<double, std::milli>(since_start).count();
    }
    void sleep_for_ms(double ms) override {
        std::this_thread::sleep_for(std::chrono::duration<double, std::milli>(ms));
    }
};

class SystemClock : public Clock {
  public:
    LocalTime now() override {
        const auto since_1970 = std::chrono::system_clock::now().time_since_epoch();
        return local_time(std::chrono::duration<double, std::milli>(since_1970).count());
    }
};

} // namespace

LocalTime local_time(double epoch_ms) {
    const double whole = std::floor(epoch_ms / 1000);
    const auto seconds = static_cast<std::time_t>(whole);
    std::tm parts{};
    localtime_r(&seconds, &parts);
    return {parts.tm_year + 1900,
            parts.tm_mon + 1,
            parts.tm_mday,
            parts.tm_hour,
            parts.tm_min,
            parts.tm_sec,
            static_cast<int>(epoch_ms - whole * 1000)};
}

double epoch_milliseconds(const LocalTime& time) {
    std::tm parts{};
    parts.tm_year = time.year - 1900;
    parts.tm_mon = time.month - 1;
    parts.tm_mday = time.day;
    parts.tm_hour = time.hour;
    parts.tm_min = time.minute;
    parts.tm_sec = time.second;
    parts.tm_isdst = -1; // the system knows whether it is summer time
    return static_cast<double>(std::mktime(&parts)) * 1000 + time.millisecond;
}

std::unique_ptr<TickSource> make_system_tick() {
    return std::make_unique<SystemTick>();
}

std::unique_ptr<Clock> make_system_clock() {
    return std::make_unique<SystemClock>();
}

} // namespace pelvan
