#include "serial/outage.h"

#include "text/duration.h"

namespace pelvan {
namespace {

constexpr double kShortestMs = 100; // less would read as 0.0 s

} // namespace

std::string outage_sentence(const Outage& outage, const std::string& time) {
    const bool at_once = outage.ms < kShortestMs;
    if (outage.was_open && at_once)
        return "The device was lost and opened again" + (time.empty() ? "" : " at " + time) + ".";
    const std::string span = at_once ? "at first" : "for " + time_span_text(outage.ms);
    const std::string text =
        (outage.was_open ? "The device was gone " : "The port could not be opened ") + span;
    if (!time.empty()) return text + ", until " + time + ".";
    return text + (outage.was_open ? "." : "; it is open now.");
}

} // namespace pelvan
