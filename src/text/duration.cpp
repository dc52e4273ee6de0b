#include "text/duration.h"

#include <algorithm>
#include <array>

namespace pelvan {
namespace {

constexpr long kTenth = 100; // ms
constexpr long kMsPerSecond = 1000;

struct Unit {
    const char* name;
    long seconds;
};

constexpr std::array<Unit, 4> kUnits{{{"d", 86400}, {"h", 3600}, {"min", 60}, {"s", 1}}};

} // namespace

std::string time_span_text(double ms) {
    constexpr double kMost = 1e15;
    const auto whole_ms = static_cast<long>(std::clamp(ms, 0.0, kMost));
    if (whole_ms < kMsPerSecond) return "0." + std::to_string(whole_ms / kTenth) + " s";
    const long seconds = whole_ms / kMsPerSecond;
    const auto* unit = kUnits.begin();
    while (unit->seconds > seconds)
        ++unit;
    std::string text = std::to_string(seconds / unit->seconds) + " " + unit->name;
    const long rest = seconds % unit->seconds;
    if (rest == 0 || ++unit == kUnits.end() || rest < unit->seconds) return text;
    return text + " " + std::to_string(rest / unit->seconds) + " " + unit->name;
}

} // namespace pelvan
