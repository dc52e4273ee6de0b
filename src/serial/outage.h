// What is said when a port that could not be used is used again, whoever says it.
#pragma once

#include <string>

namespace pelvan {

struct Outage {
    double ms = 0;        // from the first exchange that missed the device
    bool was_open = true; // before; else it did not open from the start
};

/// "The device was gone for 12 s.", with a time of day "The device was gone for 12 s, until
/// 16:30:05."; without a span where it was over at once.
[[nodiscard]] std::string outage_sentence(const Outage& outage, const std::string& time = {});

} // namespace pelvan
