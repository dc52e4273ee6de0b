// A step in words, for whoever is asked whether it shall be done.
#pragma once

#include <string>

#include "profile/profile.h"

namespace pelvan {

/// "ramp in a time: 0:30:00, set point 1 120.0 degrees, event 1": its kind, and what of its fields
/// says something.
[[nodiscard]] std::string step_words(const ProfileFormat& format, const ProfileStep& step);

/// "1, 3" for the outputs that are on; "none".
[[nodiscard]] std::string events_text(int events);

} // namespace pelvan
