#include "serial/frame_exchange.h"

#include <algorithm>

#include "config/ini.h"
#include "platform/run_time_error.h"
#include "platform/serial_line.h"

namespace pelvan {
namespace {

constexpr char kComplete[] = "COMPLETE";
constexpr double kDistanceCharacters = 3.5;
/// Above this rate the distance stays what it is there: characters get too short to be timed.
constexpr int kFixedDistanceBaud = 19200;
constexpr double kFixedDistanceMs = 1.75;
constexpr double kMaxDistanceMs = 1000;
/// The system wakes a sleeper later than it was asked to, the later the longer it slept; so much of
/// a distance is waited awake.
constexpr double kAwakeShare = 0.04;
constexpr double kMostAwakeMs = 0.2;
/// Before the end of it the line is looked at once more, and then the clock alone.
constexpr double kLastLookMs = 0.02;

constexpr double kLongestFrame = 260; // characters
constexpr std::size_t kMaxReplyBytes = std::size_t{1} << 20;

/// Replies come sooner and later by so much, or by half their time, without meaning anything.
constexpr double kJitterMs = 5;
constexpr double kMaxListeningMs = 250;

/// To wake for every byte is most of what an exchange costs the processor. The rest of a reply as
/// long as the one before is slept for, in parts, so that a shorter one is not noticed much later.
double gathering_ms(std::size_t received, const LineRecord& record, const ExchangeWay& way) {
    constexpr std::size_t kMostAtOnce = 6;
    constexpr double kMargin = 0.5;
    if (received + 1 >= record.last_reply) return 0;
    const std::size_t missing = std::min(record.last_reply - received, kMostAtOnce);
    return (static_cast<double>(missing) - kMargin) * way.character_ms;
}

} // namespace

ExchangeWay exchange_way(const std::string& exchange, const std::string& settings,
                         const std::string& echo) {
    const auto line = parse_line_settings(settings);
    if (!line) return {};
    const double character_ms = character_time_us(*line) / 1000;
    const bool is_fixed = line->baud_rate > kFixedDistanceBaud;
    return {exchange == kComplete, echo == ini_key::kYes, false, character_ms,
            is_fixed ? kFixedDistanceMs : kDistanceCharacters * character_ms};
}

/// What was counted has arrived by now: taking it out is no part of the distance behind it.
void FrameExchange::take(std::string& bytes, std::size_t counted) {
    record_.last_byte_ms = tick_.precise_ms();
    const std::string taken = port_.Input();
    if (taken.size() > counted) record_.last_byte_ms = tick_.precise_ms();
    bytes += taken;
}

std::size_t FrameExchange::keep_distance() {
    const double end_ms = tick_.precise_ms() + kMaxDistanceMs;
    const double awake_ms = std::min(kAwakeShare * way_.distance_ms, kMostAwakeMs);
    std::string bytes;
    while (port_.PortOpen() && !port_.lost()) { // else the write meets and reports it
        if (const std::size_t count = counted(); count > 0) take(bytes, count);
        const double distance =
            bytes.empty() ? way_.distance_ms : std::max(way_.distance_ms, kAdapterSilenceMs);
        const double until_ms = std::min(record_.last_byte_ms + distance, end_ms);
        const double left_ms = until_ms - tick_.precise_ms();
        if (left_ms > awake_ms) {
            port_.wait_for_input(left_ms - awake_ms);
            continue;
        }
        const bool last_look = left_ms <= kLastLookMs;
        while (tick_.precise_ms() < until_ms - (last_look ? 0 : kLastLookMs)) {
        }
        if (last_look) break;
    }
    return bytes.size();
}

void FrameExchange::sent(std::size_t bytes) {
    asked_ = true;
    sent_ms_ = tick_.precise_ms();
    // Until a reply says that they have arrived.
    record_.last_byte_ms = sent_ms_ + static_cast<double>(bytes) * way_.character_ms;
}

/// How long to listen behind the frame that has just become whole; 0 unless it came too soon.
double FrameExchange::listening_ms() const {
    const double taken_ms = record_.last_byte_ms - sent_ms_;
    const double jitter_ms = std::min(kJitterMs, record_.fastest_ms / 2);
    if (!asked_ || taken_ms >= record_.fastest_ms - jitter_ms) return 0;
    return std::min(2 * record_.fastest_ms - taken_ms, kMaxListeningMs);
}

/// What a lost line had sent is the reply; the next use meets the loss.
std::size_t FrameExchange::bytes_waiting(const std::string& reply) {
    try {
        return counted();
    } catch (const RunTimeError& error) {
        lost_ = error.number() == error_number::kCannotReadDevice;
        if (!lost_ || reply.empty()) throw;
        return 0;
    }
}

std::string FrameExchange::collect(double timeout_ms, double quiet_ms, const IsWhole& is_whole) {
    const double silence_ms = std::max(quiet_ms, way_.silence_ms);
    double until_ms = tick_.precise_ms() + timeout_ms;
    const double end_ms = until_ms + kLongestFrame * way_.character_ms;
    bool whole = false;
    std::string reply;
    for (;;) {
        if (const std::size_t count = bytes_waiting(reply); count > 0) {
            const std::size_t before = reply.size();
            const double last_ms = record_.last_byte_ms;
            take(reply, count);
            lumps_.add({reply.size() - before, before > 0 ? record_.last_byte_ms - last_ms : 0});
            whole = is_whole && is_whole(reply);
            const double more_ms = whole ? listening_ms() : silence_ms;
            until_ms = std::min(record_.last_byte_ms + more_ms, end_ms);
            if (record_.last_byte_ms >= until_ms || reply.size() >= kMaxReplyBytes) break;
            const double gathering = whole ? 0 : gathering_ms(reply.size(), record_, way_);
            if (gathering > 0)
                tick_.sleep_for_ms(std::min(gathering, until_ms - record_.last_byte_ms));
            continue;
        }
        const double left_ms = until_ms - tick_.precise_ms();
        if (left_ms <= 0 || lost_) break;
        port_.wait_for_input(left_ms);
    }
    cut_off_ = !reply.empty() && !whole && !lost_ &&
               tick_.precise_ms() < record_.last_byte_ms + silence_ms;
    record_.last_reply = reply.size();
    if (whole && asked_) {
        const double taken_ms = record_.last_byte_ms - sent_ms_;
        const bool is_first = record_.fastest_ms == 0;
        record_.fastest_ms = is_first ? taken_ms : std::min(record_.fastest_ms, taken_ms);
    }
    return reply;
}

} // namespace pelvan
