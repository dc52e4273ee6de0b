// What is said when a device that was away is used again, whoever says it.
#pragma once

#include <string>

namespace pelvan {

/// "The device was gone for 12 s.", with a time of day "The device was gone for 12 s, until
/// 16:30:05."; without a span where it was back at once.
[[nodiscard]] std::string outage_sentence(double away_ms, const std::string& time = {});

} // namespace pelvan
