#include <chrono>
#include <ctime>

#include "platform/tick.h"

namespace pelvan {
namespace {

class SystemTick : public TickSource {
  public:
    std::uint32_t timeGetTime() override {
        const auto now = std::chrono::steady_clock::now().time_since_epoch();
        return static_cast<std::uint32_t>(
            std::chrono::duration_cast<std::chrono::milliseconds>(now).count());
    }
};

class SystemClock : public Clock {
  public:
    LocalTime now() override {
        const auto moment = std::chrono::system_clock::now();
        const std::time_t seconds = std::chrono::system_clock::to_time_t(moment);
        const auto since_1970 =
            std::chrono::floor<std::chrono::milliseconds>(moment.time_since_epoch());
        std::tm parts{};
#ifdef _WIN32
        localtime_s(&parts, &seconds);
#else
        localtime_r(&seconds, &parts);
#endif
        return {parts.tm_year + 1900,
                parts.tm_mon + 1,
                parts.tm_mday,
                parts.tm_hour,
                parts.tm_min,
                parts.tm_sec,
                static_cast<int>(since_1970.count() % 1000)};
    }
};

} // namespace

std::unique_ptr<TickSource> make_system_tick() {
    return std::make_unique<SystemTick>();
}

std::unique_ptr<Clock> make_system_clock() {
    return std::make_unique<SystemClock>();
}

} // namespace pelvan
