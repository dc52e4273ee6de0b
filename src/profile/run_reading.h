// What runs in a controller at one moment, as one value.
#pragma once

#include <array>
#include <optional>

#include "profile/step_plan.h"

namespace pelvan {

/// What the model's .pds does not name, and what the controller refuses or marks as not fitted, is
/// not there.
struct RunReading {
    RunState state = RunState::Off;
    int profile = 0; // 0: none runs
    int step = 0;
    std::optional<int> seconds_left; // in the step
    std::optional<int> jumps_done;
    std::array<std::optional<double>, kLoops> set_points{};
    std::array<std::optional<double>, kLoops> process_values{};
    std::optional<int> events;

    /// Running, held or waiting.
    [[nodiscard]] bool active() const { return state != RunState::Off && state != RunState::Ended; }

    bool operator==(const RunReading&) const = default;
};

/// "2:05:09".
[[nodiscard]] std::string duration_text(double seconds);

/// "Profile 3, step 2 is running, 0:12:30 left.", "No profile runs (ended).".
[[nodiscard]] std::string run_sentence(const RunReading& reading);

} // namespace pelvan
