// Count, smallest, mean and largest of a time in milliseconds.
#pragma once

#include <algorithm>

namespace pelvan {

struct TimeSummary {
    long count = 0;
    double minimum = 0;
    double maximum = 0;
    double sum = 0;

    void add(double ms) {
        minimum = count == 0 ? ms : std::min(minimum, ms);
        maximum = count == 0 ? ms : std::max(maximum, ms);
        sum += ms;
        ++count;
    }
    [[nodiscard]] double mean() const { return count > 0 ? sum / static_cast<double>(count) : 0; }
};

} // namespace pelvan
