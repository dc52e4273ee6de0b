#include "profile/profile_check.h"

#include <algorithm>
#include <cmath>
#include <set>

#include "profile/profile_curve.h"
#include "text/numbers.h"

namespace pelvan {
namespace {

using Place = std::pair<int, int>; // profile and step

/// Two digits behind the point are enough for people.
std::string rounded(double value) {
    return plain_number(std::round(value * 100) / 100);
}

/// Steps that wait for a loop whose set point nothing before them gave, on the way from a profile's
/// first step; those that found it given go into `met`.
class WaitSearch {
  public:
    WaitSearch(const ProfileFormat& format, const ProfileSet& profiles) {
        for (const auto& [number, profile] : profiles)
            follow(format, profiles, unroll(format, profiles, {number, 1, {}}));
    }
    [[nodiscard]] bool never(const Place& place) const {
        return unmet_.contains(place) && !met_.contains(place);
    }

  private:
    void follow(const ProfileFormat& format, const ProfileSet& profiles,
                const ProfileCurve& curve) {
        std::array<bool, kLoops> given{};
        Place last;
        for (const CurveSegment& one : curve.segments) {
            const Place place{one.profile, one.step};
            if (place != last) {
                const auto& steps = profiles.at(one.profile).steps;
                const StepPlan plan =
                    plan_step(format, steps[static_cast<std::size_t>(one.step - 1)]);
                for (std::size_t loop = 0; loop < kLoops; ++loop)
                    given[loop] = given[loop] || plan.targets[loop];
            }
            last = place;
            if (one.wait_loop == 0) continue;
            const auto loop = static_cast<std::size_t>(one.wait_loop - 1);
            (loop < kLoops && given[loop] ? met_ : unmet_).insert(place);
        }
    }

    std::set<Place> met_;
    std::set<Place> unmet_;
};

class ProfileChecker {
  public:
    ProfileChecker(const ProfileFormat& format, const ProfileSet& profiles,
                   const CheckOptions& options, const WaitSearch& waits, const Profile& profile)
        : format_(format), profiles_(profiles), options_(options), waits_(waits),
          profile_(profile) {}

    std::vector<ProfileFinding> check() {
        check_whole();
        for (std::size_t i = 0; i < profile_.steps.size(); ++i)
            check_step(static_cast<int>(i) + 1, profile_.steps[i]);
        if (!profile_.steps.empty()) check_course();
        std::stable_sort(
            findings_.begin(), findings_.end(),
            [](const ProfileFinding& a, const ProfileFinding& b) { return a.step < b.step; });
        return std::move(findings_);
    }

  private:
    void find(int step, const std::string& what) {
        std::string place = "Profile " + std::to_string(profile_.number);
        if (step > 0) place += ", step " + std::to_string(step);
        findings_.push_back({profile_.number, step, place + ": " + what});
    }

    void check_whole() {
        if (profile_.number < 1 || profile_.number > format_.max_profiles())
            find(0,
                 "profiles have numbers from 1 to " + std::to_string(format_.max_profiles()) + ".");
        for (const ProfileField& field : format_.own)
            check_value(0, field, profile_.own);
        check_foreign(0, format_.own, profile_.own);
        const auto most = static_cast<std::size_t>(format_.max_steps());
        if (profile_.steps.size() > most)
            find(0, "it has " + std::to_string(profile_.steps.size()) + " steps, at most " +
                        std::to_string(most) + " fit.");
        if (profile_.steps.empty() || !is_end(profile_.steps.back()))
            find(0, "the last step is no end.");
    }

    [[nodiscard]] bool is_end(const ProfileStep& step) const {
        const StepKind* kind = format_.kind(step.type);
        return kind && kind->shape == StepShape::End;
    }

    void check_step(int number, const ProfileStep& step) {
        const StepKind* kind = format_.kind(step.type);
        if (!kind)
            return find(number,
                        "the model has no steps of type " + std::to_string(step.type) + ".");
        if (is_end(step) && static_cast<std::size_t>(number) < profile_.steps.size())
            find(number, "an end stands before other steps.");
        for (const ProfileField& field : kind->fields)
            check_value(number, field, step.fields);
        check_foreign(number, kind->fields, step.fields);
        const StepPlan plan = plan_step(format_, step);
        if (plan.shape == StepShape::Jump) check_jump(number, plan);
        if (waits_.never({profile_.number, number})) {
            const std::string loop = std::to_string(plan.wait_loop);
            find(number, "it waits for input " + loop + ", and nothing before it gives set point " +
                             loop + ".");
        }
    }

    void check_value(int step, const ProfileField& field, const std::map<int, int>& values) {
        const auto value = values.find(field.number);
        if (value != values.end() && !field.allows(value->second))
            find(step, ProfileFormat::limits_text(field) + ", not " +
                           ProfileFormat::value_text(field, value->second) + ".");
    }

