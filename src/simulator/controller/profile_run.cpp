#include "simulator/controller/profile_run.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace pelvan::simulator {
namespace {

constexpr std::int64_t kSecondUs = 1000000;
constexpr int kMinSetPoint = -2000;
constexpr int kMaxSetPoint = 9999;

std::int64_t time_of(const Profiles::Step& step) {
    const std::int64_t minutes = 60 * step.field(reg::kStepHours) + step.field(reg::kStepMinutes);
    return (60 * minutes + step.field(reg::kStepSeconds)) * kSecondUs;
}

/// Both in tenths of a degree, the rate a minute.
std::int64_t time_of_ramp(int way, int rate) {
    return std::llround(std::abs(way) * 60.0 * kSecondUs / std::max(rate, 1));
}

} // namespace

bool ProfileRun::start(const RunPlace& at, const Profiles& profiles, RunLoops& loops) {
    if (active() || profiles.step(at.profile, at.step) == nullptr) return false;
    for (std::size_t i = 0; i < loops.process.size(); ++i)
        loops.set_points[i] = std::clamp(loops.process[i], kMinSetPoint, kMaxSetPoint);
    state_ = RunState::Running;
    place_ = at;
    arriving_ = true;
    outputs_off_ = false;
    jumps_.clear();
    jumps_done_ = 0;
    advance(0, profiles, loops);
    return true;
}

bool ProfileRun::obey(RunCommand command, const Profiles& profiles, RunLoops& loops) {
    if (!active()) return false;
    switch (command) {
    case RunCommand::Start:
        return false;
    case RunCommand::Hold:
        return std::exchange(state_, RunState::Held) != RunState::Held;
    case RunCommand::Resume:
        if (state_ != RunState::Held) return false;
        state_ = RunState::Running; // a wait that is not over is noticed at once
        advance(0, profiles, loops);
        return true;
    case RunCommand::Next:
        next(profiles, loops);
        return true;
    case RunCommand::End:
        end(profiles, loops);
        return true;
    }
    return false;
}

void ProfileRun::next(const Profiles& profiles, RunLoops& loops) {
    const bool held = state_ == RunState::Held;
    if (!arriving_) ++place_.step;
    arriving_ = true;
    state_ = RunState::Running;
    advance(0, profiles, loops);
    if (held && active()) state_ = RunState::Held;
}

void ProfileRun::advance(std::int64_t microseconds, const Profiles& profiles, RunLoops& loops) {
    while (state_ == RunState::Running) {
        if (arriving_) {
            if (steps_left_ == 0) break;
            --steps_left_;
            begin(profiles, loops);
            continue;
        }
        const std::int64_t taken = std::min(microseconds, duration_us_ - elapsed_us_);
        elapsed_us_ += taken;
        microseconds -= taken;
        move_set_points(loops);
        if (elapsed_us_ < duration_us_) break;
        finish(loops);
    }
}

void ProfileRun::scan(const Profiles& profiles, RunLoops& loops) {
    steps_left_ = kStepsInAScan;
    if (state_ == RunState::Waiting) state_ = RunState::Running;
    advance(0, profiles, loops);
}

void ProfileRun::begin(const Profiles& profiles, RunLoops& loops) {
    const Profiles::Step* step = profiles.step(place_.profile, place_.step);
    if (step == nullptr || step->type == StepType::End) {
        end(profiles, loops);
        return;
    }
    if (step->type == StepType::Jump) {
        jump(*step, profiles, loops);
        return;
    }
    arriving_ = false;
    elapsed_us_ = 0;
    from_ = loops.set_points;
    to_ = from_;
    if (step->type != StepType::Soak) to_[0] = step->field(reg::kStepSetPoint1);
    if (step->type == StepType::RampTime) to_[1] = step->field(reg::kStepSetPoint2);
    duration_us_ = step->type == StepType::RampRate
                       ? time_of_ramp(to_[0] - from_[0], step->field(reg::kStepRate))
                       : time_of(*step);
    wait_ = step->field(reg::kStepWait);
    pid_set_ = step->field(reg::kStepPidSet);
    new_events_ = step->field(reg::kStepEvents);
}

void ProfileRun::jump(const Profiles::Step& step, const Profiles& profiles, RunLoops& loops) {
    int& done = jumps_[place_];
    if (done >= step.field(reg::kJumpCount)) {
        jumps_done_ = std::exchange(done, 0); // counts again when it is met anew
        ++place_.step;
        return;
    }
    const RunPlace target{step.field(reg::kJumpProfile), step.field(reg::kJumpStep)};
    if (profiles.step(target.profile, target.step) == nullptr) {
        end(profiles, loops); // heating on by another step than the one meant would be worse
        return;
    }
    jumps_done_ = ++done;
    place_ = target;
}

void ProfileRun::finish(const RunLoops& loops) {
    if (!wait_is_over(loops)) {
        state_ = RunState::Waiting;
        return;
    }
    ++place_.step;
    arriving_ = true;
}

bool ProfileRun::wait_is_over(const RunLoops& loops) const {
    if (wait_ == 0) return true;
    const std::size_t loop = wait_ == 2 ? 1 : 0;
    return std::abs(loops.process[loop] - loops.set_points[loop]) <= loops.wait_band;
}

void ProfileRun::end(const Profiles& profiles, RunLoops& loops) {
    state_ = RunState::Ended;
    const Profiles::Step* last = profiles.step(place_.profile, profiles.step_count(place_.profile));
    if (last == nullptr) return;
    const auto kind = static_cast<EndKind>(last->field(reg::kEndKind));
    outputs_off_ = kind == EndKind::ControlOff || kind == EndKind::AllOff;
    if (kind == EndKind::AllOff) new_events_ = 0;
    if (kind == EndKind::Idle) loops.set_points[0] = last->field(reg::kIdleSetPoint);
}

void ProfileRun::move_set_points(RunLoops& loops) const {
    const double part = duration_us_ == 0
                            ? 1
                            : static_cast<double>(elapsed_us_) / static_cast<double>(duration_us_);
    for (std::size_t i = 0; i < to_.size(); ++i) {
        loops.set_points[i] = from_[i] + static_cast<int>(std::lround((to_[i] - from_[i]) * part));
    }
}

int ProfileRun::seconds_left() const {
    if (!active() || arriving_) return 0;
    return static_cast<int>((duration_us_ - elapsed_us_ + kSecondUs - 1) / kSecondUs);
}

} // namespace pelvan::simulator
