// What time does to a controller: the run, the process loops, the registers that show them.
#include <algorithm>
#include <array>
#include <cmath>

#include "simulator/controller/controller.h"

namespace pelvan::simulator {
namespace {

constexpr auto kTickUs = static_cast<std::int64_t>(Process::kTickMs * 1000);
constexpr int kMaxTicks = 4 * 60 * 60 * 24 * 10; // ten days
constexpr int kTicksForAStep = 10;               // the work of a step that takes no time

constexpr double kAmbient = 250;
// Without profiles the loops are small and quick, to show a set point that works. A run of profiles
// asks for a furnace: up to 1200 degrees above ambient, 40 degrees a minute from cold.
constexpr std::array<Plant, 2> kBench{{{3000, 45000}, {1500, 20000}}};
constexpr std::array<Plant, 2> kFurnace{{{12000, 1800000}, {12000, 1200000}}};

constexpr std::uint16_t kPidSetStride = 10;
constexpr int kEventOutputs = 8;

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

void Controller::add_loops() {
    next_tick_us_ = kTickUs;
    loops_.push_back({Process(kAmbient, kBench[0]),
                      {},
                      reg::kSetPoint1,
                      reg::kProportionalBand1,
                      reg::kProcessValue1,
                      reg::kOutput1});
    if (!has_profiles_) return;
    loops_.push_back({Process(kAmbient, kBench[1]),
                      {},
                      reg::kSetPoint2,
                      reg::kProportionalBand2,
                      reg::kProcessValue2,
                      reg::kOutput2});
}

void Controller::use_plants() {
    const auto& plants = run_.state() == RunState::Off ? kBench : kFurnace;
    for (std::size_t i = 0; i < loops_.size(); ++i)
        loops_[i].process.set_plant(plants[i]);
}

void Controller::advance(double now_ms) {
    if (!started_) begin_ms_ = now_ms_ = now_ms;
    started_ = true;
    now_ms_ = std::max(now_ms_, now_ms);
    pass_time(std::llround((now_ms_ - begin_ms_) * 1000 * speed_));
    show();
}

RunLoops Controller::run_loops() const {
    RunLoops loops;
    for (std::size_t i = 0; i < loops_.size(); ++i) {
        loops.set_points[i] = table_.value(loops_[i].set_point);
        loops.process[i] = rounded(loops_[i].process.value());
    }
    loops.wait_band = table_.value(reg::kWaitBand);
    return loops;
}

void Controller::apply_run(const RunLoops& loops) {
    for (std::size_t i = 0; i < loops_.size(); ++i)
        table_.set_value(loops_[i].set_point, rounded(loops.set_points[i]));
    const std::optional<int> events = run_.take_events();
    if (!events) return;
    for (std::size_t i = 0; i < kEventOutputs; ++i)
        coils_[i] = (*events >> i & 1) != 0;
}

void Controller::pass_time(std::int64_t until_us) {
    for (Loop& loop : loops_) {
        for (std::size_t set = 0; set < loop.bands.size(); ++set) {
            const int by = kPidSetStride * static_cast<int>(set);
            loop.bands[set] = table_.value(offset(loop.proportional_band, by));
        }
    }
    RunLoops loops = run_loops();
    int work = kMaxTicks;
    while (now_us_ < until_us && work > 0) {
        const RunState before = run_.state();
        const std::int64_t to =
            std::min({until_us, next_tick_us_, power_back_us_.value_or(until_us)});
        if (!power_back_us_) run_.advance(to - now_us_, profiles_, loops);
        now_us_ = to;
        if (power_back_us_ && to >= *power_back_us_) return_power(loops);
        if (to < next_tick_us_) continue;
        next_tick_us_ += kTickUs;
        const bool moving = tick(loops);
        work -= 1 + kTicksForAStep * std::max(run_.steps_in_scan() - 1, 0);
        if (!power_back_us_) run_.scan(profiles_, loops);
        // What stands still under a set point that stays needs no ticks.
        const bool running = before == RunState::Running || run_.state() == RunState::Running;
        if (!running && !moving && !power_back_us_) break;
    }
    if (now_us_ < until_us) {
        now_us_ = until_us;
        next_tick_us_ = (until_us / kTickUs + 1) * kTickUs;
        if (power_back_us_ && now_us_ >= *power_back_us_) return_power(loops);
    }
    apply_run(loops);
}

bool Controller::tick(RunLoops& loops) {
    bool moving = false;
    const bool off = power_back_us_.has_value() || run_.outputs_off();
    for (std::size_t i = 0; i < loops_.size(); ++i) {
        Loop& loop = loops_[i];
        const double band = loop.bands[static_cast<std::size_t>(run_.pid_set() - 1)];
        const bool moved =
            off ? loop.process.coast() : loop.process.tick(loops.set_points[i], band);
        loops.process[i] = rounded(loop.process.value());
        moving = moving || moved;
    }
    return moving;
}

void Controller::show() {
    for (const Loop& loop : loops_) {
        table_.set_value(loop.process_value, rounded(loop.process.value()));
        table_.set_value(loop.output, rounded(loop.process.output() * 10));
    }
    table_.set_value(reg::kProcessValue1Shown, table_.value(reg::kProcessValue1));
    show_alarms();
    if (has_profiles_) show_run();
}

void Controller::show_alarms() {
    for (int i = 0; i < 4; ++i) {
        const std::uint16_t block = offset(reg::kAlarms, 10 * i);
        if (table_.find(block) == nullptr) break;
        const bool second = table_.value(offset(block, kAlarmSource)) == 2 && loops_.size() > 1;
        const double value = loops_[second ? 1 : 0].process.value();
        const bool on = table_.value(offset(block, kAlarmType)) != 0 &&
                        (value < table_.value(offset(block, kAlarmLow)) ||
                         value > table_.value(offset(block, kAlarmHigh)));
        table_.set_value(offset(reg::kAlarmState1, i), on ? 1 : 0);
        inputs_[kDigitalInputs + static_cast<std::size_t>(i)] = on;
    }
}

void Controller::show_run() {
    const auto put = [&](std::uint16_t number, int value) {
        table_.set_value(number, static_cast<std::int16_t>(value));
    };
    put(reg::kRunState, static_cast<int>(run_.state()));
    put(reg::kRunProfile, run_.place().profile);
    put(reg::kRunStep, run_.place().step);
    const int left = run_.seconds_left();
    put(reg::kHoursLeft, left / 3600);
    put(reg::kMinutesLeft, left / 60 % 60);
    put(reg::kSecondsLeft, left % 60);
    put(reg::kJumpsDone, run_.jumps_done());
    put(reg::kPresentSetPoint1, table_.value(reg::kSetPoint1));
    put(reg::kPresentSetPoint2, table_.value(reg::kSetPoint2));
    int events = 0;
    for (std::size_t i = 0; i < kEventOutputs; ++i)
        events |= (coils_[i] ? 1 : 0) << i;
    put(reg::kPresentEvents, events);
}

} // namespace pelvan::simulator
