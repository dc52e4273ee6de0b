#include "profile/profile.h"

#include <algorithm>

#include "registers/setup_file.h"
#include "text/strings.h"

namespace pelvan {

ProfileStep new_step(const StepKind& kind) {
    ProfileStep step{kind.type, {}};
    for (const ProfileField& field : kind.fields)
        step.fields[field.number] = field.preset();
    return step;
}

Profile new_profile(const ProfileFormat& format, int number) {
    Profile profile{number, {}, {}};
    for (const ProfileField& field : format.own)
        profile.own[field.number] =
            field.role == RegisterRole::Name ? field.nearest(' ') : field.preset();
    if (const StepKind* end = format.end_kind()) profile.steps.push_back(new_step(*end));
    return profile;
}

std::string profile_name(const ProfileFormat& format, const Profile& profile) {
    constexpr char kForeign = '?';
    std::string name;
    for (const ProfileField& field : format.own) {
        if (field.role != RegisterRole::Name) continue;
        const auto found = profile.own.find(field.number);
        const int code = found == profile.own.end() ? ' ' : found->second;
        name += code >= ' ' && code <= '~' ? static_cast<char>(code) : kForeign;
    }
    return trim(name);
}

std::string quoted_name(const ProfileFormat& format, const Profile& profile) {
    const std::string name = profile_name(format, profile);
    return name.empty() ? std::string() : " \"" + name + "\"";
}

std::size_t name_length(const ProfileFormat& format) {
    return static_cast<std::size_t>(
        std::count_if(format.own.begin(), format.own.end(),
                      [](const ProfileField& field) { return field.role == RegisterRole::Name; }));
}

std::string set_profile_name(const ProfileFormat& format, Profile& profile,
                             const std::string& name) {
    const std::size_t length = name_length(format);
    if (length == 0 && !name.empty()) return "Profiles of this model have no name.";
    const auto foreign = [](char c) { return c < ' ' || c > '~'; };
    if (std::any_of(name.begin(), name.end(), foreign))
        return "A name consists of letters without accents, digits and the signs between them.";
    if (name.size() > length)
        return "A name has at most " + std::to_string(length) + " characters, \"" + shown(name) +
               "\" has " + std::to_string(name.size()) + ".";
    std::map<int, int> own = profile.own;
    std::size_t at = 0;
    for (const ProfileField& field : format.own) {
        if (field.role != RegisterRole::Name) continue;
        const int code = at < name.size() ? static_cast<unsigned char>(name[at]) : ' ';
        if (!field.allows(code) && at < name.size())
            return std::string("The character ") + name[at] + " is not allowed in a name.";
        own[field.number] = field.nearest(code);
        ++at;
    }
    profile.own = std::move(own);
    return {};
}

std::optional<int> raw_value(const ProfileFormat& format, const ProfileStep& step,
                             RegisterRole role) {
    const StepKind* kind = format.kind(step.type);
    const ProfileField* field = kind ? kind->find(role) : nullptr;
    if (!field) return std::nullopt;
    const auto found = step.fields.find(field->number);
    return found == step.fields.end() ? std::nullopt : std::optional(found->second);
}

std::optional<double> real_value(const ProfileFormat& format, const ProfileStep& step,
                                 RegisterRole role) {
    const auto raw = raw_value(format, step, role);
    if (!raw) return std::nullopt;
    return format.kind(step.type)->find(role)->value(*raw);
}

} // namespace pelvan
