// The sequence files of a controller model, written by hand: the .cds says which registers make up
// a setup and in which order, the .pds how its ramp profiles are read. docs/sequence-files.md
// describes both for those who write them.
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/text_file.h"
#include "registers/register_attributes.h"

namespace pelvan {

/// A text, such as a first line, without the mark that some editors put before UTF-8.
[[nodiscard]] std::string without_mark(std::string text);

/// Registers through which an upload handles profiles, as lines 2 to 4 of the .cds name them.
struct ProfileRegisters {
    float number = 4000;     // selects a profile
    float action = 4002;     // creates, erases, inserts a step
    float step_count = 4040; // steps of the selected profile, 0 when there is no such profile

    /// The register that selects a step stands behind the profile's.
    [[nodiscard]] float step() const { return number + 1; }
    /// Profile registers stand in the hundred that the selecting register begins.
    [[nodiscard]] bool contains(float register_number) const {
        return register_number >= number && register_number < number + 100;
    }
};

/// A .cds file, read from its first line to its last. The lines that are not there count as empty.
class SequenceFile {
  public:
    /// Opens the file and reads line 1; 53, 70, 75 when it cannot be read.
    explicit SequenceFile(const std::string& path);

    /// Whether line 1 says that the model has ramp profiles.
    [[nodiscard]] bool has_profiles() const { return has_profiles_; }
    /// Whether it would say so without the spaces before the word.
    [[nodiscard]] bool hides_profiles() const { return hides_profiles_; }

    /// Reads lines 2 to 4.
    [[nodiscard]] ProfileRegisters read_profile_registers();

    /// The register of the next register line (from line 5 on); nothing at the end of the file or
    /// at a line that begins with no digit, which ends the list.
    [[nodiscard]] std::optional<float> next_register();
    /// When the list has ended: what is lost by a line that ended it too early, as a sentence
    /// without the file's name; empty when no register stands behind its end.
    [[nodiscard]] std::string lost_behind();

  private:
    std::unique_ptr<TextReader> reader_;
    bool has_profiles_ = false;
    bool hides_profiles_ = false;
};

/// Register lines that a .cds of so many lines can have.
[[nodiscard]] int register_lines(int cds_lines);

/// Values of the action register.
enum class ProfileAction { Create = 1, Erase = 2, InsertStep = 3 };

/// A register that a .pds names.
struct ProfileRegister {
    float number = 0;
    std::string text;
    RegisterAttributes attributes;
    int line = 0; // of the file
};

/// A kind of step.
struct StepSection {
    std::string name;
    std::vector<ProfileRegister> registers;
    int line = 0;
};

/// What a .pds file says.
struct ProfileSequence {
    ProfileRegister profile_number;
    ProfileRegister step_number;
    ProfileRegister action;
    ProfileRegister step_type;
    ProfileRegister step_count;
    ProfileRegister highest_profile;
    std::vector<ProfileRegister> profile_registers; // read once a profile
    std::map<int, StepSection> step_types;          // what is read for each step, by its type
    std::vector<ProfileRegister> run_registers;     // of what runs, no part of a profile
};

/// The line at which a .pds file is not understood.
struct SequenceFault {
    int line = 0;
    std::string reason; // a sentence; empty when the line is missing or of no known kind
};

/// Reads a .pds file; nothing when a line is not understood. Lines without content are skipped.
[[nodiscard]] std::optional<ProfileSequence> read_profile_sequence(const std::string& path,
                                                                   SequenceFault& fault);

} // namespace pelvan
