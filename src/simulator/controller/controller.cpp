#include "simulator/controller/controller.h"

#include <algorithm>
#include <cmath>

#include "simulator/controller/model_tables.h"

namespace pelvan::simulator {
namespace {

constexpr double kRestartMs = 2000;
constexpr std::int16_t kKey1 = 1512;
constexpr std::int16_t kKey2 = 1600;
constexpr std::int16_t kResetAll = 800;

// Places in the ten registers of an alarm.
constexpr int kAlarmSource = 0;
constexpr int kAlarmType = 1;
constexpr int kAlarmLow = 2;
constexpr int kAlarmHigh = 3;

constexpr std::size_t kDigitalInputs = 8; // the alarm states stand behind them

std::int16_t rounded(double value) {
    return static_cast<std::int16_t>(std::lround(std::clamp(value, -32000.0, 32000.0)));
}

std::uint16_t offset(std::uint16_t number, int by) {
    return static_cast<std::uint16_t>(number + by);
}

} // namespace

Controller::Controller(int model)
    : table_(make_register_table(model)), coils_(model == 742 ? 16 : 8), inputs_(12),
      has_profiles_(model == 742) {
    loops_.emplace_back(250, 3000, 45000);
    if (model == 742) loops_.emplace_back(250, 1500, 20000);
    show_process();
}

void Controller::advance(double now_ms) {
    if (!started_) now_ms_ = now_ms;
    started_ = true;
    const double elapsed = now_ms - now_ms_;
    if (elapsed <= 0) return;
    now_ms_ = now_ms;
    loops_[0].advance(elapsed, table_.value(reg::kSetPoint1),
                      table_.value(reg::kProportionalBand1));
    if (loops_.size() > 1) {
        loops_[1].advance(elapsed, table_.value(reg::kSetPoint2),
                          table_.value(reg::kProportionalBand2));
    }
    show_process();
}

void Controller::show_process() {
    table_.set_value(reg::kProcessValue1, rounded(loops_[0].value()));
    table_.set_value(reg::kProcessValue1Shown, rounded(loops_[0].value()));
    table_.set_value(reg::kOutput1, rounded(loops_[0].output() * 10));
    if (loops_.size() > 1) {
        table_.set_value(reg::kProcessValue2, rounded(loops_[1].value()));
        table_.set_value(reg::kOutput2, rounded(loops_[1].output() * 10));
    }
    for (int i = 0; i < 4; ++i) {
        const std::uint16_t block = offset(reg::kAlarms, 10 * i);
        if (table_.find(block) == nullptr) break;
        const bool second = table_.value(offset(block, kAlarmSource)) == 2 && loops_.size() > 1;
        const double value = loops_[second ? 1 : 0].value();
        const bool on = table_.value(offset(block, kAlarmType)) != 0 &&
                        (value < table_.value(offset(block, kAlarmLow)) ||
                         value > table_.value(offset(block, kAlarmHigh)));
        table_.set_value(offset(reg::kAlarmState1, i), on ? 1 : 0);
        inputs_[kDigitalInputs + static_cast<std::size_t>(i)] = on;
    }
}

bool Controller::is_profile_register(std::uint16_t number) const {
    return has_profiles_ && Profiles::is_register(number);
}

ExceptionCode Controller::read(std::uint16_t number, std::int16_t& value) const {
    return is_profile_register(number) ? profiles_.read(number, value) : table_.read(number, value);
}

ExceptionCode Controller::write(std::uint16_t number, std::int16_t value) {
    if (is_profile_register(number)) return profiles_.write(number, value);
    if (number == reg::kReset && value == kResetAll) return reset(value);
    return table_.write(number, value);
}

ExceptionCode Controller::write_many(std::uint16_t first, const std::vector<std::int16_t>& values) {
    std::uint16_t number = first;
    for (const std::int16_t value : values) {
        const ExceptionCode code =
            is_profile_register(number) ? ExceptionCode::None : table_.check_write(number, value);
        if (code != ExceptionCode::None) return code;
        ++number;
    }
    number = first;
    for (const std::int16_t value : values) {
        const ExceptionCode code = write(number++, value);
        if (code != ExceptionCode::None) return code;
    }
    return ExceptionCode::None;
}

ExceptionCode Controller::reset(std::int16_t value) {
    const ExceptionCode code = table_.check_write(reg::kReset, value);
    if (code != ExceptionCode::None) return code;
    if (table_.value(reg::kResetKey1) != kKey1 || table_.value(reg::kResetKey2) != kKey2) {
        return ExceptionCode::IllegalValue;
    }
    // Profiles stay: they are erased one by one, through their own registers.
    table_.restore_presets();
    silent_until_ms_ = now_ms_ + kRestartMs;
    return ExceptionCode::None;
}

} // namespace pelvan::simulator
