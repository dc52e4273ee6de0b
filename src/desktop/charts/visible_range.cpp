#include "desktop/charts/visible_range.h"

#include <algorithm>

namespace pelvan::desktop {
namespace {

constexpr double kMinWidthMs = 2000;

} // namespace

void VisibleRange::grow_to(const TrendSpan& all) {
    if (whole_ || width() <= 0)
        span_ = {all.from_ms, std::max(all.to_ms, all.from_ms + kMinWidthMs)};
    else if (following_)
        span_ = {span_.from_ms + all.to_ms - span_.to_ms, all.to_ms};
}

void VisibleRange::zoom(double factor, double anchor_ms, const TrendSpan& all) {
    const double max_width = std::max(all.to_ms - all.from_ms, kMinWidthMs);
    const double wanted = std::clamp(width() * factor, kMinWidthMs, max_width);
    const double share = std::clamp(share_of(anchor_ms), 0.0, 1.0);
    span_.from_ms = anchor_ms - share * wanted;
    span_.to_ms = span_.from_ms + wanted;
    whole_ = following_ = false;
}

void VisibleRange::pan(double share, const TrendSpan& all) {
    const double kept = width();
    const double latest = std::max(all.to_ms - kept, all.from_ms);
    const double from = std::clamp(span_.from_ms + share * kept, all.from_ms, latest);
    span_ = {from, from + kept};
    whole_ = following_ = false;
}

void VisibleRange::show_all() {
    whole_ = true;
    following_ = false;
}

void VisibleRange::follow() {
    whole_ = false;
    following_ = true;
}

double VisibleRange::share_of(double time_ms) const {
    return (time_ms - span_.from_ms) / width();
}

} // namespace pelvan::desktop
