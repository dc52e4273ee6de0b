#include "listen/burst.h"

#include <algorithm>

#include "text/numbers.h"

namespace pelvan {
namespace {

std::string kind_text(const Burst& burst) {
    switch (burst.frame.kind) {
    case FrameKind::Damaged:
        return "no Modbus frame";
    case FrameKind::Request:
        return "request";
    case FrameKind::Reply:
    case FrameKind::ExceptionReply:
        break;
    }
    const std::string what = burst.frame.kind == FrameKind::Reply ? "reply" : "exception reply";
    return burst.reply_ms ? what + " after " + rounded_ms(*burst.reply_ms) : what;
}

} // namespace

std::string rounded_ms(double ms) {
    return plain_number(round_half_even(ms)) + " ms";
}

void BurstTimes::start(double tick, const LocalTime& now) {
    clock_.start(tick, epoch_milliseconds(now));
    last_start_ms_.reset();
    pending_.clear();
}

Burst BurstTimes::add(double start_tick, double length_ms, const std::string& bytes) {
    Burst burst;
    burst.start_ms = clock_.at(start_tick);
    if (last_start_ms_) burst.gap_ms = burst.start_ms - *last_start_ms_;
    last_start_ms_ = burst.start_ms;
    pair(burst, bytes);
    if (burst.frame.kind == FrameKind::Request && burst.frame.address != kBroadcastAddress) {
        pending_ = bytes;
        pending_end_ms_ = burst.start_ms + length_ms;
    }
    return burst;
}

/// A reply belongs to the request before it when it comes from the address and carries the function
/// that were asked, in time. Noise between the two separates nothing; any other frame does.
void BurstTimes::pair(Burst& burst, const std::string& bytes) {
    if (!pending_.empty() && burst.start_ms - pending_end_ms_ > kMaxReplyMs) pending_.clear();
    burst.frame = classify_frame(bytes, pending_);
    if (burst.frame.kind == FrameKind::Damaged) return;
    if (is_reply(burst.frame.kind) && !pending_.empty() &&
        static_cast<unsigned char>(pending_[0]) == burst.frame.address &&
        static_cast<unsigned char>(pending_[1]) == burst.frame.function)
        burst.reply_ms = std::max(burst.start_ms - pending_end_ms_, 0.0);
    pending_.clear();
}

std::string burst_note(const Burst& burst) {
    std::string note = time_ms_text(local_time(burst.start_ms));
    if (burst.gap_ms) note += "  +" + rounded_ms(*burst.gap_ms);
    return note + "  " + kind_text(burst);
}

} // namespace pelvan
