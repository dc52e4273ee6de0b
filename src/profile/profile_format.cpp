#include "profile/profile_format.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <set>
#include <utility>

#include "platform/run_time_error.h"
#include "text/strings.h"

namespace pelvan {
namespace {

constexpr int kMaxRegister = 65535;

constexpr std::array<std::string_view, 5> kStateWords{"off", "running", "held", "waiting", "ended"};
constexpr std::array<std::string_view, 5> kCommandWords{"start", "hold", "resume", "next", "end"};

template <class Words> std::string joined(const Words& words) {
    std::string text;
    for (const auto& word : words)
        text.append(text.empty() ? "" : ", ").append(word);
    return text;
}

template <class Meaning, class Words>
std::optional<Meaning> meaning_of(const std::string& word, const Words& words) {
    for (std::size_t i = 0; i < words.size(); ++i)
        if (upper_case(word) == upper_case(words[i])) return static_cast<Meaning>(i);
    return std::nullopt;
}

const ProfileField* find_field(const std::vector<ProfileField>& fields, RegisterRole role) {
    const auto found = std::find_if(fields.begin(), fields.end(),
                                    [&](const ProfileField& field) { return field.role == role; });
    return found == fields.end() ? nullptr : &*found;
}

StepShape shape_of(const StepKind& kind) {
    using enum RegisterRole;
    const auto has = [&](RegisterRole a, RegisterRole b) { return kind.find(a) || kind.find(b); };
    if (kind.find(End)) return StepShape::End;
    if (has(JumpStep, JumpProfile)) return StepShape::Jump;
    if (!has(SetPoint1, SetPoint2)) return StepShape::Soak;
    return has(Rate1, Rate2) ? StepShape::RampRate : StepShape::RampTime;
}

/// Turns a sequence into a format; the first thing that is wrong stops it.
class FormatBuilder {
  public:
    LoadedFormat build(const ProfileSequence& sequence) {
        take_selectors(sequence);
        format_.own = section(sequence.profile_registers, RegisterSection::Profile);
        for (const auto& [type, read] : sequence.step_types)
            take_kind(type, read);
        find_end();
        format_.run = section(sequence.run_registers, RegisterSection::Run);
        if (!sequence.run_registers.empty()) take_run(sequence.run_registers.front().line);
        if (!problem_.empty()) return {std::nullopt, problem_};
        return {std::move(format_), {}};
    }

  private:
    void refuse(int line, const std::string& what) {
        if (problem_.empty()) problem_ = "Line " + std::to_string(line) + ": " + what;
    }

    ProfileField field(const ProfileRegister& read) {
        // Compared as read: a larger number does not fit an int.
        const bool possible = read.number <= static_cast<float>(kMaxRegister);
        if (!possible) refuse(read.line, "there are no registers above 65535.");
        const RegisterAttributes& said = read.attributes;
        ProfileField field{possible ? static_cast<int>(read.number) : 0,
                           read.text.empty() ? std::string(role_word(said.role)) : read.text,
                           said.role,
                           said.min,
                           said.max,
                           said.decimals,
                           said.unit,
                           said.choices};
        if (field.name.empty()) field.name = "register " + std::to_string(field.number);
        limit_to_choices(field, read);
        return field;
    }

    void limit_to_choices(ProfileField& field, const ProfileRegister& read) {
        if (field.choices.empty()) return;
        const int lowest = field.choices.begin()->first;
        const int highest = field.choices.rbegin()->first;
        if (lowest < field.min || highest > field.max)
            refuse(read.line, "a choice lies outside the limits.");
        field.min = lowest;
        field.max = highest;
    }

    void take_selectors(const ProfileSequence& read) {
        const std::pair<ProfileField*, const ProfileRegister*> selectors[] = {
            {&format_.profile_number, &read.profile_number},
            {&format_.step_number, &read.step_number},
            {&format_.action, &read.action},
            {&format_.step_type, &read.step_type},
            {&format_.step_count, &read.step_count},
            {&format_.highest_profile, &read.highest_profile}};
        for (const auto& [to, from] : selectors) {
            *to = field(*from);
            if (to->role != RegisterRole::None)
                refuse(from->line, "a register that selects has no role.");
        }
        for (const ProfileRegister* counted : {&read.profile_number, &read.step_number})
            if (counted->attributes.max < 1)
                refuse(counted->line, "profiles and steps are numbered from 1.");
    }

