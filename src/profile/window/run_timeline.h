// A run as it is drawn: what was read, along the programmed curve. The curve says how long a run
// takes without pauses; while it is held or waits for an input the rest of the curve moves on.
// Where on the curve a reading belongs is ProfileRecord's to find.
#pragma once

#include <optional>
#include <vector>

#include "profile/profile_record.h"
#include "profile/window/profile_picture.h"

namespace pelvan {

class RunTimeline {
  public:
    /// Points that are kept; of more, every second one of the older half goes.
    static constexpr std::size_t kMostPoints = 40'000;

    /// A run begins, or is met on its way. Where nothing is programmed, or it is not known, time
    /// goes as it goes here.
    void begin(CurvePicture programmed);
    /// What was read, or a gap. Times must not go back.
    void add(const RunSample& sample);

    [[nodiscard]] const RunPicture& picture() const { return picture_; }

  private:
    struct Pause {
        double at = 0; // on the curve
        double length = 0;
    };

    void add_loss(double clock_s);
    void pause(double seconds);
    void move_programmed();
    void push(const RunPoint& point);

    CurvePicture programmed_; // without pauses
    RunPicture picture_;
    std::vector<Pause> pauses_;
    std::optional<double> last_clock_;
    double place_ = 0; // on the curve, in seconds
    double paused_ = 0;
    double seen_s_ = 0; // of the last point before a gap
};

} // namespace pelvan
