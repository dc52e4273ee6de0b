#include "profile/profile_text.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

#include "platform/whole_file.h"
#include "registers/sequence_file.h"
#include "registers/setup_file.h"
#include "text/numbers.h"
#include "text/strings.h"

namespace pelvan {
namespace {

constexpr int kCreate = static_cast<int>(ProfileAction::Create);
constexpr int kInsertStep = static_cast<int>(ProfileAction::InsertStep);

/// Takes lines one by one; the first that is wrong ends it.
class ProfileLineReader {
  public:
    explicit ProfileLineReader(const ProfileFormat& format) : format_(format) {}

    /// False when `problem` says why.
    bool take(const std::string& line) {
        ++line_;
        const auto number = GetRegNumber(line);
        if (!number || !is_profile_register(*number)) return take_other(line, number.has_value());
        const auto space = line.find(' ');
        const std::string text = space == line.npos ? "" : trim(line.substr(space));
        const auto value = whole_number(text, -32768, 32767);
        if (!value)
            return refuse("register " + plain_single(*number) + " has no value" +
                          (text.empty() ? "" : ": \"" + shown(text) + "\"") + ".");
        return take_value(static_cast<int>(*number), static_cast<int>(*value));
    }

    /// Whether all profiles are whole.
    bool end() {
        ++line_;
        return finish_profile();
    }

    ProfileSet profiles;
    std::string problem;
    std::vector<std::string> notes;

  private:
    bool refuse(const std::string& what) {
        problem = "Line " + std::to_string(line_) + ": " + what;
        return false;
    }

    [[nodiscard]] bool is_profile_register(float number) const {
        const auto first = static_cast<float>(format_.profile_number.number);
        if (ProfileRegisters{first}.contains(number)) return true;
        return number <= 65535 &&
               (find_own(static_cast<int>(number)) ||
                std::any_of(format_.kinds.begin(), format_.kinds.end(), [&](const auto& kind) {
                    return kind.second.find(static_cast<int>(number));
                }));
    }

    /// A setup file has its header before the profiles, and other registers before and behind.
    bool take_other(const std::string& line, bool is_register) {
        constexpr auto is_control = [](char c) { return (c >= 0 && c < ' ' && c != '\t'); };
        if (std::any_of(line.begin(), line.end(), is_control)) return refuse("this is no text.");
        if (is_register || trim(line).empty() || !current_) return true;
        return refuse("\"" + shown(line) + "\" is no register and its value.");
    }

    [[nodiscard]] const ProfileField* find_own(int number) const {
        const auto found =
            std::find_if(format_.own.begin(), format_.own.end(),
                         [&](const ProfileField& field) { return field.number == number; });
        return found == format_.own.end() ? nullptr : &*found;
    }

    bool take_value(int number, int value) {
        if (number == format_.profile_number.number) return begin_profile(value);
        if (!current_) return refuse("a profile must be chosen first.");
        if (number == format_.action.number) return act(value);
        if (current_->steps.empty()) return refuse(name() + " must be created first.");
        if (number == format_.step_number.number) return select(value);
        if (number == format_.step_type.number) return set_type(value);
        if (find_own(number)) return set_once(current_->own, number, value, name());
        return set_field(number, value);
    }

    bool begin_profile(int number) {
        if (!finish_profile()) return false;
        if (number < 1 || number > format_.max_profiles())
            return refuse("profiles have numbers from 1 to " +
                          std::to_string(format_.max_profiles()) + ", not " +
                          std::to_string(number) + ".");
        const auto [place, is_new] = profiles.try_emplace(number);
        if (!is_new) return refuse("profile " + std::to_string(number) + " is there twice.");
        current_ = &place->second;
        current_->number = number;
        given_.clear();
        step_ = 0;
        return true;
    }

    bool act(int action) {
        const bool exists = !current_->steps.empty();
        if (action != kCreate && action != kInsertStep)
            return refuse("action " + std::to_string(action) +
                          " is none that a file of profiles has.");
        if (exists == (action == kCreate))
            return refuse(name() + (exists ? " is created twice." : " must be created first."));
        const auto at = static_cast<std::ptrdiff_t>(step_);
        current_->steps.insert(current_->steps.begin() + at, ProfileStep{});
        given_.insert(given_.begin() + at, false);
        return true;
    }

    bool select(int step) {
        if (step < 1 || static_cast<std::size_t>(step) > current_->steps.size())
            return refuse(name() + " has no step " + std::to_string(step) + ".");
        step_ = static_cast<std::size_t>(step - 1);
        return true;
    }

    bool set_type(int type) {
        if (!format_.kind(type))
            return refuse("the model has no steps of type " + std::to_string(type) + ".");
        const int former = current_->steps[step_].type;
        if (given_[step_])
            return type == former || refuse(step_name() + " has type " + std::to_string(former) +
                                            " already, not " + std::to_string(type) + ".");
        given_[step_] = true;
        current_->steps[step_] = {type, {}};
        return true;
    }

    bool set_field(int number, int value) {
        const StepKind* kind = format_.kind(current_->steps[step_].type);
        if (!given_[step_] || !kind)
            return refuse("the type of step " + std::to_string(step_ + 1) + " must come first.");
        if (!kind->find(number))
            return refuse("a step of the kind \"" + kind->name + "\" has no register " +
                          std::to_string(number) + ".");
        return set_once(current_->steps[step_].fields, number, value, step_name());
    }

