// How long something lasted, in words.
#pragma once

#include <string>

namespace pelvan {

/// "0.4 s", "12 s", "2 min 5 s", "1 h 3 min", "2 d 4 h": what is behind the second unit is cut off.
[[nodiscard]] std::string time_span_text(double ms);

} // namespace pelvan
