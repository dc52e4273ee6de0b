#include "profile/run_reading.h"

#include <cmath>

#include "profile/profile_difference.h"

namespace pelvan {
namespace {

std::string two_digits(long number) {
    return (number < 10 ? "0" : "") + std::to_string(number);
}

} // namespace

std::string duration_text(double seconds) {
    constexpr long kHour = 3600;
    constexpr long kMinute = 60;
    const long all = std::lround(seconds);
    return std::to_string(all / kHour) + ":" + two_digits(all % kHour / kMinute) + ":" +
           two_digits(all % kMinute);
}

std::string run_sentence(const RunReading& reading) {
    const std::string word(run_word(reading.state));
    if (!reading.active()) return "No profile runs (" + word + ").";
    const std::string left =
        reading.seconds_left ? ", " + duration_text(*reading.seconds_left) + " left" : "";
    return profile_place(reading.profile, reading.step) + " is " + word + left + ".";
}

} // namespace pelvan
