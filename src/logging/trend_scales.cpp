#include "logging/trend_scales.h"

#include <algorithm>
#include <cmath>

namespace pelvan {
namespace {

constexpr double kReadable = 10; // a tenth of a scale's height can still be read
constexpr double kFinest = 1e-9; // of a scale's largest value: as fine as zooming gets
constexpr double kWidest = 1e6;
constexpr double kLargest = 1e301;

struct Group {
    std::vector<const CurveRange*> curves;
    double largest = 0; // reading of any of them, without its sign
};

double largest_of(const TrendExtent& extent) {
    return extent.low > extent.high ? 0 : std::max(std::abs(extent.low), std::abs(extent.high));
}

/// A curve that never left 0 can be read on any scale.
bool readable_beside(double value, double largest) {
    return value == 0 || value * kReadable >= largest;
}

/// Groups of one unit, the largest readings first.
void add_groups(std::vector<const CurveRange*> curves, std::vector<Group>& groups) {
    std::stable_sort(curves.begin(), curves.end(),
                     [](const CurveRange* one, const CurveRange* two) {
                         return largest_of(one->ever) > largest_of(two->ever);
                     });
    bool first = true;
    for (const CurveRange* curve : curves) {
        const double largest = largest_of(curve->ever);
        if (first || !readable_beside(largest, groups.back().largest))
            groups.push_back({{}, largest});
        groups.back().curves.push_back(curve);
        first = false;
    }
}

/// Joins the neighbours in size until there are few enough.
void join_groups(std::vector<Group>& groups, std::size_t most) {
    std::stable_sort(groups.begin(), groups.end(),
                     [](const Group& one, const Group& two) { return one.largest > two.largest; });
    while (groups.size() > most) {
        std::size_t closest = 0;
        double least = std::numeric_limits<double>::infinity();
        for (std::size_t i = 0; i + 1 < groups.size(); ++i) {
            const double below = groups[i + 1].largest;
            const double ratio = below > 0 ? groups[i].largest / below : 1;
            if (ratio < least) {
                least = ratio;
                closest = i;
            }
        }
        auto& curves = groups[closest].curves;
        const auto& joined = groups[closest + 1].curves;
        curves.insert(curves.end(), joined.begin(), joined.end());
        groups.erase(groups.begin() + static_cast<std::ptrdiff_t>(closest) + 1);
    }
}

std::vector<Group> grouped(const std::vector<CurveRange>& curves, ScaleMode mode) {
    std::vector<Group> groups;
    std::map<std::string, std::vector<const CurveRange*>> by_unit;
    for (const CurveRange& curve : curves) {
        if (mode == ScaleMode::Own) groups.push_back({{&curve}, 0});
        by_unit[mode == ScaleMode::Automatic ? curve.unit : ""].push_back(&curve);
    }
    if (mode == ScaleMode::Shared && !curves.empty()) groups.push_back({by_unit[""], 0});
    if (mode != ScaleMode::Automatic) return groups;
    for (const auto& [unit, of_unit] : by_unit)
        add_groups(of_unit, groups);
    join_groups(groups, TrendScales::kMaxAutomatic);
    return groups;
}

TrendScale scale_for(const Group& group, int parts) {
    TrendScale scale;
    TrendExtent visible;
    scale.unit = group.curves.front()->unit;
    for (const CurveRange* curve : group.curves) {
        scale.rows.push_back(curve->row);
        if (curve->unit != scale.unit) scale.unit.clear();
        if (curve->visible.low > curve->visible.high) continue;
        visible.include(curve->visible.low);
        visible.include(curve->visible.high);
    }
    std::sort(scale.rows.begin(), scale.rows.end());
    if (visible.low > visible.high) visible = {0, 1};
    scale.range = round_range(visible.low, visible.high, parts);
    return scale;
}

} // namespace

void TrendScales::set_mode(ScaleMode mode) {
    mode_ = mode;
    fit();
}

void TrendScales::update(const std::vector<CurveRange>& curves, int parts) {
    scales_.clear();
    for (const Group& group : grouped(curves, mode_))
        scales_.push_back(scale_for(group, parts));
    std::sort(scales_.begin(), scales_.end(), [](const TrendScale& one, const TrendScale& two) {
        return one.rows.front() < two.rows.front();
    });
    for (TrendScale& scale : scales_)
        if (const auto held = held_.find(scale.rows.front()); held != held_.end())
            scale.range = held->second;
}

const TrendScale& TrendScales::scale_of(int row) const {
    return *std::find_if(scales_.begin(), scales_.end(), [row](const TrendScale& scale) {
        return std::binary_search(scale.rows.begin(), scale.rows.end(), row);
    });
}

std::vector<std::size_t> TrendScales::shown(int row, std::size_t most) const {
    std::vector<std::size_t> positions;
    for (std::size_t i = 0; i < scales_.size(); ++i)
        if (std::binary_search(scales_[i].rows.begin(), scales_[i].rows.end(), row))
            positions.push_back(i);
    for (std::size_t i = 0; i < scales_.size() && positions.size() < most; ++i)
        if (std::find(positions.begin(), positions.end(), i) == positions.end())
            positions.push_back(i);
    std::sort(positions.begin(), positions.end());
    return positions;
}

void TrendScales::zoom(double factor, double share) {
    for (TrendScale& scale : scales_) {
        const double largest =
            std::max({std::abs(scale.range.low), std::abs(scale.range.high), 1.0});
        const double width = std::clamp(scale.range.width() * factor, largest * kFinest,
                                        std::min(largest * kWidest, kLargest));
        const double anchor = scale.range.low + share * scale.range.width();
        scale.range.low = anchor - share * width;
        scale.range.high = scale.range.low + width;
        held_[scale.rows.front()] = scale.range;
    }
}

void TrendScales::pan(double share) {
    for (TrendScale& scale : scales_) {
        const double by = share * scale.range.width();
        scale.range.low += by;
        scale.range.high += by;
        held_[scale.rows.front()] = scale.range;
    }
}

} // namespace pelvan
