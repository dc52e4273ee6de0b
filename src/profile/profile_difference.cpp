#include "profile/profile_difference.h"

#include <algorithm>

namespace pelvan {
namespace {

/// The text of a type: its name, or its number where the format has none.
std::string type_text(const ProfileFormat& format, int type) {
    const StepKind* kind = format.kind(type);
    return kind && !kind->name.empty() ? kind->name : "type " + std::to_string(type);
}

class Comparer {
  public:
    Comparer(const ProfileFormat& format, const Profile& wanted)
        : format_(format), wanted_(wanted) {}

    void compare(const Profile& held) {
        for (const ProfileField& field : format_.own)
            compare_field(0, field, wanted_.own, held.own);
        if (held.steps.size() != wanted_.steps.size())
            add(0, format_.step_count.number,
                std::to_string(held.steps.size()) + " steps instead of " +
                    std::to_string(wanted_.steps.size()));
        const std::size_t steps = std::min(held.steps.size(), wanted_.steps.size());
        for (std::size_t i = 0; i < steps; ++i)
            compare_step(static_cast<int>(i) + 1, wanted_.steps[i], held.steps[i]);
    }

    std::vector<ProfileDifference> differences;

  private:
    void compare_step(int step, const ProfileStep& wanted, const ProfileStep& held) {
        if (wanted.type != held.type)
            return add(step, format_.step_type.number,
                       type_text(format_, held.type) + " instead of " +
                           type_text(format_, wanted.type));
        if (const StepKind* kind = format_.kind(wanted.type))
            for (const ProfileField& field : kind->fields)
                compare_field(step, field, wanted.fields, held.fields);
    }

    void compare_field(int step, const ProfileField& field, const std::map<int, int>& wanted,
                       const std::map<int, int>& held) {
        const auto want = wanted.find(field.number);
        if (want == wanted.end()) return;
        const auto have = held.find(field.number);
        if (have != held.end() && have->second == want->second) return;
        const std::string is =
            have == held.end() ? "missing" : ProfileFormat::unit_text(field, have->second);
        add(step, field.number,
            field.name + " is " + is + " instead of " +
                ProfileFormat::unit_text(field, want->second));
    }

    void add(int step, int number, const std::string& text) {
        differences.push_back({wanted_.number, step, number,
                               profile_place(wanted_.number, step) + ": " + text + "."});
    }

    const ProfileFormat& format_;
    const Profile& wanted_;
};

} // namespace

std::string profile_place(int profile, int step) {
    const std::string text = "Profile " + std::to_string(profile);
    return step == 0 ? text : text + ", step " + std::to_string(step);
}

std::vector<ProfileDifference> profile_differences(const ProfileFormat& format,
                                                   const Profile& wanted, const Profile& held) {
    Comparer comparer(format, wanted);
    comparer.compare(held);
    return std::move(comparer.differences);
}

} // namespace pelvan
