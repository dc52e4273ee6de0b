#include "profile/step_editing.h"

#include <algorithm>
#include <cmath>

namespace pelvan {
namespace {

bool carries_on(RegisterRole role) {
    using enum RegisterRole;
    constexpr std::array kRoles{SetPoint1, SetPoint2, Rate1, Rate2, PidSet, Events};
    return std::find(kRoles.begin(), kRoles.end(), role) != kRoles.end();
}

std::optional<int> last_value(const ProfileFormat& format, const Profile& profile,
                              std::size_t place, RegisterRole role) {
    for (std::size_t i = std::min(place, profile.steps.size()); i > 0; --i)
        if (const auto raw = raw_value(format, profile.steps[i - 1], role)) return raw;
    return std::nullopt;
}

/// Rounded, and cut to what the field holds; what is left over.
double take_time(const ProfileField& field, ProfileStep& step, double seconds, double unit,
                 bool smallest) {
    const double amount = smallest ? std::round(seconds / unit) : std::floor(seconds / unit);
    const int raw = field.nearest(amount);
    step.fields[field.number] = raw;
    return seconds - field.value(raw) * unit;
}

} // namespace

ProfileStep step_for_place(const ProfileFormat& format, const Profile& profile, std::size_t place,
                           const StepKind& kind) {
    ProfileStep step = new_step(kind);
    for (const ProfileField& field : kind.fields) {
        if (!carries_on(field.role)) continue;
        const auto raw = last_value(format, profile, place, field.role);
        if (raw && field.allows(*raw)) step.fields[field.number] = *raw;
    }
    return step;
}

ProfileStep with_kind(const ProfileFormat& format, const ProfileStep& step, const StepKind& kind) {
    ProfileStep changed = new_step(kind);
    for (const ProfileField& field : kind.fields) {
        const auto same = step.fields.find(field.number);
        const bool has_role = field.role != RegisterRole::None;
        int raw = field.preset();
        if (same != step.fields.end())
            raw = same->second;
        else if (has_role)
            raw = raw_value(format, step, field.role).value_or(raw);
        if (field.allows(raw)) changed.fields[field.number] = raw;
    }
    return changed;
}

void set_seconds(const StepKind& kind, ProfileStep& step, double seconds) {
    struct Part {
        const ProfileField* field;
        double unit;
    };
    std::array<Part, 3> parts{{{kind.find(RegisterRole::Hours), 3600},
                               {kind.find(RegisterRole::Minutes), 60},
                               {kind.find(RegisterRole::Seconds), 1}}};
    const auto last = std::find_if(parts.rbegin(), parts.rend(),
                                   [](const Part& part) { return part.field != nullptr; });
    if (last == parts.rend()) return;
    // Rounded before it is taken apart: 59.7 minutes are an hour where there are no seconds.
    double left = std::max(0.0, std::round(seconds / last->unit) * last->unit);
    for (const Part& part : parts)
        if (part.field)
            left = take_time(*part.field, step, left, part.unit, part.field == last->field);
}

void move_end(const StepKind& kind, ProfileStep& step, const StepEnd& end) {
    if (kind.shape == StepShape::End || kind.shape == StepShape::Jump) return;
    const bool first = end.loop == 0;
    const ProfileField* target =
        kind.find(first ? RegisterRole::SetPoint1 : RegisterRole::SetPoint2);
    if (target && end.value) step.fields[target->number] = target->nearest(*end.value);
    if (!end.seconds) return;
    if (kind.shape != StepShape::RampRate) return set_seconds(kind, step, *end.seconds);
    const ProfileField* rate = kind.find(first ? RegisterRole::Rate1 : RegisterRole::Rate2);
    if (!rate || !target) return;
    const double way = std::abs(target->value(step.fields[target->number]) - end.from);
    // Without a way every rate arrives at once: the one that is there stays.
    if (way == 0) return;
    const double seconds = std::max(*end.seconds, 1.0);
    step.fields[rate->number] = rate->nearest(way / seconds * seconds_of_rate(*rate));
}

std::optional<ProfileStep> with_target(const ProfileFormat& format, const ProfileStep& step, int in,
                                       const std::function<JumpTarget(const JumpTarget&)>& moved) {
    const StepPlan plan = plan_step(format, step);
    if (!plan.known || plan.shape != StepShape::Jump) return std::nullopt;
    const JumpTarget target{plan.jump_profile.value_or(in), plan.jump_step};
    const JumpTarget now = moved(target);
    if (now == target) return std::nullopt;
    ProfileStep changed = step;
    const StepKind& kind = *format.kind(step.type);
    if (const ProfileField* field = kind.find(RegisterRole::JumpProfile))
        changed.fields[field->number] = field->nearest(now.profile);
    if (const ProfileField* field = kind.find(RegisterRole::JumpStep))
        changed.fields[field->number] = field->nearest(now.step);
    return changed;
}

Profile copied_profile(const ProfileFormat& format, Profile profile, int number) {
    const auto within = [&](const JumpTarget& target) {
        return target.profile == profile.number ? JumpTarget{number, target.step} : target;
    };
    for (ProfileStep& step : profile.steps)
        if (auto led = with_target(format, step, number, within)) step = std::move(*led);
    profile.number = number;
    return profile;
}

} // namespace pelvan
