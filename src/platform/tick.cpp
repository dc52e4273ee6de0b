#include "platform/tick.h"

namespace pelvan {

double tick_span(double from, double to) {
    constexpr double kTickValues = 4294967296.0;
    return to >= from ? to - from : kTickValues - from + to;
}

void SteadyTime::start(double tick, double moment_ms) {
    started_ = true;
    tick_ = tick;
    moment_ms_ = moment_ms;
}

double SteadyTime::at(double tick) {
    moment_ms_ += tick_span(tick_, tick);
    tick_ = tick;
    return moment_ms_;
}

} // namespace pelvan
