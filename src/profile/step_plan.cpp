#include "profile/step_plan.h"

#include "text/strings.h"

namespace pelvan {
namespace {

constexpr std::array<RegisterRole, kLoops> kSetPoints{RegisterRole::SetPoint1,
                                                      RegisterRole::SetPoint2};
constexpr std::array<RegisterRole, kLoops> kRates{RegisterRole::Rate1, RegisterRole::Rate2};

/// The registers of one step by role.
class StepReader {
  public:
    StepReader(const StepKind& kind, const ProfileStep& step) : kind_(kind), step_(step) {}

    [[nodiscard]] std::optional<int> raw(RegisterRole role) const {
        const ProfileField* field = kind_.find(role);
        if (!field) return std::nullopt;
        const auto value = step_.fields.find(field->number);
        return value == step_.fields.end() ? std::nullopt : std::optional(value->second);
    }
    [[nodiscard]] std::optional<double> value(RegisterRole role) const {
        const auto number = raw(role);
        return number ? std::optional(kind_.find(role)->value(*number)) : std::nullopt;
    }
    [[nodiscard]] double seconds() const {
        return value(RegisterRole::Hours).value_or(0) * 3600 +
               value(RegisterRole::Minutes).value_or(0) * 60 +
               value(RegisterRole::Seconds).value_or(0);
    }
    [[nodiscard]] int wait_loop() const {
        const int number = raw(RegisterRole::Wait).value_or(0);
        if (number == 0) return 0;
        const auto& choices = kind_.find(RegisterRole::Wait)->choices;
        const auto choice = choices.find(number);
        if (choice == choices.end()) return number;
        const std::string& word = choice->second;
        if (upper_case(word) == "NOTHING") return 0;
        const char last = word.back();
        return last >= '0' && last <= '9' ? last - '0' : number;
    }

  private:
    const StepKind& kind_;
    const ProfileStep& step_;
};

} // namespace

double seconds_of_rate(const ProfileField& rate) {
    const std::string unit = upper_case(rate.unit);
    if (unit.ends_with("HOUR")) return 3600;
    return unit.ends_with("SECOND") ? 1 : 60;
}

StepPlan plan_step(const ProfileFormat& format, const ProfileStep& step) {
    StepPlan plan;
    const StepKind* kind = format.kind(step.type);
    if (!kind) return plan;
    const StepReader read(*kind, step);
    plan.known = true;
    plan.shape = kind->shape;
    plan.events = read.raw(RegisterRole::Events);
    plan.wait_loop = read.wait_loop();
    if (plan.shape == StepShape::Jump) {
        plan.jump_profile = read.raw(RegisterRole::JumpProfile);
        plan.jump_step = read.raw(RegisterRole::JumpStep).value_or(1);
        plan.jump_count = read.raw(RegisterRole::JumpCount);
        return plan;
    }
    if (plan.shape != StepShape::RampRate) plan.seconds = read.seconds();
    for (std::size_t loop = 0; loop < kLoops; ++loop) {
        plan.targets[loop] = read.value(kSetPoints[loop]);
        if (const ProfileField* rate = kind->find(kRates[loop]))
            plan.rates[loop] = read.value(kRates[loop]).value_or(0) / seconds_of_rate(*rate);
    }
    return plan;
}

} // namespace pelvan
