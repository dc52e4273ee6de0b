#include <chrono>
#include <cmath>
#include <ctime>
#include <thread>

#include "platform/tick.h"

namespace pelvan {
namespace {

constexpr double kMsPerSecond = 1000;
constexpr double kNsPerMs = 1e6;

/// Goes on while the machine sleeps, which the monotonic clock does not: a laptop's lid may be
/// closed while a line is logged or a device is gone, and times behind it would be too early.
double now_ms() {
    std::timespec now{};
    clock_gettime(CLOCK_BOOTTIME, &now);
    return static_cast<double>(now.tv_sec) * kMsPerSecond +
           static_cast<double>(now.tv_nsec) / kNsPerMs;
}

/// The tick begins at 0 with the program, so that what keeps ticks in single precision keeps them
/// to the millisecond for the first 4.6 hours.
const double kProgramStartMs = now_ms();

class SystemTick : public TickSource {
  public:
    std::uint32_t timeGetTime() override {
        return static_cast<std::uint32_t>(static_cast<std::uint64_t>(now_ms() - kProgramStartMs));
    }
    double precise_ms() override { return now_ms() - kProgramStartMs; }
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
