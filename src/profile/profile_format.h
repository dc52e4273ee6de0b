// What a model's .pds says of its ramp profiles, as the tools for them need it: the kinds of step,
// what each field of them means, holds and is called, and the registers of what runs. Nothing in
// the program knows register numbers or limits of a model's profiles beside this.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "registers/sequence_file.h"

namespace pelvan {

/// A register: of a step, of a profile as a whole, or of what runs. Limits and choices are the
/// numbers that the register holds; with choices the limits are the lowest and highest of them.
struct ProfileField {
    int number = 0;
    std::string name;
    RegisterRole role = RegisterRole::None;
    int min = -32768;
    int max = 32767;
    int decimals = 0;
    std::string unit;
    std::map<int, std::string> choices;

    [[nodiscard]] bool allows(int raw) const;
    /// The number that the register stands for: 123 with one decimal is 12.3.
    [[nodiscard]] double value(int raw) const;
    /// The allowed number of the register that is nearest to the value.
    [[nodiscard]] int nearest(double value) const;
    /// 0, or the allowed number that is nearest to it.
    [[nodiscard]] int preset() const { return nearest(0); }
};

/// What a kind of step does, told from the roles of its fields.
enum class StepShape {
    End,      // has `end`, or is type 0 where no type has it
    Jump,     // has `jump step` or `jump profile`
    RampRate, // has a set point and a rate
    RampTime, // has a set point and no rate
    Soak      // keeps the set points, as long as its time fields say
};

struct StepKind {
    int type = 0;
    std::string name;
    StepShape shape = StepShape::Soak;
    std::vector<ProfileField> fields; // in the order in which they are written

    [[nodiscard]] const ProfileField* find(RegisterRole role) const;
    [[nodiscard]] const ProfileField* find(int number) const;
};

enum class RunState { Off, Running, Held, Waiting, Ended };
enum class RunCommand { Start, Hold, Resume, Next, End };

/// The words of a .pds for them: "off", "running", "start" ...
[[nodiscard]] std::string_view run_word(RunState state);
[[nodiscard]] std::string_view run_word(RunCommand command);

/// The number for a register, or what is wrong with the text that should be one.
struct ParsedValue {
    std::optional<int> raw;
    std::string problem; // a sentence
};

struct LoadedFormat;

struct ProfileFormat {
    ProfileField profile_number; // its highest number is that of profiles in a controller
    ProfileField step_number;    // its highest number is that of steps in a profile, end included
    ProfileField action;
    ProfileField step_type;
    ProfileField step_count;
    ProfileField highest_profile;
    std::vector<ProfileField> own;  // of a profile as a whole, its name's characters among them
    std::map<int, StepKind> kinds;  // by type number
    std::vector<ProfileField> run;  // of what runs; none: the model can be edited only
    std::map<int, RunState> states; // by number of the register `state`
    std::map<RunCommand, int> commands;

    /// Builds it, or says with the line's number what cannot be understood.
    [[nodiscard]] static LoadedFormat from(const ProfileSequence& sequence);
    /// Reads a .pds; a file that is not there or cannot be read is a problem too.
    [[nodiscard]] static LoadedFormat load(const std::string& path);

    [[nodiscard]] const StepKind* kind(int type) const;
    [[nodiscard]] const StepKind* end_kind() const;
    [[nodiscard]] const ProfileField* run_field(RegisterRole role) const;
    /// Whether what runs can be seen; `commands` says what can be done about it.
    [[nodiscard]] bool runs() const { return !states.empty(); }
    [[nodiscard]] std::optional<RunState> state(int raw) const;
    [[nodiscard]] std::optional<int> command(RunCommand command) const;
    [[nodiscard]] int max_profiles() const { return profile_number.max; }
    [[nodiscard]] int max_steps() const { return step_number.max; }

    /// The field's text without its unit: the word of a choice, else the number with its decimals.
    [[nodiscard]] static std::string value_text(const ProfileField& field, int raw);
    /// As `value_text`, with the unit behind.
    [[nodiscard]] static std::string unit_text(const ProfileField& field, int raw);
    /// What the field takes, as the beginning of a sentence.
    [[nodiscard]] static std::string limits_text(const ProfileField& field);
    /// Takes what `value_text` and `unit_text` give and what people type: a word in small letters
    /// or capitals, a number with no more decimals than the field has. Any text, however long.
    [[nodiscard]] static ParsedValue parse_value(const ProfileField& field, std::string_view text);
};

struct LoadedFormat {
    std::optional<ProfileFormat> format;
    std::string problem; // a sentence, with the line's number where there is one
};

} // namespace pelvan
