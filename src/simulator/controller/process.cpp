#include "simulator/controller/process.h"

#include <algorithm>
#include <cmath>

namespace pelvan::simulator {
namespace {
constexpr double kStepMs = 250;
constexpr double kSettledAfterMs = 600000;
} // namespace

void Process::advance(double elapsed_ms, double set_point, double band) {
    // After ten minutes the process has settled; simulating more would only cost time.
    double left = std::clamp(elapsed_ms, 0.0, kSettledAfterMs);
    while (left > 0) {
        const double step = std::min(left, kStepMs);
        left -= step;
        const double steady = 100 * (set_point - ambient_) / gain_;
        const double correction = 100 * (set_point - value_) / std::max(band, 1.0);
        output_ = std::clamp(steady + correction, -100.0, 100.0);
        const double target = ambient_ + gain_ * output_ / 100;
        value_ += (target - value_) * (1 - std::exp(-step / time_constant_ms_));
    }
}

} // namespace pelvan::simulator
