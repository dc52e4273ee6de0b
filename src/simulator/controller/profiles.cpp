#include "simulator/controller/profiles.h"

#include <array>
#include <iterator>

namespace pelvan::simulator {
namespace {

struct FieldRule {
    std::uint16_t number;
    std::int16_t preset;
    std::int16_t min;
    std::int16_t max;
    unsigned types; // a bit for each kind of step that has the register
};

constexpr unsigned bit(StepType type) {
    return 1U << static_cast<unsigned>(type);
}

constexpr unsigned kEnd = bit(StepType::End);
constexpr unsigned kRampTime = bit(StepType::RampTime);
constexpr unsigned kRampRate = bit(StepType::RampRate);
constexpr unsigned kSoak = bit(StepType::Soak);
constexpr unsigned kJump = bit(StepType::Jump);
constexpr unsigned kTimed = kRampTime | kSoak;
constexpr unsigned kRunning = kRampTime | kRampRate | kSoak;

constexpr std::array<FieldRule, 14> kRules{{
    {reg::kStepHours, 0, 0, 99, kTimed},
    {reg::kStepMinutes, 0, 0, 59, kTimed},
    {reg::kStepSeconds, 0, 0, 59, kTimed},
    {reg::kStepSetPoint1, 0, -2000, 9999, kRampTime | kRampRate},
    {reg::kStepSetPoint2, 0, -2000, 9999, kRampTime},
    {reg::kStepPidSet, 1, 1, 5, kRunning},
    {reg::kStepWait, 0, 0, 2, kTimed},        // nothing, input 1, input 2
    {reg::kStepEvents, 0, 0, 255, kRunning},  // a bit each
    {reg::kStepRate, 10, 1, 9999, kRampRate}, // tenths of a degree a minute
    {reg::kJumpProfile, 1, 1, Profiles::kMaxProfiles, kJump},
    {reg::kJumpStep, 1, 1, Profiles::kMaxSteps, kJump},
    {reg::kJumpCount, 0, 0, 999, kJump},
    {reg::kEndKind, 0, 0, 3, kEnd}, // hold, control off, all off, idle
    {reg::kIdleSetPoint, 0, -2000, 9999, kEnd},
}};

const FieldRule* rule_of(std::uint16_t number, StepType type) {
    for (const FieldRule& rule : kRules) {
        if (rule.number == number && (rule.types & bit(type)) != 0) return &rule;
    }
    return nullptr;
}

bool is_field(std::uint16_t number) {
    return number >= reg::kStepFieldFirst && number <= reg::kStepFieldLast;
}

bool is_name(std::uint16_t number) {
    return number >= reg::kProfileNameFirst && number <= reg::kProfileNameLast;
}

template <class Number> std::int16_t as_value(Number number) {
    return static_cast<std::int16_t>(number);
}

} // namespace

Profiles::Step Profiles::make_step(StepType type) {
    Step step{type, {}};
    for (const FieldRule& rule : kRules) {
        if ((rule.types & bit(type)) != 0) step.fields[rule.number] = rule.preset;
    }
    return step;
}

const Profiles::Step* Profiles::step(int profile, int step) const {
    if (step < 1 || step > step_count(profile)) return nullptr;
    return &profiles_[static_cast<std::size_t>(profile - 1)]
                .steps[static_cast<std::size_t>(step - 1)];
}

int Profiles::step_count(int profile) const {
    if (profile < 1 || static_cast<std::size_t>(profile) > profiles_.size()) return 0;
    return static_cast<int>(profiles_[static_cast<std::size_t>(profile - 1)].steps.size());
}

const Profiles::Profile* Profiles::selected() const {
    if (profile_ >= profiles_.size() || profiles_[profile_].steps.empty()) return nullptr;
    return &profiles_[profile_];
}

Profiles::Profile* Profiles::selected() {
    return const_cast<Profile*>(static_cast<const Profiles*>(this)->selected());
}

bool Profiles::at_end_step() const {
    return step_ + 1 == profiles_[profile_].steps.size();
}

ExceptionCode Profiles::read(std::uint16_t number, std::int16_t& value) const {
    const Profile* profile = selected();
    switch (number) {
    case reg::kProfileNumber:
        value = as_value(profile_ + 1);
        return ExceptionCode::None;
    case reg::kStepNumber:
        value = as_value(step_ + 1);
        return ExceptionCode::None;
    case reg::kProfileAction:
        value = 0;
        return ExceptionCode::None;
    case reg::kStepCount:
        value = profile == nullptr ? std::int16_t{0} : as_value(profile->steps.size());
        return ExceptionCode::None;
    case reg::kHighestProfile:
        value = as_value(profiles_.size());
        return ExceptionCode::None;
    case reg::kProfileExists:
        value = profile == nullptr ? 0 : 1;
        return ExceptionCode::None;
    default:
        break;
    }
    if (profile == nullptr) return ExceptionCode::IllegalAddress;
    const Step& step = profile->steps[step_];
    if (number == reg::kStepType) {
        value = as_value(step.type);
    } else if (is_name(number)) {
        value = static_cast<unsigned char>(
            profile->name[static_cast<std::size_t>(number - reg::kProfileNameFirst)]);
    } else {
        const auto field = step.fields.find(number);
        if (field == step.fields.end()) return ExceptionCode::IllegalAddress;
        value = field->second;
    }
    return ExceptionCode::None;
}

ExceptionCode Profiles::write(std::uint16_t number, std::int16_t value) {
    if (number == reg::kProfileNumber) return select_profile(value);
    if (number == reg::kProfileAction) return act(value);
    if (selected() == nullptr) return ExceptionCode::IllegalAddress;
    if (number == reg::kStepNumber) return select_step(value);
    if (number == reg::kStepType) return set_type(value);
    if (is_field(number)) return set_field(number, value);
    if (is_name(number)) return set_name(number, value);
    return ExceptionCode::IllegalAddress;
}

ExceptionCode Profiles::select_profile(std::int16_t value) {
    if (value < 1 || value > kMaxProfiles) return ExceptionCode::IllegalValue;
    const auto index = static_cast<std::size_t>(value - 1);
    if (index > profiles_.size()) return ExceptionCode::IllegalValue;
    profile_ = index;
    step_ = 0;
    return ExceptionCode::None;
}

ExceptionCode Profiles::select_step(std::int16_t value) {
    const auto count = static_cast<std::int16_t>(selected()->steps.size());
    if (value < 1 || value > count) return ExceptionCode::IllegalValue;
    step_ = static_cast<std::size_t>(value - 1);
    return ExceptionCode::None;
}

ExceptionCode Profiles::act(std::int16_t value) {
    switch (static_cast<ProfileAction>(value)) {
    case ProfileAction::Create:
        return create();
    case ProfileAction::Erase:
        return erase();
    case ProfileAction::InsertStep:
        return insert_step();
    case ProfileAction::DeleteStep:
        return delete_step();
    }
    return ExceptionCode::IllegalValue;
}

ExceptionCode Profiles::create() {
    // After an erasure the selected number may lie beyond the next free one.
    if (selected() != nullptr || profile_ > profiles_.size()) return ExceptionCode::IllegalValue;
    if (profile_ == profiles_.size()) profiles_.emplace_back();
    profiles_[profile_] = Profile{};
    profiles_[profile_].steps.push_back(make_step(StepType::End));
    step_ = 0;
    return ExceptionCode::None;
}

ExceptionCode Profiles::erase() {
    if (selected() == nullptr) return ExceptionCode::IllegalValue;
    profiles_[profile_] = Profile{};
    step_ = 0;
    while (!profiles_.empty() && profiles_.back().steps.empty())
        profiles_.pop_back();
    return ExceptionCode::None;
}

ExceptionCode Profiles::insert_step() {
    Profile* profile = selected();
    if (profile == nullptr || profile->steps.size() >= kMaxSteps)
        return ExceptionCode::IllegalValue;
    profile->steps.insert(std::next(profile->steps.begin(), static_cast<std::ptrdiff_t>(step_)),
                          make_step(StepType::Soak));
    return ExceptionCode::None;
}

ExceptionCode Profiles::delete_step() {
    Profile* profile = selected();
    if (profile == nullptr || at_end_step()) return ExceptionCode::IllegalValue;
    profile->steps.erase(std::next(profile->steps.begin(), static_cast<std::ptrdiff_t>(step_)));
    return ExceptionCode::None;
}

ExceptionCode Profiles::set_type(std::int16_t value) {
    if (value < 0 || value > as_value(StepType::Jump)) return ExceptionCode::IllegalValue;
    const auto type = static_cast<StepType>(value);
    Step& step = selected()->steps[step_];
    if (at_end_step() != (type == StepType::End)) return ExceptionCode::IllegalValue;
    if (step.type != type) step = make_step(type);
    return ExceptionCode::None;
}

ExceptionCode Profiles::set_field(std::uint16_t number, std::int16_t value) {
    Step& step = selected()->steps[step_];
    const FieldRule* rule = rule_of(number, step.type);
    if (rule == nullptr) return ExceptionCode::IllegalAddress;
    if (value < rule->min || value > rule->max) return ExceptionCode::IllegalValue;
    step.fields[number] = value;
    return ExceptionCode::None;
}

ExceptionCode Profiles::set_name(std::uint16_t number, std::int16_t value) {
    if (value < 32 || value > 126) return ExceptionCode::IllegalValue;
    selected()->name[static_cast<std::size_t>(number - reg::kProfileNameFirst)] =
        static_cast<char>(value);
    return ExceptionCode::None;
}

} // namespace pelvan::simulator
