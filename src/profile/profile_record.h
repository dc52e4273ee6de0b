// What was watched of a running profile: readings with their times, where the programmed curve
// stands at each, and gaps where the line was lost. Bounded memory; text for a CSV file.
#pragma once

#include <deque>

#include "profile/profile_curve.h"
#include "profile/run_reading.h"

namespace pelvan {

/// Finds the place of a running profile on the curve that was computed beforehand, by its profile,
/// step and the time left in the step, so that holding and waiting do not shift it.
class CurvePlace {
  public:
    CurvePlace() = default;
    explicit CurvePlace(ProfileCurve curve) : curve_(std::move(curve)) {}

    [[nodiscard]] const ProfileCurve& curve() const { return curve_; }
    /// Seconds from the curve's start. Ahead of where the last reading stood if that can be, so
    /// that the turns of a jump are told apart. Nothing where nothing runs, the step is not on the
    /// curve, or the controller does not tell the time left.
    [[nodiscard]] std::optional<double> find(const RunReading& reading);

  private:
    [[nodiscard]] std::optional<double> find_ahead(const RunReading& reading);

    ProfileCurve curve_;
    std::size_t segment_ = 0; // of the last reading
    double seconds_ = 0;
};

struct RunSample {
    double time_ms = 0;                // local calendar time
    std::optional<RunReading> reading; // none: a gap
    std::optional<double> seconds;     // on the programmed curve
    std::array<std::optional<double>, kLoops> programmed{};

    /// How far the process value lies above the programmed curve.
    [[nodiscard]] std::optional<double> deviation(std::size_t loop) const;
};

/// A CSV file's first line, and that of a sample: numbers with a point, what is not known empty.
[[nodiscard]] std::string csv_head();
[[nodiscard]] std::string csv_line(const RunSample& sample);

class ProfileRecord {
  public:
    /// A day at one reading a second, 15 MB.
    static constexpr std::size_t kSamples = 86'400;
    explicit ProfileRecord(std::size_t capacity = kSamples) : capacity_(capacity) {}

    /// The curve that readings from now on are compared with; an empty one for none.
    void follow(ProfileCurve curve) { place_ = CurvePlace(std::move(curve)); }
    [[nodiscard]] const ProfileCurve& curve() const { return place_.curve(); }

    /// Adds a reading, or a gap without one; of gaps in a row the first is kept alone. The oldest
    /// sample goes when there is no room. Times must not go back.
    const RunSample& add(double time_ms, const std::optional<RunReading>& reading);
    void clear();

    [[nodiscard]] const std::deque<RunSample>& samples() const { return samples_; }
    /// Samples that had to go.
    [[nodiscard]] std::size_t dropped() const { return dropped_; }
    /// Writes a CSV file, wholly or not at all. What went wrong, as a sentence; else empty.
    [[nodiscard]] std::string save_csv(const std::string& path) const;

  private:
    std::size_t capacity_;
    std::size_t dropped_ = 0;
    std::deque<RunSample> samples_;
    CurvePlace place_;
};

} // namespace pelvan
