// A simulated controller: its registers, coils, discrete inputs, process loops and, on the models
// that have them, ramp profiles. Every protocol slave works on this one object, so that a set point
// written by one protocol is read by another. Lines, faults and frames are no business of it.
//
// Time is handed in as milliseconds of whatever clock the owner keeps.
#pragma once

#include <cstdint>
#include <vector>

#include "simulator/controller/process.h"
#include "simulator/controller/profiles.h"
#include "simulator/controller/register_table.h"

namespace pelvan::simulator {

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
} // namespace reg

class Controller {
  public:
    /// Model 742 or 730; any other is the caller's mistake (see `is_known_model`).
    explicit Controller(int model);

    [[nodiscard]] static bool is_known_model(int model) { return model == 742 || model == 730; }

    /// Lets time pass up to `now_ms`; a step backwards is taken as none.
    void advance(double now_ms);

    /// A controller that restarts after a reset receives and sends nothing for two seconds.
    [[nodiscard]] bool silent(double now_ms) const { return now_ms < silent_until_ms_; }

    [[nodiscard]] ExceptionCode read(std::uint16_t number, std::int16_t& value) const;
    ExceptionCode write(std::uint16_t number, std::int16_t value);
    /// Checks every value before it writes the first: all or none, profile registers aside, which
    /// act one upon the other.
    ExceptionCode write_many(std::uint16_t first, const std::vector<std::int16_t>& values);

    [[nodiscard]] std::vector<bool>& coils() { return coils_; }
    [[nodiscard]] const std::vector<bool>& inputs() const { return inputs_; }
    [[nodiscard]] const RegisterTable& table() const { return table_; }

  private:
    [[nodiscard]] bool is_profile_register(std::uint16_t number) const;
    ExceptionCode reset(std::int16_t value);
    void show_process();

    RegisterTable table_;
    std::vector<Process> loops_;
    std::vector<bool> coils_;
    std::vector<bool> inputs_;
    Profiles profiles_;
    bool has_profiles_;
    double now_ms_ = 0;
    bool started_ = false;
    double silent_until_ms_ = 0;
};

} // namespace pelvan::simulator
