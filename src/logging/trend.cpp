#include "logging/trend.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "platform/run_time_error.h"

namespace pelvan {
namespace {

constexpr double kGap = std::numeric_limits<double>::quiet_NaN();

/// The lowest and the highest reading of a bucket of passes.
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

/// Thins a curve out: of each bucket of passes the lowest and the highest reading, in the order of
/// their times, and a point without value between two readings that a gap as long as a bucket
/// parts.
class Thinning {
  public:
    /// Twice as many passes as buckets are kept one by one.
    Thinning(std::size_t passes, std::size_t buckets)
        : bucket_(passes <= 2 * buckets ? 1 : (passes + buckets - 1) / buckets), left_(bucket_) {
        points_.reserve(passes / bucket_ * (bucket_ == 1 ? 1 : 2) + 2);
    }

    void add(const TrendPoint& pass) {
        if (std::isnan(pass.value)) {
            ++missing_;
        } else {
            gap_ = gap_ || missing_ >= bucket_;
            missing_ = 0;
            extremes_.add(pass);
        }
        if (--left_ == 0) close_bucket();
    }

    [[nodiscard]] std::vector<TrendPoint> finish() {
        close_bucket();
        return std::move(points_);
    }

  private:
    void close_bucket() {
        left_ = bucket_;
        if (extremes_.empty()) return;
        if (gap_ && !points_.empty()) points_.push_back({points_.back().time_ms, kGap});
        gap_ = false;
        extremes_.move_to(points_);
    }

    std::size_t bucket_;      // passes in one
    std::size_t left_;        // of the bucket under way
    std::size_t missing_ = 0; // passes in a row without a value
    bool gap_ = false;        // before the extremes
    Extremes extremes_;
    std::vector<TrendPoint> points_;
};

} // namespace

Trend::Trend(int rows, std::size_t capacity)
    : capacity_(capacity), columns_(static_cast<std::size_t>(rows)) {}

void Trend::begin_pass(double time_ms) {
    ++passes_;
    ++changes_;
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

void Trend::record(int row, const std::string& source, double value) {
    Column& column = columns_[checked_index(row, columns_.size())];
    if (times_.empty()) return;
    ++changes_;
    if (column.values.empty() || column.source != source) {
        column.source = source;
        column.extent = {};
        column.values.reserve(capacity_); // once, so that it never moves and never doubles
        column.values.assign(times_.size(), kGap);
    }
    column.values[slot(times_.size() - 1)] = value;
    column.extent.include(value);
}

void Trend::describe(int row, const TrendLabel& label) {
    Column& column = columns_[checked_index(row, columns_.size())];
    if (column.label == label) return;
    column.label = label;
    ++changes_;
}

void Trend::forget(int row) {
    Column& column = columns_[checked_index(row, columns_.size())];
    if (!column.values.empty()) ++changes_;
    column = Column{};
}

std::vector<int> Trend::rows() const {
    std::vector<int> used;
    for (std::size_t i = 0; i < columns_.size(); ++i)
        if (!columns_[i].values.empty()) used.push_back(static_cast<int>(i));
    return used;
}

const TrendLabel& Trend::label(int row) const {
    return columns_[checked_index(row, columns_.size())].label;
}

TrendExtent Trend::extent(int row) const {
    return columns_[checked_index(row, columns_.size())].extent;
}

TrendSpan Trend::span() const {
    if (times_.empty()) return {};
    return {time_at(0), time_at(times_.size() - 1)};
}

std::vector<TrendPoint> Trend::points(int row, TrendSpan part, std::size_t buckets) const {
    const std::vector<double>& values = columns_[checked_index(row, columns_.size())].values;
    if (values.empty() || buckets == 0 || part.from_ms > part.to_ms) return {};
    std::size_t first = first_from(part.from_ms);
    if (first > 0) --first;
    const std::size_t end = std::min(first_from(part.to_ms) + 1, times_.size());
    Thinning thinning(end - first, buckets);
    std::size_t at = slot(first);
    for (std::size_t i = first; i < end; ++i) {
        thinning.add({times_[at], values[at]});
        if (++at == times_.size()) at = 0;
    }
    return thinning.finish();
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
