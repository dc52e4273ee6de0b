// A simulated controller: its registers, coils, discrete inputs, process loops and, on the models
// that have them, ramp profiles. Every protocol slave works on this one object, so that a set point
// written by one protocol is read by another. Lines, faults and frames are no business of it.
//
// Time is handed in as milliseconds of whatever clock the owner keeps; the controller's own clock
// may run faster than that.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <vector>

#include "simulator/controller/process.h"
#include "simulator/controller/profile_run.h"
#include "simulator/controller/profiles.h"
#include "simulator/controller/register_table.h"

namespace pelvan::simulator {

/// Values of the register that says what a run does when the power is back.
enum class AfterPowerFailure : std::int16_t { Continue = 0, Hold = 1, End = 2 };

/// Register numbers with a meaning to the controller itself.
namespace reg {
inline constexpr std::uint16_t kProcessValue1 = 100;
inline constexpr std::uint16_t kOutput1 = 103;
inline constexpr std::uint16_t kProcessValue2 = 104;
inline constexpr std::uint16_t kOutput2 = 107;
inline constexpr std::uint16_t kAlarmState1 = 110; // four of them
inline constexpr std::uint16_t kProcessValue1Shown = 458;
inline constexpr std::uint16_t kSetPoint1 = 300;
inline constexpr std::uint16_t kSetPoint2 = 319;
inline constexpr std::uint16_t kProportionalBand1 = 500;
inline constexpr std::uint16_t kProportionalBand2 = 550;
inline constexpr std::uint16_t kAlarms = 800; // blocks of ten: source, type, low, high, ...
inline constexpr std::uint16_t kResetKey1 = 1789;
inline constexpr std::uint16_t kResetKey2 = 1415;
inline constexpr std::uint16_t kReset = 1602;
inline constexpr std::uint16_t kRunState = 4100;
inline constexpr std::uint16_t kRunCommand = 4101;
inline constexpr std::uint16_t kStartProfile = 4102;
inline constexpr std::uint16_t kStartStep = 4103;
inline constexpr std::uint16_t kRunProfile = 4104;
inline constexpr std::uint16_t kRunStep = 4105;
inline constexpr std::uint16_t kHoursLeft = 4106;
inline constexpr std::uint16_t kMinutesLeft = 4107;
inline constexpr std::uint16_t kSecondsLeft = 4108;
inline constexpr std::uint16_t kJumpsDone = 4109;
inline constexpr std::uint16_t kPresentSetPoint1 = 4110;
inline constexpr std::uint16_t kPresentSetPoint2 = 4111;
inline constexpr std::uint16_t kPresentEvents = 4112;
inline constexpr std::uint16_t kWaitBand = 4120;
inline constexpr std::uint16_t kAfterPowerFailure = 4121;
inline constexpr std::uint16_t kPowerFails = 4122;
} // namespace reg

class Controller {
  public:
    /// Model 742 or 730; any other is the caller's mistake (see `is_known_model`). `speed` is how
    /// many times faster than the owner's its clock runs; a write to a register of `refused` of a
    /// value above the one there is answered with exception 3.
    explicit Controller(int model, int speed = 1, std::map<std::uint16_t, int> refused = {});

    [[nodiscard]] static bool is_known_model(int model) { return model == 742 || model == 730; }

    /// Lets time pass up to `now_ms`; a step backwards is taken as none. One long step ends where
    /// many short ones do, and takes little time: while a profile runs, more than ten days of the
    /// controller's clock in one step count as ten.
    void advance(double now_ms);

    /// A controller that restarts after a reset or a power failure receives and sends nothing for
    /// two seconds of the owner's clock.
    [[nodiscard]] bool silent(double now_ms) const { return now_ms < silent_until_ms_; }

    [[nodiscard]] ExceptionCode read(std::uint16_t number, std::int16_t& value) const;
    ExceptionCode write(std::uint16_t number, std::int16_t value);
    /// Checks every value before it writes the first: all or none, profile registers and the run's
    /// commands aside, which act one upon the other.
    ExceptionCode write_many(std::uint16_t first, const std::vector<std::int16_t>& values);

    [[nodiscard]] std::vector<bool>& coils() { return coils_; }
    [[nodiscard]] const std::vector<bool>& inputs() const { return inputs_; }
    [[nodiscard]] const RegisterTable& table() const { return table_; }

  private:
    struct Loop {
        Process process;
        std::array<int, 5> bands; // proportional, of each PID set, while time passes
        std::uint16_t set_point;
        std::uint16_t proportional_band; // of PID set 1
        std::uint16_t process_value;
        std::uint16_t output;
    };

    [[nodiscard]] bool is_profile_register(std::uint16_t number) const;
    [[nodiscard]] ExceptionCode check_write(std::uint16_t number, std::int16_t value) const;
    ExceptionCode obey(RunCommand command);
    ExceptionCode reset();
    void fail_power();
    void return_power(RunLoops& loops);
    void add_loops();
    void use_plants();
    void pass_time(std::int64_t until_us);
    bool tick(RunLoops& loops);
    [[nodiscard]] RunLoops run_loops() const;
    void apply_run(const RunLoops& loops);
    void show();
    void show_alarms();
    void show_run();

    RegisterTable table_;
    std::vector<Loop> loops_;
    std::vector<bool> coils_;
    std::vector<bool> inputs_;
    Profiles profiles_;
    ProfileRun run_;
    bool has_profiles_;
    int speed_;
    std::map<std::uint16_t, int> refused_;
    double begin_ms_ = 0; // of the owner's clock
    double now_ms_ = 0;
    bool started_ = false;
    double silent_until_ms_ = 0;
    std::int64_t now_us_ = 0; // of the controller's clock
    std::int64_t next_tick_us_ = 0;
    std::optional<std::int64_t> power_back_us_;
};

} // namespace pelvan::simulator
