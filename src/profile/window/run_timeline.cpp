#include "profile/window/run_timeline.h"

#include <algorithm>
#include <cmath>

namespace pelvan {
namespace {

constexpr double kMsPerSecond = 1000;
constexpr double kSamePlace_s = 2; // a controller tells whole seconds

void move(CurvePiece& piece, double seconds) {
    piece.from_s += seconds;
    piece.to_s += seconds;
}

/// The part of a piece between two times within it.
CurvePiece part_of(const CurvePiece& piece, double from_s, double to_s) {
    CurvePiece part = piece;
    const double length = piece.to_s - piece.from_s;
    for (std::size_t i = 0; i < kSetPoints; ++i) {
        const auto value = [&](double time_s) {
            const double share = length > 0 ? (time_s - piece.from_s) / length : 1;
            return piece.from[i] + share * (piece.to[i] - piece.from[i]);
        };
        part.from[i] = value(from_s);
        part.to[i] = value(to_s);
    }
    part.from_s = from_s;
    part.to_s = to_s;
    return part;
}

} // namespace

void RunTimeline::begin(CurvePicture programmed) {
    *this = RunTimeline();
    programmed_ = std::move(programmed);
    picture_.programmed = programmed_;
}

void RunTimeline::add(const RunSample& sample) {
    if (!sample.reading) return add_loss(sample.time_ms / kMsPerSecond);
    const RunReading& reading = *sample.reading;
    const double clock_s = sample.time_ms / kMsPerSecond;
    const double passed = last_clock_ ? clock_s - *last_clock_ : 0;
    last_clock_ = clock_s;
    const bool stands = reading.state == RunState::Held || reading.state == RunState::Waiting;
    if (sample.seconds)
        place_ = *sample.seconds;
    else if (!stands)
        place_ += passed;
    if (stands) pause(passed);
    RunPoint point;
    point.time_s = place_ + paused_;
    if (!picture_.points.empty())
        point.time_s = std::max(point.time_s, picture_.points.back().time_s);
    point.seen = true;
    for (std::size_t i = 0; i < kSetPoints; ++i) {
        point.set_points[i] = reading.set_points[i].value_or(kNoValue);
        point.process[i] = reading.process_values[i].value_or(kNoValue);
    }
    point.step = reading.step;
    point.events = reading.events.value_or(0);
    push(point);
}

void RunTimeline::add_loss(double clock_s) {
    if (picture_.points.empty() || !last_clock_) return;
    const bool first = picture_.points.back().seen;
    if (first) seen_s_ = picture_.points.back().time_s;
    RunPoint point;
    point.time_s = seen_s_ + clock_s - *last_clock_;
    // One stands for the whole gap; the clock of the last reading stays, to bridge it.
    if (first) push(point);
    picture_.now_s = point.time_s;
}

void RunTimeline::push(const RunPoint& point) {
    auto& points = picture_.points;
    if (points.size() >= kMostPoints) {
        const std::size_t half = points.size() / 2;
        for (std::size_t i = 0; 2 * i < half; ++i)
            points[i] = points[2 * i];
        points.erase(points.begin() + static_cast<std::ptrdiff_t>((half + 1) / 2),
                     points.begin() + static_cast<std::ptrdiff_t>(half));
    }
    points.push_back(point);
    picture_.now_s = point.time_s;
}

void RunTimeline::pause(double seconds) {
    if (seconds <= 0) return;
    if (pauses_.empty() || std::abs(pauses_.back().at - place_) > kSamePlace_s)
        pauses_.push_back({place_, 0});
    pauses_.back().length += seconds;
    paused_ += seconds;
    move_programmed();
}

void RunTimeline::move_programmed() {
    std::vector<CurvePiece> moved;
    auto next = pauses_.begin();
    double shift = 0;
    for (CurvePiece piece : programmed_.pieces) {
        while (next != pauses_.end() && next->at <= piece.to_s) {
            const double at = std::max(next->at, piece.from_s);
            CurvePiece before = part_of(piece, piece.from_s, at);
            CurvePiece still = part_of(piece, at, at);
            piece = part_of(piece, at, piece.to_s);
            move(before, shift);
            still.from_s += shift;
            shift += next->length;
            still.to_s += shift;
            moved.push_back(before);
            moved.push_back(still);
            ++next;
        }
        move(piece, shift);
        moved.push_back(piece);
    }
    picture_.programmed.pieces = std::move(moved);
}

} // namespace pelvan
