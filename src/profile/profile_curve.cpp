#include "profile/profile_curve.h"

#include <algorithm>
#include <cmath>
#include <map>

namespace pelvan {
namespace {

/// Steps, jumps among them, after which a curve counts as one without an end.
constexpr int kMaxSteps = 1'000'000;

struct PlannedStep {
    StepPlan plan;
    int jumps_done = 0;
};

using PlannedProfile = std::vector<PlannedStep>;

class Unroller {
  public:
    Unroller(const ProfileFormat& format, const ProfileSet& profiles, const CurveStart& start)
        : format_(format), profiles_(profiles), step_(start.step), set_points_(start.set_points) {
        curve_.start = start;
    }

    ProfileCurve run() {
        if (go_to(curve_.start.profile, step_)) {
            curve_.how = CurveEnd::Endless;
            for (int steps = 0; steps < kMaxSteps; ++steps)
                if (!take_step()) break;
        }
        curve_.last_profile = profile_;
        curve_.last_step = step_;
        curve_.seconds = time_;
        return std::move(curve_);
    }

  private:
    /// Resolves a profile when it is met first; nothing when it is not there.
    PlannedProfile* plan_of(int number) {
        const auto known = planned_.find(number);
        if (known != planned_.end()) return &known->second;
        const auto found = profiles_.find(number);
        if (found == profiles_.end()) return nullptr;
        PlannedProfile& plans = planned_[number];
        for (const ProfileStep& step : found->second.steps)
            plans.push_back({plan_step(format_, step), 0});
        return &plans;
    }

    bool go_to(int profile, int step) {
        PlannedProfile* plans = plan_of(profile);
        if (!plans || step < 1 || static_cast<std::size_t>(step) > plans->size()) return false;
        steps_ = plans;
        profile_ = profile;
        step_ = step;
        return true;
    }

    bool stop(CurveEnd how) {
        curve_.how = how;
        return false;
    }

    /// False when the curve ends here.
    bool take_step() {
        if (static_cast<std::size_t>(step_) > steps_->size()) {
            --step_;
            return stop(CurveEnd::PastLast);
        }
        PlannedStep& step = (*steps_)[static_cast<std::size_t>(step_ - 1)];
        if (!step.plan.known) return stop(CurveEnd::UnknownType);
        if (step.plan.shape == StepShape::End) return stop(CurveEnd::Ended);
        if (step.plan.shape == StepShape::Jump) return take_jump(step);
        events_ = step.plan.events.value_or(events_);
        if (step.plan.shape == StepShape::RampRate ? !add_ramp(step.plan) : !add_timed(step.plan))
            return false;
        ++step_;
        return true;
    }

    bool take_jump(PlannedStep& step) {
        if (step.plan.jump_count && step.jumps_done >= *step.plan.jump_count) {
            step.jumps_done = 0;
            ++step_;
            return true;
        }
        if (step.plan.jump_count) ++step.jumps_done;
        return go_to(step.plan.jump_profile.value_or(profile_), step.plan.jump_step) ||
               stop(CurveEnd::JumpOutside);
    }

    bool add_timed(const StepPlan& plan) {
        auto to = set_points_;
        for (std::size_t loop = 0; loop < kLoops; ++loop)
            to[loop] = plan.targets[loop].value_or(to[loop]);
        return add(std::max(plan.seconds, 0.0), to, plan.wait_loop);
    }

    /// Loops with a rate go at theirs; one without arrives with the last of them.
    bool add_ramp(const StepPlan& plan) {
        std::array<double, kLoops> times{};
        for (std::size_t loop = 0; loop < kLoops; ++loop) {
            const double way =
                std::abs(plan.targets[loop].value_or(set_points_[loop]) - set_points_[loop]);
            if (way == 0) continue;
            if (plan.rates[loop] > 0)
                times[loop] = way / plan.rates[loop];
            else if (plan.rates[0] <= 0 && plan.rates[1] <= 0)
                return stop(CurveEnd::NoRate);
        }
        const double last = std::max(times[0], times[1]);
        for (std::size_t loop = 0; loop < kLoops; ++loop)
            if (plan.rates[loop] <= 0) times[loop] = last;
        const double first = std::min(times[0], times[1]);
        const auto from = set_points_;
        const auto after = [&](double seconds) {
            auto to = from;
            for (std::size_t loop = 0; loop < kLoops; ++loop) {
                const double target = plan.targets[loop].value_or(from[loop]);
                const bool there = seconds >= times[loop];
                to[loop] =
                    there ? target : from[loop] + (target - from[loop]) * seconds / times[loop];
            }
            return to;
        };
        const bool two = first > 0 && first < last;
        if (two && !add(first, after(first), 0)) return false;
        return add(two ? last - first : last, after(last), plan.wait_loop);
    }

    bool add(double seconds, const std::array<double, kLoops>& to, int wait_loop) {
        if (curve_.segments.size() < ProfileCurve::kMaxSegments)
            curve_.segments.push_back(
                {profile_, step_, time_, time_ + seconds, set_points_, to, events_, wait_loop});
        else
            curve_.cut = true;
        time_ += seconds;
        set_points_ = to;
        return time_ <= ProfileCurve::kMaxSeconds || stop(CurveEnd::TooLong);
    }

    const ProfileFormat& format_;
    const ProfileSet& profiles_;
    std::map<int, PlannedProfile> planned_;
    PlannedProfile* steps_ = nullptr; // of the profile that runs
    int profile_ = 0;
    int step_ = 1;
    std::array<double, kLoops> set_points_;
    int events_ = 0;
    double time_ = 0;
    ProfileCurve curve_;
};

} // namespace

ProfileCurve unroll(const ProfileFormat& format, const ProfileSet& profiles,
                    const CurveStart& start) {
    return Unroller(format, profiles, start).run();
}

std::size_t ProfileCurve::segment_at(double time) const {
    const auto found =
        std::upper_bound(segments.begin(), segments.end(), time,
                         [](double when, const CurveSegment& one) { return when < one.end; });
    return static_cast<std::size_t>(found - segments.begin());
}

CurvePoint ProfileCurve::at(double time) const {
    if (segments.empty()) return {start.profile, start.step, start.set_points, 0};
    const std::size_t index = segment_at(time);
    if (index == segments.size()) {
        const CurveSegment& last = segments.back();
        return {last.profile, last.step, last.to, last.events};
    }
    const CurveSegment& one = segments[index];
    CurvePoint point{one.profile, one.step, one.from, one.events};
    // `time` lies before `end`, so that the segment has a length.
    const double part = std::max(0.0, (time - one.begin) / (one.end - one.begin));
    for (std::size_t loop = 0; loop < kLoops; ++loop)
        point.set_points[loop] += (one.to[loop] - one.from[loop]) * part;
    return point;
}

bool ProfileCurve::moves(std::size_t loop) const {
    return std::any_of(segments.begin(), segments.end(), [&](const CurveSegment& one) {
        return one.from.at(loop) != one.to.at(loop);
    });
}

} // namespace pelvan
