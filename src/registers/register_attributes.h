// What a line of a .pds says of its register behind the text, in braces:
//     4007 set point 1 {set point 1; -2000 to 9999; 1 decimal; degrees}
// The role is what the program takes the register for; limits, decimals, choices and unit are what
// people see. docs/sequence-files.md describes the form for those who write it.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace pelvan {

enum class RegisterRole {
    None,
    // Of a step.
    Hours,
    Minutes,
    Seconds,
    SetPoint1,
    SetPoint2,
    Rate1,
    Rate2,
    PidSet,
    Wait,
    Events,
    JumpProfile,
    JumpStep,
    JumpCount,
    End,
    Idle1,
    Idle2,
    // Of a profile: a character of its name.
    Name,
    // Of what runs.
    State,
    Command,
    StartProfile,
    StartStep,
    Profile,
    Step,
    HoursLeft,
    MinutesLeft,
    SecondsLeft,
    JumpsDone,
    PresentSetPoint1,
    PresentSetPoint2,
    PresentEvents,
    ProcessValue1,
    ProcessValue2,
    WaitBand
};

/// The sections of a .pds whose registers may have roles.
enum class RegisterSection { Step, Profile, Run };

/// Numbers are those that the register holds: a limit of 9999 with one decimal is shown as 999.9.
struct RegisterAttributes {
    RegisterRole role = RegisterRole::None;
    int min = -32768;
    int max = 32767;
    int decimals = 0;
    std::string unit;
    std::map<int, std::string> choices; // words by number; none: any number within the limits

    bool operator==(const RegisterAttributes&) const = default;
};

/// A register's text and attributes, or what is wrong with them.
struct RegisterText {
    std::string text; // without the braces
    RegisterAttributes attributes;
    std::string problem; // a sentence; empty when all is understood
};

/// Reads what stands behind the number of a register. A text without a brace has no attributes.
[[nodiscard]] RegisterText parse_register_text(std::string_view text);

/// The word of a role in the braces, empty for none.
[[nodiscard]] std::string_view role_word(RegisterRole role);
[[nodiscard]] std::optional<RegisterSection> section_of(RegisterRole role);

} // namespace pelvan
