#include "logging/trend.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <limits>

#include "platform/run_time_error.h"

namespace pelvan {
namespace {

constexpr double kGap = std::numeric_limits<double>::quiet_NaN();
constexpr double kDayMs = 86400000;

/// The lowest and the highest reading of a stretch of passes.
class Extremes {
  public:
    void add(const TrendPoint& point) {
        if (empty_ || point.value < low_.value) low_ = point;
        if (empty_ || point.value > high_.value) high_ = point;
        empty_ = false;
    }
    void move_to(std::vector<TrendPoint>& points) {
        if (empty_) return;
        const bool low_first = low_.time_ms <= high_.time_ms;
        points.push_back(low_first ? low_ : high_);
        if (low_.time_ms != high_.time_ms) points.push_back(low_first ? high_ : low_);
        empty_ = true;
    }
    [[nodiscard]] bool empty() const { return empty_; }

  private:
    bool empty_ = true;
    TrendPoint low_;
    TrendPoint high_;
};

} // namespace

double calendar_milliseconds(const LocalTime& time) {
    const std::chrono::year_month_day date{std::chrono::year{time.year},
                                           std::chrono::month{static_cast<unsigned>(time.month)},
                                           std::chrono::day{static_cast<unsigned>(time.day)}};
    const auto days = static_cast<double>(std::chrono::sys_days{date}.time_since_epoch().count());
    return days * kDayMs + ((time.hour * 60.0 + time.minute) * 60.0 + time.second) * 1000.0;
}

Trend::Trend(int rows, std::size_t capacity)
    : capacity_(capacity), columns_(static_cast<std::size_t>(rows)) {}

void Trend::begin_pass(double time_ms) {
    ++passes_;
    if (times_.size() < capacity_) {
        times_.push_back(time_ms);
        for (Column& column : columns_)
            if (!column.values.empty()) column.values.push_back(kGap);
        return;
    }
    times_[oldest_] = time_ms;
    for (Column& column : columns_)
        if (!column.values.empty()) column.values[oldest_] = kGap;
    oldest_ = (oldest_ + 1) % capacity_;
}

void Trend::record(int row, const std::string& name, double value) {
    Column& column = columns_[checked_index(row, columns_.size())];
    if (times_.empty()) return;
    if (column.values.empty() || column.name != name) {
        column.name = name;
        column.values.reserve(capacity_); // once, so that it never moves and never doubles
        column.values.assign(times_.size(), kGap);
    }
    column.values[slot(times_.size() - 1)] = value;
}

void Trend::forget(int row) {
    columns_[checked_index(row, columns_.size())] = Column{};
}

std::vector<int> Trend::rows() const {
    std::vector<int> used;
    for (std::size_t i = 0; i < columns_.size(); ++i)
        if (!columns_[i].values.empty()) used.push_back(static_cast<int>(i));
    return used;
}

const std::string& Trend::name(int row) const {
    return columns_[checked_index(row, columns_.size())].name;
}

TrendSpan Trend::span() const {
    if (times_.empty()) return {};
    return {time_at(0), time_at(times_.size() - 1)};
}

std::vector<TrendPoint> Trend::points(int row, TrendSpan part, std::size_t buckets) const {
    const std::vector<double>& values = columns_[checked_index(row, columns_.size())].values;
    std::vector<TrendPoint> out;
    if (values.empty() || buckets == 0) return out;
    std::size_t first = first_from(part.from_ms);
    std::size_t end = first_from(part.to_ms);
    if (first > 0) --first;
    end = std::min(end + 1, times_.size());
    // Twice as many passes as buckets are drawn one by one.
    const std::size_t count = end - first;
    const std::size_t stretch = count <= 2 * buckets ? 1 : (count + buckets - 1) / buckets;
    out.reserve(count / stretch * (stretch == 1 ? 1 : 2) + 2);
    Extremes extremes;
    bool gap = false;
    std::size_t missing = 0; // passes in a row without a value
    std::size_t left = stretch;
    std::size_t at = slot(first);
    for (std::size_t i = first; i < end; ++i) {
        if (std::isnan(values[at])) {
            ++missing;
        } else {
            gap = gap || missing >= stretch;
            missing = 0;
            extremes.add({times_[at], values[at]});
        }
        if (--left == 0 || i + 1 == end) {
            if (!extremes.empty()) {
                if (gap && !out.empty()) out.push_back({out.back().time_ms, kGap});
                gap = false;
            }
            extremes.move_to(out);
            left = stretch;
        }
        if (++at == times_.size()) at = 0;
    }
    return out;
}

TrendPoint Trend::nearest(int row, double time_ms) const {
    const std::vector<double>& values = columns_[checked_index(row, columns_.size())].values;
    if (values.empty()) return {time_ms, kGap};
    std::size_t index = std::min(first_from(time_ms), times_.size() - 1);
    if (index > 0 && time_ms - time_at(index - 1) < time_at(index) - time_ms) --index;
    return {time_at(index), values[slot(index)]};
}

std::size_t Trend::slot(std::size_t index) const {
    const std::size_t at = oldest_ + index;
    return at < times_.size() ? at : at - times_.size();
}

std::size_t Trend::first_from(double time_ms) const {
    std::size_t low = 0;
    std::size_t high = times_.size();
    while (low < high) {
        const std::size_t middle = low + (high - low) / 2;
        if (time_at(middle) < time_ms)
            low = middle + 1;
        else
            high = middle;
    }
    return low;
}

} // namespace pelvan
