// Ramp profiles of a controller and the registers through which they are read and written: a
// profile and a step are selected, then the registers of that step answer; which of them there are
// depends on the kind of step. docs/simulated-controllers.md has the table.
//
// Profiles are numbered without gaps: a number can be created only when all below it are there. An
// erased profile gives up its number only when no higher one is in use; otherwise the number stays,
// without a profile, so that the profiles above keep theirs.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "simulator/controller/register_table.h"

namespace pelvan::simulator {

namespace reg {
inline constexpr std::uint16_t kProfileNumber = 4000;
inline constexpr std::uint16_t kStepNumber = 4001;
inline constexpr std::uint16_t kProfileAction = 4002;
inline constexpr std::uint16_t kStepType = 4003;
inline constexpr std::uint16_t kStepFieldFirst = 4004;
inline constexpr std::uint16_t kStepHours = 4004;
inline constexpr std::uint16_t kStepMinutes = 4005;
inline constexpr std::uint16_t kStepSeconds = 4006;
inline constexpr std::uint16_t kStepSetPoint1 = 4007;
inline constexpr std::uint16_t kStepSetPoint2 = 4008;
inline constexpr std::uint16_t kStepPidSet = 4009;
inline constexpr std::uint16_t kStepWait = 4010;
inline constexpr std::uint16_t kStepEvents = 4011;
inline constexpr std::uint16_t kStepRate = 4012;
inline constexpr std::uint16_t kJumpProfile = 4013;
inline constexpr std::uint16_t kJumpStep = 4014;
inline constexpr std::uint16_t kJumpCount = 4015;
inline constexpr std::uint16_t kEndKind = 4016;
inline constexpr std::uint16_t kIdleSetPoint = 4017;
inline constexpr std::uint16_t kStepFieldLast = 4017;
inline constexpr std::uint16_t kStepCount = 4040;
inline constexpr std::uint16_t kHighestProfile = 4041;
inline constexpr std::uint16_t kProfileExists = 4042;
inline constexpr std::uint16_t kProfileNameFirst = 4050;
inline constexpr std::uint16_t kProfileNameLast = 4059;
} // namespace reg

/// Values of the action register.
enum class ProfileAction : std::int16_t { Create = 1, Erase = 2, InsertStep = 3, DeleteStep = 4 };

enum class StepType : std::int16_t { End = 0, RampTime = 1, RampRate = 2, Soak = 3, Jump = 4 };

class Profiles {
  public:
    static constexpr int kMaxProfiles = 40;
    static constexpr int kMaxSteps = 50;

    struct Step {
        StepType type = StepType::End;
        std::map<std::uint16_t, std::int16_t> fields;

        /// 0 for a register that the kind of step does not have.
        [[nodiscard]] int field(std::uint16_t number) const {
            const auto found = fields.find(number);
            return found == fields.end() ? 0 : found->second;
        }
    };

    [[nodiscard]] static bool is_register(std::uint16_t number) {
        return number >= reg::kProfileNumber && number <= reg::kProfileNameLast;
    }
    /// Whether a write of the register changes the selected profile.
    [[nodiscard]] static bool is_edit(std::uint16_t number) {
        return is_register(number) && number != reg::kProfileNumber && number != reg::kStepNumber;
    }

    /// A step by its number and its profile's, counted from 1; null when it is not there.
    [[nodiscard]] const Step* step(int profile, int step) const;
    [[nodiscard]] int step_count(int profile) const;
    /// Counted from 1.
    [[nodiscard]] int selected_number() const { return static_cast<int>(profile_) + 1; }

    [[nodiscard]] ExceptionCode read(std::uint16_t number, std::int16_t& value) const;
    ExceptionCode write(std::uint16_t number, std::int16_t value);

  private:
    struct Profile {
        std::vector<Step> steps; // the last one is the end step; no steps: no profile
        std::string name = std::string(10, ' ');
    };

    [[nodiscard]] static Step make_step(StepType type);
    [[nodiscard]] const Profile* selected() const;
    [[nodiscard]] Profile* selected();
    [[nodiscard]] bool at_end_step() const;
    ExceptionCode select_profile(std::int16_t value);
    ExceptionCode select_step(std::int16_t value);
    ExceptionCode act(std::int16_t value);
    ExceptionCode create();
    ExceptionCode erase();
    ExceptionCode insert_step();
    ExceptionCode delete_step();
    ExceptionCode set_type(std::int16_t value);
    ExceptionCode set_field(std::uint16_t number, std::int16_t value);
    ExceptionCode set_name(std::uint16_t number, std::int16_t value);

    std::vector<Profile> profiles_; // element 0 is profile 1
    std::size_t profile_ = 0;       // selected, counted from 0; may be one past the last
    std::size_t step_ = 0;          // selected, counted from 0
};

} // namespace pelvan::simulator
