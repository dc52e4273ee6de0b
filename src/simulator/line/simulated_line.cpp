#include "simulator/line/simulated_line.h"

#include <algorithm>
#include <utility>

namespace pelvan::simulator {
namespace {

constexpr char kXon = 17;
constexpr char kXoff = 19;

double character_ms(const LineSettings& settings) {
    return character_time_us(settings) / 1000;
}

} // namespace

void LineClock::sleep_until(double moment_ms, double timeout_ms) {
    const double left_ms = moment_ms < 0 ? timeout_ms : std::min(moment_ms - now_ms(), timeout_ms);
    if (left_ms > 0) tick_.sleep_for_ms(left_ms);
}

SimulatedLine::SimulatedLine(std::shared_ptr<LineClock> clock, std::shared_ptr<Station> station,
                             const LineSettings& settings)
    : clock_(std::move(clock)), wire_(std::move(station), character_ms(settings)),
      xon_xoff_(settings.xon_xoff), foreign_parity_(settings.foreign_parity) {}

bool SimulatedLine::read_into(std::string& buffer) {
    for (const char value : wire_.arrived(clock_->now_ms())) {
        if (!xon_xoff_ || (value != kXon && value != kXoff)) buffer += value;
    }
    return true;
}

void SimulatedLine::wait_for_input(double timeout_ms) {
    clock_->sleep_until(wire_.next_ms(), timeout_ms);
}

void SimulatedLine::discard_input() {
    static_cast<void>(wire_.arrived(clock_->now_ms()));
}

void SimulatedLine::write(const std::string& bytes) {
    if (!foreign_parity_) wire_.host_writes(bytes, clock_->now_ms());
}

LoopbackLine::LoopbackLine(std::shared_ptr<LineClock> clock, std::shared_ptr<const bool> jumper_in,
                           const LineSettings& settings)
    : clock_(std::move(clock)), jumper_in_(std::move(jumper_in)), echo_(character_ms(settings)) {}

bool LoopbackLine::read_into(std::string& buffer) {
    buffer += echo_.take(clock_->now_ms());
    return true;
}

void LoopbackLine::wait_for_input(double timeout_ms) {
    clock_->sleep_until(echo_.empty() ? -1 : echo_.next_ms(), timeout_ms);
}

void LoopbackLine::discard_input() {
    static_cast<void>(echo_.take(clock_->now_ms()));
}

void LoopbackLine::write(const std::string& bytes) {
    if (*jumper_in_) echo_.send(clock_->now_ms(), bytes);
}

} // namespace pelvan::simulator
