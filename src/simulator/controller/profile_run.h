// The running of ramp profiles: which step it is, how far, and what it makes of set points and
// event outputs. docs/simulated-controllers.md has the rules. Profiles and process belong to the
// controller, which hands them in and lets time pass here.
//
// Time is counted in whole microseconds, so that many short advances end where one long one does.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <utility>

#include "simulator/controller/profiles.h"

namespace pelvan::simulator {

/// Values of the state register.
enum class RunState : std::int16_t { Off = 0, Running = 1, Held = 2, Waiting = 3, Ended = 4 };

/// Values of the command register.
enum class RunCommand : std::int16_t { Start = 1, Hold = 2, Resume = 3, Next = 4, End = 5 };

/// What a step does at a profile's end; values of the end step's register.
enum class EndKind : std::int16_t { Hold = 0, ControlOff = 1, AllOff = 2, Idle = 3 };

/// A profile and a step, counted from 1.
struct RunPlace {
    int profile = 0;
    int step = 0;
    auto operator<=>(const RunPlace&) const = default;
};

/// What a run has to do with beside the profiles; tenths of a degree.
struct RunLoops {
    std::array<int, 2> set_points{}; // in force; the run moves them
    std::array<int, 2> process{};
    int wait_band = 0;
};

class ProfileRun {
  public:
    /// How many steps that take no time may follow one another between two calls of `scan`.
    static constexpr int kStepsInAScan = 1000;

    /// Begins at a step that is there, with the set points at the process values. False, and
    /// nothing happens, when the step is not there or a profile runs.
    bool start(const RunPlace& at, const Profiles& profiles, RunLoops& loops);
    /// Any command but the start. False, and nothing happens, when the state does not allow it.
    bool obey(RunCommand command, const Profiles& profiles, RunLoops& loops);

    /// Lets time pass.
    void advance(std::int64_t microseconds, const Profiles& profiles, RunLoops& loops);
    /// Looks whether a wait is over; allows further steps that take no time.
    void scan(const Profiles& profiles, RunLoops& loops);

    /// Since the last `scan`.
    [[nodiscard]] int steps_in_scan() const { return kStepsInAScan - steps_left_; }

    [[nodiscard]] RunState state() const { return state_; }
    /// Running, held or waiting: the set points are the run's.
    [[nodiscard]] bool active() const {
        return state_ != RunState::Off && state_ != RunState::Ended;
    }
    /// The step that runs; zeros while none does.
    [[nodiscard]] RunPlace place() const { return active() ? place_ : RunPlace{}; }
    /// Whole seconds, begun ones counted.
    [[nodiscard]] int seconds_left() const;
    /// Of the jump step that was passed last.
    [[nodiscard]] int jumps_done() const { return jumps_done_; }
    /// Of the last step that had one.
    [[nodiscard]] int pid_set() const { return pid_set_; }
    /// An end switched the outputs off.
    [[nodiscard]] bool outputs_off() const { return outputs_off_; }
    /// Control goes on after an end that switched the outputs off.
    void switch_outputs_on() { outputs_off_ = false; }
    /// The event outputs, when a step has set them since the last call.
    [[nodiscard]] std::optional<int> take_events() { return std::exchange(new_events_, {}); }

  private:
    void next(const Profiles& profiles, RunLoops& loops);
    void begin(const Profiles& profiles, RunLoops& loops);
    void jump(const Profiles::Step& step, const Profiles& profiles, RunLoops& loops);
    void finish(const RunLoops& loops);
    void end(const Profiles& profiles, RunLoops& loops);
    void move_set_points(RunLoops& loops) const;
    [[nodiscard]] bool wait_is_over(const RunLoops& loops) const;

    RunState state_ = RunState::Off;
    RunPlace place_;
    bool arriving_ = false; // the step at `place_` is yet to begin
    std::array<int, 2> from_{};
    std::array<int, 2> to_{};
    std::int64_t duration_us_ = 0;
    std::int64_t elapsed_us_ = 0;
    int wait_ = 0; // for no input, for input 1, for input 2
    int pid_set_ = 1;
    bool outputs_off_ = false;
    std::optional<int> new_events_;
    std::map<RunPlace, int> jumps_; // done so far, by each jump step
    int jumps_done_ = 0;
    int steps_left_ = kStepsInAScan;
};

} // namespace pelvan::simulator
