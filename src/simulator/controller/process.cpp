#include "simulator/controller/process.h"

#include <algorithm>
#include <cmath>

namespace pelvan::simulator {
namespace {
constexpr double kStill = 1e-9; // tenths of a degree in a tick
} // namespace

void Process::set_plant(const Plant& plant) {
    gain_ = plant.gain;
    share_ = 1 - std::exp(-kTickMs / plant.time_constant_ms);
}

bool Process::tick(double set_point, double band) {
    const double steady = 100 * (set_point - ambient_) / gain_;
    const double correction = 100 * (set_point - value_) / std::max(band, 1.0);
    output_ = std::clamp(steady + correction, -100.0, 100.0);
    return move();
}

bool Process::coast() {
    output_ = 0;
    return move();
}

bool Process::move() {
    const double step = (ambient_ + gain_ * output_ / 100 - value_) * share_;
    value_ += step;
    return std::abs(step) > kStill;
}

} // namespace pelvan::simulator
