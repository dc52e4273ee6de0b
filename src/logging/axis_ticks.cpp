#include "logging/axis_ticks.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

#include "text/date_time.h"

namespace pelvan {
namespace {

constexpr double kLargest = 1e300;
constexpr double kSlack = 1e-9; // of a step: what adding up steps may be off
constexpr double kSecond = 1000;
constexpr double kMinute = 60 * kSecond;
constexpr double kHour = 60 * kMinute;
constexpr double kDay = 24 * kHour;

constexpr std::array kTimeSteps{kSecond,      2 * kSecond,  5 * kSecond, 10 * kSecond, 15 * kSecond,
                                30 * kSecond, kMinute,      2 * kMinute, 5 * kMinute,  10 * kMinute,
                                15 * kMinute, 30 * kMinute, kHour,       2 * kHour,    3 * kHour,
                                6 * kHour,    12 * kHour,   kDay,        2 * kDay,     7 * kDay};

double time_step(double least) {
    for (const double step : kTimeSteps)
        if (step >= least) return step;
    return round_step(least / kDay) * kDay;
}

/// As many decimals as a multiple of the step needs.
int decimals_of(double step) {
    constexpr int kMost = 12;
    int decimals = 0;
    for (double rest = step; decimals < kMost; ++decimals, rest *= 10)
        if (std::abs(rest - std::round(rest)) < kSlack * rest) break;
    return decimals;
}

std::string number_text(double value, double step) {
    constexpr double kPlainBelow = 1e9;
    std::array<char, 64> text{};
    if (std::abs(value) < step / 2) value = 0; // no "-0.0"
    if (std::abs(value) < kPlainBelow)
        std::snprintf(text.data(), text.size(), "%.*f", decimals_of(step), value);
    else
        std::snprintf(text.data(), text.size(), "%.9g", value);
    return text.data();
}

/// Multiples of the step in the range.
std::vector<double> multiples(double low, double high, double step, int most) {
    std::vector<double> found;
    const double first = std::ceil(low / step - kSlack);
    for (int i = 0; i <= most; ++i) {
        const double at = (first + i) * step;
        if (at > high + kSlack * step) break;
        found.push_back(at);
    }
    return found;
}

} // namespace

double round_step(double least) {
    const double power = std::pow(10.0, std::floor(std::log10(least)));
    for (const double factor : {1.0, 2.0, 2.5, 5.0})
        if (least <= factor * power * (1 + kSlack)) return factor * power;
    return 10 * power;
}

ValueRange round_range(double low, double high, int parts) {
    low = std::clamp(low, -kLargest, kLargest);
    high = std::clamp(high, -kLargest, kLargest);
    // A tenth about a value that stands still, and no steps finer than its digits.
    const double largest = std::max(std::abs(low), std::abs(high));
    if (high - low <= largest * kSlack) {
        const double room = largest > 0 ? largest / 10 : 1;
        low -= room;
        high += room;
    }
    double step = round_step((high - low) / parts);
    double first = std::floor(low / step + kSlack);
    while ((first + parts) * step < high - kSlack * step) {
        step = round_step(step * 1.01);
        first = std::floor(low / step + kSlack);
    }
    // Empty parts go half below the values, but not below 0 for their sake.
    const double spare = std::floor(first + parts - high / step + kSlack);
    const double below = std::floor(spare / 2);
    if (below > 0) first = first >= 0 ? std::max(first - below, 0.0) : first - below;
    return {first * step, (first + parts) * step};
}

std::vector<AxisTick> value_ticks(const ValueRange& range, int most) {
    std::vector<AxisTick> ticks;
    if (!(range.width() > 0)) return ticks;
    const double step = round_step(range.width() / std::max(most, 1));
    for (const double at : multiples(range.low, range.high, step, most))
        ticks.push_back({at, number_text(at, step)});
    return ticks;
}

std::vector<AxisTick> time_ticks(const TrendSpan& span, int most) {
    std::vector<AxisTick> ticks;
    if (!(span.to_ms > span.from_ms)) return ticks;
    const double step = time_step((span.to_ms - span.from_ms) / std::max(most, 1));
    std::string day;
    for (const double at : multiples(span.from_ms, span.to_ms, step, most)) {
        const LocalTime time = calendar_time(at);
        constexpr std::size_t kHoursAndMinutes = 5;
        std::string text = time_text(time);
        if (step >= kMinute) text.resize(kHoursAndMinutes);
        const std::string date = iso_date_text(time);
        ticks.push_back({at, std::move(text), date == day ? std::string() : date});
        day = date;
    }
    return ticks;
}

} // namespace pelvan
