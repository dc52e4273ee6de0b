#include "profile/profile_record.h"

#include <algorithm>
#include <cmath>
#include <system_error>
#include <utility>

#include "platform/whole_file.h"
#include "text/date_time.h"
#include "text/numbers.h"

namespace pelvan {
namespace {

/// The time left is told in whole seconds, and a reading takes its own time.
constexpr double kToleranceSeconds = 3;

std::string rounded(const std::optional<double>& value) {
    constexpr double kHundred = 100;
    return value ? plain_number(std::round(*value * kHundred) / kHundred) : std::string();
}

std::string number(const std::optional<int>& value) {
    return value ? std::to_string(*value) : std::string();
}

} // namespace

std::optional<double> CurvePlace::find(const RunReading& reading) {
    if (!reading.active()) {
        segment_ = 0;
        seconds_ = 0;
    }
    if (!reading.active() || !reading.seconds_left) return std::nullopt;
    if (const auto ahead = find_ahead(reading)) return ahead;
    // Ended and started again between two readings.
    const auto segment = std::exchange(segment_, 0);
    const double seconds = std::exchange(seconds_, 0);
    const auto anew = find_ahead(reading);
    if (anew) return anew;
    segment_ = segment;
    seconds_ = seconds;
    return std::nullopt;
}

std::optional<double> CurvePlace::find_ahead(const RunReading& reading) {
    const auto& segments = curve_.segments;
    for (std::size_t i = segment_; i < segments.size(); ++i) {
        const CurveSegment& one = segments[i];
        const auto here = [&](const CurveSegment& other) {
            return other.profile == reading.profile && other.step == reading.step;
        };
        if (!here(one)) continue;
        // A step may have two segments.
        const bool second = i > 0 && here(segments[i - 1]);
        const double begin = second ? segments[i - 1].begin : one.begin;
        const double seconds = one.end - *reading.seconds_left;
        if (seconds < begin - kToleranceSeconds || seconds < seconds_ - kToleranceSeconds) continue;
        segment_ = second && seconds < one.begin ? i - 1 : i;
        return seconds_ = std::max(seconds, begin);
    }
    return std::nullopt;
}

std::optional<double> RunSample::deviation(std::size_t loop) const {
    if (!reading || !programmed.at(loop) || !reading->process_values.at(loop)) return std::nullopt;
    return *reading->process_values.at(loop) - *programmed.at(loop);
}

std::string csv_head() {
    return "Time,State,Profile,Step,Seconds left,Jumps done,Set point 1,Set point 2,"
           "Process value 1,Process value 2,Programmed 1,Programmed 2,Deviation 1,Deviation 2,"
           "Events";
}

std::string csv_line(const RunSample& sample) {
    const LocalTime time = calendar_time(sample.time_ms);
    std::string line = iso_date_text(time) + " " + time_ms_text(time);
    if (!sample.reading) return line + ",no reading" + std::string(13, ',');
    const RunReading& reading = *sample.reading;
    line += "," + std::string(run_word(reading.state));
    for (const std::string& cell :
         {std::to_string(reading.profile), std::to_string(reading.step),
          number(reading.seconds_left), number(reading.jumps_done), rounded(reading.set_points[0]),
          rounded(reading.set_points[1]), rounded(reading.process_values[0]),
          rounded(reading.process_values[1]), rounded(sample.programmed[0]),
          rounded(sample.programmed[1]), rounded(sample.deviation(0)), rounded(sample.deviation(1)),
          number(reading.events)})
        line += "," + cell;
    return line;
}

const RunSample& ProfileRecord::add(double time_ms, const std::optional<RunReading>& reading) {
    if (!reading && !samples_.empty() && !samples_.back().reading) return samples_.back();
    RunSample sample{time_ms, reading, {}, {}};
    if (reading) sample.seconds = place_.find(*reading);
    if (sample.seconds)
        for (std::size_t loop = 0; loop < kLoops; ++loop)
            sample.programmed[loop] = place_.curve().value_at(*sample.seconds, loop);
    if (samples_.size() >= capacity_) {
        samples_.pop_front();
        ++dropped_;
    }
    return samples_.emplace_back(sample);
}

void ProfileRecord::clear() {
    samples_.clear();
    dropped_ = 0;
}

std::string ProfileRecord::save_csv(const std::string& path) const {
    std::string text = csv_head() + "\r\n";
    for (const RunSample& sample : samples_)
        text += csv_line(sample) + "\r\n";
    const int error = change_whole_file(path, [&](std::string_view) { return text; });
    return error == 0
               ? std::string()
               : "The file " + path +
                     " could not be written: " + std::generic_category().message(error) + ".";
}

} // namespace pelvan