    void check_foreign(int step, const std::vector<ProfileField>& fields,
                       const std::map<int, int>& values) {
        for (const auto& [number, value] : values)
            if (std::none_of(fields.begin(), fields.end(),
                             [&, at = number](const auto& field) { return field.number == at; }))
                find(step, "it has no register " + std::to_string(number) + ".");
    }

    void check_jump(int number, const StepPlan& plan) {
        const int target = plan.jump_profile.value_or(profile_.number);
        const auto found = profiles_.find(target);
        if (found == profiles_.end() || found->second.steps.empty())
            return find(number,
                        "it jumps to profile " + std::to_string(target) + ", which is not there.");
        if (plan.jump_step < 1 ||
            static_cast<std::size_t>(plan.jump_step) > found->second.steps.size())
            find(number, "it jumps to step " + std::to_string(plan.jump_step) + " of profile " +
                             std::to_string(target) + ", which is not there.");
    }

    void check_course() {
        CurveStart start{profile_.number, 1, {}};
        start.set_points = options_.set_points.value_or(start.set_points);
        const ProfileCurve curve = unroll(format_, profiles_, start);
        if (curve.how == CurveEnd::Endless)
            find(last_jump(), "the jumps do not come to an end within a million steps.");
        if (curve.how == CurveEnd::TooLong)
            find(last_jump(), "the profile runs longer than " +
                                  rounded(ProfileCurve::kMaxSeconds / 3600) + " hours.");
        if (curve.how == CurveEnd::NoRate && curve.last_profile == profile_.number)
            find(curve.last_step, "with this rate it never arrives.");
        if (options_.steepest) check_steepness(curve);
    }

    /// 0 when the profile has no jump.
    [[nodiscard]] int last_jump() const {
        for (std::size_t i = profile_.steps.size(); i > 0; --i) {
            const StepKind* kind = format_.kind(profile_.steps[i - 1].type);
            if (kind && kind->shape == StepShape::Jump) return static_cast<int>(i);
        }
        return 0;
    }

    void check_steepness(const ProfileCurve& curve) {
        std::array<bool, kLoops> known{};
        known.fill(options_.set_points.has_value());
        std::set<std::pair<int, std::size_t>> said;
        for (const CurveSegment& one : curve.segments) {
            const auto& steps = profiles_.at(one.profile).steps;
            const StepPlan plan = plan_step(format_, steps[static_cast<std::size_t>(one.step - 1)]);
            for (std::size_t loop = 0; loop < kLoops; ++loop) {
                const bool judged = known[loop] || plan.shape == StepShape::RampRate;
                known[loop] = known[loop] || plan.targets[loop];
                // Those of other profiles are told when they are checked.
                if (judged && one.profile == profile_.number && too_steep(one, loop) &&
                    said.emplace(one.step, loop).second)
                    find(one.step, steepness(one, loop));
            }
        }
    }

    /// A rate that is written as the limit itself passes, whatever the arithmetic leaves.
    [[nodiscard]] bool too_steep(const CurveSegment& one, std::size_t loop) const {
        constexpr double kSlack = 1 + 1e-9;
        const double minutes = (one.end - one.begin) / 60;
        return std::abs(one.to[loop] - one.from[loop]) > *options_.steepest * minutes * kSlack;
    }

    [[nodiscard]] std::string steepness(const CurveSegment& one, std::size_t loop) const {
        const std::string set_point = "set point " + std::to_string(loop + 1);
        const double minutes = (one.end - one.begin) / 60;
        const double way = std::abs(one.to[loop] - one.from[loop]);
        const std::string limit = ", more than " + rounded(*options_.steepest) + " a minute.";
        if (minutes == 0)
            return set_point + " leaps from " + rounded(one.from[loop]) + " to " +
                   rounded(one.to[loop]) + limit;
        return set_point + " goes " + rounded(way / minutes) + " a minute" + limit;
    }

    const ProfileFormat& format_;
    const ProfileSet& profiles_;
    const CheckOptions& options_;
    const WaitSearch& waits_;
    const Profile& profile_;
    std::vector<ProfileFinding> findings_;
};

} // namespace

std::vector<ProfileFinding> check_profile(const ProfileFormat& format, const ProfileSet& profiles,
                                          int number, const CheckOptions& options) {
    const auto found = profiles.find(number);
    if (found == profiles.end())
        return {{number, 0, "Profile " + std::to_string(number) + ": it is not there."}};
    const WaitSearch waits(format, profiles);
    return ProfileChecker(format, profiles, options, waits, found->second).check();
}

std::vector<ProfileFinding> check_profiles(const ProfileFormat& format, const ProfileSet& profiles,
                                           const CheckOptions& options) {
    const WaitSearch waits(format, profiles);
    std::vector<ProfileFinding> all;
    for (const auto& [number, profile] : profiles) {
        auto found = ProfileChecker(format, profiles, options, waits, profile).check();
        all.insert(all.end(), std::make_move_iterator(found.begin()),
                   std::make_move_iterator(found.end()));
    }
    return all;
}

} // namespace pelvan
