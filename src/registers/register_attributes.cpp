#include "registers/register_attributes.h"

#include <algorithm>
#include <array>
#include <utility>

#include "registers/setup_file.h"
#include "text/numbers.h"
#include "text/strings.h"

namespace pelvan {
namespace {

constexpr int kMin = -32768;
constexpr int kMax = 32767;
constexpr int kMaxDecimals = 4;

struct RoleWord {
    std::string_view word;
    RegisterRole role;
    RegisterSection section;
};

using enum RegisterSection;
constexpr std::array<RoleWord, 33> kRoles{{
    {"hours", RegisterRole::Hours, Step},
    {"minutes", RegisterRole::Minutes, Step},
    {"seconds", RegisterRole::Seconds, Step},
    {"set point 1", RegisterRole::SetPoint1, Step},
    {"set point 2", RegisterRole::SetPoint2, Step},
    {"rate 1", RegisterRole::Rate1, Step},
    {"rate 2", RegisterRole::Rate2, Step},
    {"pid set", RegisterRole::PidSet, Step},
    {"wait", RegisterRole::Wait, Step},
    {"events", RegisterRole::Events, Step},
    {"jump profile", RegisterRole::JumpProfile, Step},
    {"jump step", RegisterRole::JumpStep, Step},
    {"jump count", RegisterRole::JumpCount, Step},
    {"end", RegisterRole::End, Step},
    {"idle 1", RegisterRole::Idle1, Step},
    {"idle 2", RegisterRole::Idle2, Step},
    {"name", RegisterRole::Name, Profile},
    {"state", RegisterRole::State, Run},
    {"command", RegisterRole::Command, Run},
    {"start profile", RegisterRole::StartProfile, Run},
    {"start step", RegisterRole::StartStep, Run},
    {"profile", RegisterRole::Profile, Run},
    {"step", RegisterRole::Step, Run},
    {"hours left", RegisterRole::HoursLeft, Run},
    {"minutes left", RegisterRole::MinutesLeft, Run},
    {"seconds left", RegisterRole::SecondsLeft, Run},
    {"jumps done", RegisterRole::JumpsDone, Run},
    {"present set point 1", RegisterRole::PresentSetPoint1, Run},
    {"present set point 2", RegisterRole::PresentSetPoint2, Run},
    {"present events", RegisterRole::PresentEvents, Run},
    {"process value 1", RegisterRole::ProcessValue1, Run},
    {"process value 2", RegisterRole::ProcessValue2, Run},
    {"wait band", RegisterRole::WaitBand, Run},
}};

/// Words with one space between them.
std::string words(std::string_view text) {
    std::string out;
    for (const char c : text) {
        const bool space = c == ' ' || c == '\t';
        if (!space) out += c;
        if (space && !out.empty() && out.back() != ' ') out += ' ';
    }
    return trim(out);
}

const RoleWord* find_role(std::string_view word) {
    const auto found = std::find_if(kRoles.begin(), kRoles.end(), [&](const RoleWord& role) {
        return upper_case(role.word) == upper_case(word);
    });
    return found == kRoles.end() ? nullptr : &*found;
}

const RoleWord* find_role(RegisterRole role) {
    const auto found = std::find_if(kRoles.begin(), kRoles.end(),
                                    [&](const RoleWord& word) { return word.role == role; });
    return found == kRoles.end() ? nullptr : &*found;
}

std::optional<int> register_value(std::string_view text) {
    if (const auto number = whole_number(trim(text), kMin, kMax)) return static_cast<int>(*number);
    return std::nullopt;
}

/// Takes what stands between the semicolons, one by one.
class AttributeReader {
  public:
    /// What is wrong with the item; empty when it is understood.
    std::string take(const std::string& item) {
        if (item.empty()) return "Nothing stands between two semicolons or braces.";
        if (item.find('=') != item.npos) return choices(item);
        if (const RoleWord* role = find_role(item))
            return once(role_, "role", [&] { attributes.role = role->role; });
        if (const auto to = item.find(" to "); to != item.npos && starts_as_number(item))
            return range(item.substr(0, to), item.substr(to + 4));
        if (starts_as_number(item)) return decimals(item);
        constexpr std::string_view kUnit = "UNIT ";
        const bool marked = upper_case(item).starts_with(kUnit);
        return once(unit_, "unit",
                    [&] { attributes.unit = marked ? item.substr(kUnit.size()) : item; });
    }

    RegisterAttributes attributes;

  private:
    static bool starts_as_number(const std::string& item) {
        return item[0] == '-' || (item[0] >= '0' && item[0] <= '9');
    }

    template <class Set> static std::string once(bool& seen, const std::string& what, Set set) {
        if (std::exchange(seen, true)) return "There is more than one " + what + ".";
        set();
        return {};
    }

    std::string range(const std::string& from, const std::string& to) {
        const auto min = register_value(from);
        const auto max = register_value(to);
        if (!min || !max || *min > *max)
            return "\"" + shown(from + " to " + to) +
                   "\" is no range: two whole numbers from -32768 to 32767, the smaller one first.";
        return once(range_, "range", [&] {
            attributes.min = *min;
            attributes.max = *max;
        });
    }

    std::string decimals(const std::string& item) {
        const auto space = item.find(' ');
        const auto number = whole_number(item.substr(0, space), 0, kMaxDecimals);
        const std::string word = space == item.npos ? "" : upper_case(item.substr(space + 1));
        if (!number || (word != "DECIMAL" && word != "DECIMALS"))
            return "\"" + shown(item) + "\" is not understood.";
        return once(decimals_, "number of decimals",
                    [&] { attributes.decimals = static_cast<int>(*number); });
    }

    std::string choices(const std::string& item) {
        if (!attributes.choices.empty()) return "There is more than one list of choices.";
        for (const std::string& choice : split(item, ',')) {
            const auto equals = choice.find('=');
            const auto number = register_value(choice.substr(0, equals));
            const std::string word = equals == choice.npos ? "" : trim(choice.substr(equals + 1));
            if (!number || word.empty() || word.find('=') != word.npos)
                return "\"" + shown(choice) + "\" is no choice: a number, = and its word.";
            if (!attributes.choices.emplace(*number, word).second)
                return "The number " + std::to_string(*number) + " is there for two choices.";
        }
        return {};
    }

    bool role_ = false;
    bool range_ = false;
    bool decimals_ = false;
    bool unit_ = false;
};

} // namespace

RegisterText parse_register_text(std::string_view text) {
    RegisterText result;
    const auto open = text.find('{');
    result.text = words(text.substr(0, open));
    if (open == text.npos) return result;
    const std::string rest = words(text.substr(open + 1));
    if (rest.find_first_of("{}") != rest.size() - 1 || !rest.ends_with('}')) {
        result.problem = "What stands in braces must end the line.";
        return result;
    }
    AttributeReader reader;
    for (const std::string& item : split(std::string_view(rest).substr(0, rest.size() - 1), ';')) {
        result.problem = reader.take(trim(item));
        if (!result.problem.empty()) return result;
    }
    result.attributes = std::move(reader.attributes);
    return result;
}

std::string_view role_word(RegisterRole role) {
    const RoleWord* word = find_role(role);
    return word ? word->word : std::string_view();
}

std::optional<RegisterSection> section_of(RegisterRole role) {
    const RoleWord* word = find_role(role);
    return word ? std::optional(word->section) : std::nullopt;
}

} // namespace pelvan
