// Which part of the trend's time is in sight: everything, the newest readings, or what was zoomed
// or panned to. Numbers only.
#pragma once

#include "logging/trend.h"

namespace pelvan::desktop {

class VisibleRange {
  public:
    /// Goes along with readings that came in.
    void grow_to(const TrendSpan& all);
    /// Factor below 1 zooms in; the moment `anchor_ms` stays where it is.
    void zoom(double factor, double anchor_ms, const TrendSpan& all);
    /// Moves by a share of the width, and stays within `all`.
    void pan(double share, const TrendSpan& all);
    void show_all();
    /// Keeps the width and follows the newest readings.
    void follow();

    [[nodiscard]] const TrendSpan& span() const { return span_; }
    [[nodiscard]] double width() const { return span_.to_ms - span_.from_ms; }
    /// Where a moment lies: 0 at the left edge, 1 at the right one.
    [[nodiscard]] double share_of(double time_ms) const;
    [[nodiscard]] double time_at(double share) const { return span_.from_ms + share * width(); }

  private:
    TrendSpan span_;
    bool whole_ = true; // the whole span stays visible as it grows
    bool following_ = false;
};

} // namespace pelvan::desktop