    /// Nobody can tell which of two values is meant; the same one twice harms nobody.
    bool set_once(std::map<int, int>& values, int number, int value, const std::string& owner) {
        const int there = values.try_emplace(number, value).first->second;
        return there == value ||
               refuse("register " + std::to_string(number) + " of " + owner + " has the value " +
                      std::to_string(there) + " already, not " + std::to_string(value) + ".");
    }

    bool finish_profile() {
        if (!current_) return true;
        if (current_->steps.empty()) return refuse(name() + " is chosen, and nothing follows.");
        const auto missing = std::find(given_.begin(), given_.end(), false);
        if (missing != given_.end())
            return refuse("step " + std::to_string(missing - given_.begin() + 1) + " of " + name() +
                          " is missing: the file may be cut.");
        for (std::size_t step = 0; step < current_->steps.size(); ++step)
            note_missing(step);
        return true;
    }

    /// A register that is not fitted is left out of a setup file, so this is no fault.
    void note_missing(std::size_t index) {
        const ProfileStep& step = current_->steps[index];
        std::string missing;
        for (const ProfileField& field : format_.kind(step.type)->fields)
            if (!step.fields.contains(field.number))
                missing += (missing.empty() ? "" : ", ") + field.name;
        if (!missing.empty())
            notes.push_back("Step " + std::to_string(index + 1) + " of " + name() +
                            " is without: " + missing + ".");
    }

    [[nodiscard]] std::string name() const { return "profile " + std::to_string(current_->number); }

    [[nodiscard]] std::string step_name() const {
        return "step " + std::to_string(step_ + 1) + " of " + name();
    }

    const ProfileFormat& format_;
    int line_ = 0;
    Profile* current_ = nullptr;
    std::vector<bool> given_; // steps whose type is known
    std::size_t step_ = 0;    // chosen, from 0
};

void add(std::vector<std::string>& lines, int register_number, int value) {
    lines.push_back(std::to_string(register_number) + " " + std::to_string(value));
}

void add_fields(std::vector<std::string>& lines, const std::vector<ProfileField>& fields,
                const std::map<int, int>& values) {
    for (const ProfileField& field : fields)
        if (const auto value = values.find(field.number); value != values.end())
            add(lines, field.number, value->second);
}

void add_profile(std::vector<std::string>& lines, const ProfileFormat& format,
                 const Profile& profile) {
    add(lines, format.profile_number.number, profile.number);
    add(lines, format.action.number, kCreate);
    for (std::size_t i = 1; i < profile.steps.size(); ++i)
        add(lines, format.action.number, kInsertStep);
    add_fields(lines, format.own, profile.own);
    for (std::size_t i = 0; i < profile.steps.size(); ++i) {
        const ProfileStep& step = profile.steps[i];
        add(lines, format.step_number.number, static_cast<int>(i) + 1);
        add(lines, format.step_type.number, step.type);
        if (const StepKind* kind = format.kind(step.type))
            add_fields(lines, kind->fields, step.fields);
    }
}

ReadProfiles failed(const std::string& path, const std::string& why) {
    return {{}, "The file " + path + " " + why, {}};
}

} // namespace

std::vector<std::string> profile_lines(const ProfileFormat& format, const ProfileSet& profiles) {
    std::vector<std::string> lines;
    for (const auto& [number, profile] : profiles)
        add_profile(lines, format, profile);
    return lines;
}

ReadProfiles read_profiles(const ProfileFormat& format, std::span<const std::string> lines) {
    ProfileLineReader reader(format);
    for (const std::string& line : lines)
        if (!reader.take(line)) return {{}, std::move(reader.problem), {}};
    if (!reader.end()) return {{}, std::move(reader.problem), {}};
    return {std::move(reader.profiles), {}, std::move(reader.notes)};
}

ReadProfiles load_profiles(const ProfileFormat& format, const std::string& path) {
    constexpr std::uintmax_t kLargest = 4'000'000;
    std::error_code unknown;
    const auto size = std::filesystem::file_size(path, unknown);
    if (!unknown && size > kLargest) return failed(path, "is too large for profiles.");
    std::string bytes;
    if (const int error = read_whole_file(path, bytes))
        return failed(path, "cannot be read: " + std::generic_category().message(error) + ".");
    bytes = without_mark(std::move(bytes));
    const bool ended = bytes.ends_with('\n');
    if (ended) bytes.pop_back();
    std::vector<std::string> lines = split(bytes, '\n');
    for (std::string& line : lines)
        if (line.ends_with('\r')) line.pop_back();
    ReadProfiles read = read_profiles(format, lines);
    if (!read.problem.empty()) return failed(path, "cannot be used. " + read.problem);
    if (read.profiles.empty()) return failed(path, "holds no profiles.");
    if (!ended) read.notes.emplace_back("The last line has no end: the file may be cut.");
    return read;
}

std::string save_profiles(const ProfileFormat& format, const ProfileSet& profiles,
                          const std::string& path) {
    std::string bytes;
    for (const std::string& line : profile_lines(format, profiles))
        bytes += line + "\r\n";
    const int error = change_whole_file(path, [&](std::string_view) { return bytes; });
    if (error == 0) return {};
    return "The file " + path + " cannot be written: " + std::generic_category().message(error) +
           ".";
}

} // namespace pelvan
