#include "listen/listen_statistics.h"

#include <cmath>

#include "text/numbers.h"

namespace pelvan {
namespace {

constexpr float kFirstMinimumGapMs = 10000;
/// Stands for a time of 0, by which nothing can be divided.
constexpr double kNearlyNothing = 0.0001;
constexpr double kMsPerMinute = 60000;
constexpr double kMsPerSecond = 1000;

} // namespace

double Statistic::value() const {
    return leading_number(text());
}

std::string Statistic::text() const {
    if (!value_) return {};
    return precision_ == Precision::Single ? plain_single(*value_) : plain_number(*value_);
}

void ListenStatistics::begin(double tick) {
    record_.hit_count = 0;
    record_.spare = 0;
    record_.minimum_gap = kFirstMinimumGapMs;
    record_.start_tick = static_cast<float>(tick);
}

void ListenStatistics::add(double start_tick, double end_tick) {
    record_.hit_count += 1;
    double elapsed = end_tick - static_cast<double>(record_.start_tick);
    if (elapsed == 0) elapsed = kNearlyNothing;
    hit_count_.set(record_.hit_count);
    total_s_.set(elapsed / kMsPerSecond);
    per_minute_.set(kMsPerMinute / elapsed * record_.hit_count);
    last_hit_ms_.set(end_tick - start_tick);

    // Compared and cut as shown: an average of 59999.999999999993 shows 60000, and so does its
    // integer part.
    const double average = per_minute_.value();
    const bool has_gap = record_.hit_count > 1;
    if (max_per_minute_.value() < average && has_gap) max_per_minute_.set(std::floor(average));

    const double gap = start_tick - static_cast<double>(record_.last_hit_tick);
    if (gap < static_cast<double>(record_.minimum_gap) && has_gap) {
        record_.minimum_gap = static_cast<float>(gap == 0 ? kNearlyNothing : gap);
        burst_rate_.set(std::floor(kMsPerMinute / static_cast<double>(record_.minimum_gap)));
    }
    record_.last_hit_tick = static_cast<float>(start_tick);
}

void ListenStatistics::clear() {
    for (Statistic* statistic :
         {&hit_count_, &last_hit_ms_, &total_s_, &per_minute_, &max_per_minute_, &burst_rate_})
        statistic->clear();
}

} // namespace pelvan
