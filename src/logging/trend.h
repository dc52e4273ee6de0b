// The readings of the last 86,400 passes, which are a day at one reading a second, for the trend
// window: bounded memory, points thinned out for a drawing, the reading at a moment, and export.
// Time is local calendar time in milliseconds since 1970 and never goes back. A row that gave no
// value in a pass has a gap there.
//
// Memory: 8 bytes a pass for the time and 8 bytes a pass for each row in use: 0.7 MB a row and
// 70 MB for 100 rows when all 86,400 passes are there.
//
// The functions that a drawing needs are virtual, so that a library which is loaded while the
// program runs can call them without holding a copy of this code.
#pragma once

#include <algorithm>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "platform/tick.h"

namespace pelvan {

struct TrendPoint {
    double time_ms = 0;
    double value = 0;
};

/// What people call a row's values, and what they are measured in; empty for nothing.
struct TrendLabel {
    std::string name;
    std::string unit;
    bool operator==(const TrendLabel&) const = default;
};

/// Low above high: nothing yet.
struct TrendExtent {
    double low = std::numeric_limits<double>::infinity();
    double high = -std::numeric_limits<double>::infinity();
    void include(double value) {
        low = std::min(low, value); // which leaves them as they are for not-a-number
        high = std::max(high, value);
    }
};

struct TrendSpan {
    double from_ms = 0;
    double to_ms = 0;
};

/// A CSV file under way: every pass a line of time, then each row's value or nothing. New passes
/// may come in meanwhile; old ones that they push out are left out. A file that is not finished is
/// removed.
class TrendExport {
  public:
    virtual ~TrendExport() = default;
    /// Writes that many passes more; false when the file is finished. Raises file errors.
    virtual bool write_some(std::size_t passes) = 0;
    /// What is written of the whole, 0 to 1.
    [[nodiscard]] virtual double share() const = 0;
};

class Trend {
  public:
    static constexpr std::size_t kDay = 86400; // passes, at one a second

    explicit Trend(int rows, std::size_t capacity = kDay);
    Trend(const Trend&) = delete;
    Trend& operator=(const Trend&) = delete;
    virtual ~Trend() = default;

    /// Opens a pass; the oldest is dropped when the capacity is reached.
    void begin_pass(double time_ms);
    /// The row's reading in the pass that was opened last; not-a-number for none. A row that is
    /// read from another source begins again.
    void record(int row, const std::string& source, double value);
    void describe(int row, const TrendLabel& label);
    /// The row is no longer in use: its readings go, and their memory with them.
    void forget(int row);

    /// Rows that have a curve, in order.
    [[nodiscard]] virtual std::vector<int> rows() const;
    [[nodiscard]] virtual const TrendLabel& label(int row) const;
    /// Of every reading since the row's curve began, those that are no longer kept included.
    [[nodiscard]] virtual TrendExtent extent(int row) const;
    /// From the oldest pass to the newest; both 0 when there is none.
    [[nodiscard]] virtual TrendSpan span() const;
    /// The row's readings in a span, at most about 2 x `buckets` of them: of each bucket of passes
    /// the lowest and the highest, in the order of their times. One reading beyond each end is
    /// included, so that a curve reaches the edges. Between two of them a point without value
    /// (not-a-number) stands for a gap as long as a bucket; shorter ones are seen zoomed in.
    /// Nothing of a span that ends before it begins.
    [[nodiscard]] virtual std::vector<TrendPoint> points(int row, TrendSpan part,
                                                         std::size_t buckets) const;
    /// The row's reading nearest in time; not-a-number when it has a gap there.
    [[nodiscard]] virtual TrendPoint nearest(int row, double time_ms) const;
    /// A file of the passes that are there now, still to be written. It must not outlive this.
    /// Raises file errors.
    [[nodiscard]] virtual std::unique_ptr<TrendExport> export_csv(const std::string& path) const;
    /// Counts what ever changed: a drawing that saw another number is out of date.
    [[nodiscard]] virtual unsigned long changes() const { return changes_; }

  private:
    friend class TrendCsv;
    struct Column {
        std::string source;
        TrendLabel label;
        TrendExtent extent;
        std::vector<double> values; // empty until the row is first in use
    };
    [[nodiscard]] std::size_t slot(std::size_t index) const;
    [[nodiscard]] double time_at(std::size_t index) const { return times_[slot(index)]; }
    /// Index of the first pass not before the time.
    [[nodiscard]] std::size_t first_from(double time_ms) const;

    std::size_t capacity_;
    std::size_t oldest_ = 0; // slot of the oldest pass
    std::vector<double> times_;
    std::vector<Column> columns_;
    unsigned long passes_ = 0; // ever begun
    unsigned long changes_ = 0;
};

} // namespace pelvan