    std::vector<ProfileField> section(const std::vector<ProfileRegister>& read,
                                      RegisterSection section) {
        std::vector<ProfileField> fields;
        std::set<int> numbers;
        std::set<RegisterRole> roles;
        for (const ProfileRegister& one : read) {
            fields.push_back(field(one));
            const RegisterRole role = fields.back().role;
            const std::string word = "\"" + std::string(role_word(role)) + "\"";
            if (!numbers.insert(fields.back().number).second)
                refuse(one.line, "the register is there twice in its section.");
            if (role == RegisterRole::None) continue;
            if (section_of(role) != section)
                refuse(one.line, word +
                                     " does not belong into this section; a unit of this "
                                     "name is written \"unit " +
                                     std::string(role_word(role)) + "\".");
            if (role != RegisterRole::Name && !roles.insert(role).second)
                refuse(one.line, word + " is there twice in its section.");
        }
        return fields;
    }

    void take_kind(int type, const StepSection& read) {
        StepKind& kind = format_.kinds[type];
        kind.type = type;
        kind.name = read.name.empty() ? "type " + std::to_string(type) : read.name;
        kind.fields = section(read.registers, RegisterSection::Step);
        kind.shape = shape_of(kind);
        if (kind.shape != StepShape::End) return;
        if (format_.end_kind() != &kind) refuse(read.line, "there is more than one kind of end.");
    }

    /// Files without roles have their end in type 0.
    void find_end() {
        const auto zero = format_.kinds.find(0);
        if (!format_.end_kind() && zero != format_.kinds.end()) zero->second.shape = StepShape::End;
    }

    void take_run(int line) {
        const ProfileField* state = find_field(format_.run, RegisterRole::State);
        if (!state) return refuse(line, "the section RUN has no register \"state\".");
        for (const auto& [number, word] : state->choices) {
            const auto meaning = meaning_of<RunState>(word, kStateWords);
            if (!meaning) return refuse_word(line, *state, word, joined(kStateWords));
            format_.states[number] = *meaning;
        }
        if (format_.states.empty()) refuse(line, "the register \"state\" has no choices.");
        const ProfileField* command = find_field(format_.run, RegisterRole::Command);
        if (!command) return;
        for (const auto& [number, word] : command->choices) {
            const auto meaning = meaning_of<RunCommand>(word, kCommandWords);
            if (!meaning) return refuse_word(line, *command, word, joined(kCommandWords));
            format_.commands[*meaning] = number;
        }
    }

    void refuse_word(int line, const ProfileField& field, const std::string& word,
                     const std::string& words) {
        refuse(line, "in the section RUN, \"" + shortened(word, 80) + "\" of register " +
                         std::to_string(field.number) + " is none of: " + words + ".");
    }

    ProfileFormat format_;
    std::string problem_;
};

} // namespace

std::string_view run_word(RunState state) {
    return kStateWords.at(static_cast<std::size_t>(state));
}

std::string_view run_word(RunCommand command) {
    return kCommandWords.at(static_cast<std::size_t>(command));
}

const ProfileField* StepKind::find(RegisterRole role) const {
    return find_field(fields, role);
}

const ProfileField* StepKind::find(int number) const {
    const auto found = std::find_if(fields.begin(), fields.end(), [&](const ProfileField& field) {
        return field.number == number;
    });
    return found == fields.end() ? nullptr : &*found;
}

LoadedFormat ProfileFormat::from(const ProfileSequence& sequence) {
    return FormatBuilder().build(sequence);
}

LoadedFormat ProfileFormat::load(const std::string& path) {
    const std::string name = std::filesystem::path(path).filename().string();
    try {
        SequenceFault fault;
        const auto sequence = read_profile_sequence(path, fault);
        LoadedFormat loaded;
        if (sequence)
            loaded = from(*sequence);
        else
            loaded.problem = "Line " + std::to_string(fault.line) +
                             " is missing or not understood." +
                             (fault.reason.empty() ? "" : " " + fault.reason);
        if (!loaded.problem.empty()) loaded.problem = name + ": " + loaded.problem;
        return loaded;
    } catch (const RunTimeError& error) {
        const bool missing = error.number() == error_number::kFileNotFound ||
                             error.number() == error_number::kPathNotFound;
        return {std::nullopt, missing ? "Can not find the file " + path + "."
                                      : "The file " + path + " cannot be read."};
    }
}

const StepKind* ProfileFormat::kind(int type) const {
    const auto found = kinds.find(type);
    return found == kinds.end() ? nullptr : &found->second;
}

const StepKind* ProfileFormat::end_kind() const {
    const auto found = std::find_if(kinds.begin(), kinds.end(), [](const auto& kind) {
        return kind.second.shape == StepShape::End;
    });
    return found == kinds.end() ? nullptr : &found->second;
}

const ProfileField* ProfileFormat::run_field(RegisterRole role) const {
    return find_field(run, role);
}

std::optional<RunState> ProfileFormat::state(int raw) const {
    const auto found = states.find(raw);
    return found == states.end() ? std::nullopt : std::optional(found->second);
}

std::optional<int> ProfileFormat::command(RunCommand wanted) const {
    const auto found = commands.find(wanted);
    return found == commands.end() ? std::nullopt : std::optional(found->second);
}

} // namespace pelvan
