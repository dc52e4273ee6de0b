// The course of both set points when a profile runs: jumps unrolled, ramps at a rate computed from
// where the curve stands. Waiting takes no time here, since nobody knows how long it will be.
#pragma once

#include <array>
#include <vector>

#include "profile/step_plan.h"

namespace pelvan {

/// A piece of the curve on which both set points move linearly. A step has one, or two when its
/// loops do not arrive together; jumps and the end have none.
struct CurveSegment {
    int profile = 0;
    int step = 0;
    double begin = 0; // seconds from the start
    double end = 0;
    std::array<double, kLoops> from{};
    std::array<double, kLoops> to{};
    int events = 0;
    int wait_loop = 0; // the input that is waited for behind it; 0: none
};

/// Where unrolling stopped.
enum class CurveEnd {
    Ended,       // at an end step
    NoProfile,   // there is no profile or step to begin with
    PastLast,    // behind a last step that is no end
    JumpOutside, // at a jump to a profile or step that is not there
    UnknownType, // at a step of a type that the format does not have
    NoRate,      // at a ramp with a rate of 0
    TooLong,     // after kMaxSeconds
    Endless      // after a million steps
};

struct CurveStart {
    int profile = 1;
    int step = 1;
    std::array<double, kLoops> set_points{}; // where the curve begins
};

/// What the curve says of a moment.
struct CurvePoint {
    int profile = 0;
    int step = 0;
    std::array<double, kLoops> set_points{};
    int events = 0;
};

struct ProfileCurve {
    static constexpr std::size_t kMaxSegments = 10'000;
    static constexpr double kMaxSeconds = 10'000.0 * 3600;

    std::vector<CurveSegment> segments;
    bool cut = false; // there are more segments than are kept; the time goes on counting
    CurveEnd how = CurveEnd::NoProfile;
    int last_profile = 0; // where it stopped
    int last_step = 0;
    double seconds = 0; // the whole time, up to where unrolling stopped
    CurveStart start;

    /// The moment, in seconds from the start; before it the first values, behind the curve's end
    /// the last ones. Where a set point leaps, the value behind the leap.
    [[nodiscard]] CurvePoint at(double time) const;
    [[nodiscard]] double value_at(double time, std::size_t loop) const {
        return at(time).set_points.at(loop);
    }
    /// How far a process value lies above the set point of the moment.
    [[nodiscard]] double deviation(double time, std::size_t loop, double process_value) const {
        return process_value - value_at(time, loop);
    }
    /// The segment of the moment; the number of segments where there is none.
    [[nodiscard]] std::size_t segment_at(double time) const;
    /// Whether a step moves the set point of the loop (0 or 1).
    [[nodiscard]] bool moves(std::size_t loop) const;
};

/// Unrolls a profile. Jumps as controllers take them: a jump of count n is taken n times, then
/// passed, and counts anew when it is met again; a jump into another profile does not return.
[[nodiscard]] ProfileCurve unroll(const ProfileFormat& format, const ProfileSet& profiles,
                                  const CurveStart& start);

} // namespace pelvan
