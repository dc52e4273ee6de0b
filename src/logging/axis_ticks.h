// Round numbers for the axes of a drawing: which ranges and which ticks suit a span of values or of
// time, and what stands at each tick. Numbers in, numbers and texts out.
#pragma once

#include <string>
#include <vector>

#include "logging/trend.h"

namespace pelvan {

struct ValueRange {
    double low = 0;
    double high = 1;
    [[nodiscard]] double width() const { return high - low; }
    bool operator==(const ValueRange&) const = default;
};

struct AxisTick {
    double at = 0;
    std::string text;
    std::string date = {}; // of time: where it is not that of the tick before
};

/// The least of 1, 2, 2.5, 5 and 10 times a power of ten that is not below `least`, which is above
/// 0.
[[nodiscard]] double round_step(double least);

/// A range of `parts` equal parts, from round number to round number, that holds both values; two
/// equal ones stand in its middle. Values that no reading can have are taken as 1e300.
[[nodiscard]] ValueRange round_range(double low, double high, int parts);

/// Ticks at round numbers, `most` parts of the range at most.
[[nodiscard]] std::vector<AxisTick> value_ticks(const ValueRange& range, int most);

/// Ticks of calendar time at full seconds, minutes, hours or days, `most` parts of the span at
/// most, with seconds where they are parted by less than a minute.
[[nodiscard]] std::vector<AxisTick> time_ticks(const TrendSpan& span, int most);

} // namespace pelvan
