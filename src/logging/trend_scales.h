// Which scale each curve of the trend is drawn on, and which values the scales reach over: one for
// all, one a curve, or as many as it takes to read all of them. Scales fit what is in sight until
// somebody zooms or pans. Numbers only.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "logging/axis_ticks.h"

namespace pelvan {

enum class ScaleMode {
    /// Curves of one unit whose largest readings are within a factor of ten share a scale.
    Automatic,
    Shared,
    Own
};

/// What a scale has to be for a curve.
struct CurveRange {
    int row = 0;
    std::string unit;
    TrendExtent visible; // of what is in sight
    TrendExtent ever;    // of all readings: what decides who shares a scale, so that none jumps
};

struct TrendScale {
    std::vector<int> rows; // in order
    ValueRange range;
    std::string unit; // of all its rows; empty when they differ
    /// Where a value lies: 0 at the lower end, 1 at the upper one.
    [[nodiscard]] double share_of(double value) const {
        return (value - range.low) / range.width();
    }
};

class TrendScales {
  public:
    /// Automatic scales are not more than this.
    static constexpr std::size_t kMaxAutomatic = 4;

    [[nodiscard]] ScaleMode mode() const { return mode_; }
    /// Fits again; follow with `update`.
    void set_mode(ScaleMode mode);
    /// Groups the curves; a scale that fits gets `parts` round parts.
    void update(const std::vector<CurveRange>& curves, int parts);

    [[nodiscard]] const std::vector<TrendScale>& scales() const { return scales_; }
    /// The row must be one of the curves.
    [[nodiscard]] const TrendScale& scale_of(int row) const;
    /// Positions of the scales to draw an axis of when there is room for `most`: the one of the
    /// row, then from the first on; in order.
    [[nodiscard]] std::vector<std::size_t> shown(int row, std::size_t most) const;

    /// Factor below 1 zooms in; what lies at the share of the height (0 at the bottom) stays there.
    void zoom(double factor, double share);
    /// Moves what is in sight by a share of the height.
    void pan(double share);
    void fit() { held_.clear(); }
    [[nodiscard]] bool fits() const { return held_.empty(); }

  private:
    ScaleMode mode_ = ScaleMode::Automatic;
    std::vector<TrendScale> scales_;
    std::map<int, ValueRange> held_; // by the first row of the scale, where it no longer fits
};

} // namespace pelvan
