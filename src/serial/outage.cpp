#include "serial/outage.h"

#include "text/duration.h"

namespace pelvan {
namespace {

constexpr double kShortestMs = 100; // less would read as 0.0 s

} // namespace

std::string outage_sentence(double away_ms, const std::string& time) {
    const bool at_once = away_ms < kShortestMs;
    const std::string text = at_once ? std::string("The device was lost and opened again")
                                     : "The device was gone for " + time_span_text(away_ms);
    return text + (time.empty() ? "" : (at_once ? " at " : ", until ") + time) + ".";
}

} // namespace pelvan
