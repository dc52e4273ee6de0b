#include "listen/traffic.h"

#include <algorithm>
#include <cmath>

#include "text/numbers.h"

namespace pelvan {
namespace {

/// The largest time-out of the monitor: what comes later answers nothing.
constexpr double kMaxReplyMs = 10000;
constexpr int kBroadcast = 0;

std::string rounded_ms(double ms) {
    return plain_number(round_half_even(ms)) + " ms";
}

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

void TimeSummary::add(double ms) {
    minimum = count == 0 ? ms : std::min(minimum, ms);
    maximum = count == 0 ? ms : std::max(maximum, ms);
    sum += ms;
    ++count;
}

void Histogram::add(double ms) {
    const auto* limit = std::upper_bound(kLimits.begin(), kLimits.end(), ms);
    ++counts_.at(static_cast<std::size_t>(limit - kLimits.begin()));
}

std::string Histogram::label(std::size_t index) {
    const std::string from = index == 0 ? "0" : std::to_string(kLimits.at(index - 1));
    return index < kLimits.size() ? from + "-" + std::to_string(kLimits.at(index)) : from + "+";
}

void Traffic::start(double tick, const LocalTime& now) {
    clock_.start(tick, epoch_milliseconds(now));
    last_start_ms_.reset();
    pending_.clear();
}

const Burst& Traffic::add(double start_tick, double length_ms, const std::string& bytes) {
    Burst burst;
    burst.start_ms = clock_.at(start_tick);
    burst.bytes = bytes;
    if (last_start_ms_) burst.gap_ms = burst.start_ms - *last_start_ms_;
    last_start_ms_ = burst.start_ms;
    pair(burst);
    if (burst.frame.kind == FrameKind::Request && burst.frame.address != kBroadcast) {
        pending_ = bytes;
        pending_end_ms_ = burst.start_ms + length_ms;
    }
    count(burst);
    ++revision_;
    keep(std::move(burst));
    return bursts_.back();
}

/// A reply belongs to the request before it when it comes from the address and carries the function
/// that were asked, in time. Noise between the two separates nothing; any other frame does.
void Traffic::pair(Burst& burst) {
    if (!pending_.empty() && burst.start_ms - pending_end_ms_ > kMaxReplyMs) pending_.clear();
    burst.frame = classify_frame(burst.bytes, pending_);
    if (burst.frame.kind == FrameKind::Damaged) return;
    if (is_reply(burst.frame.kind) && !pending_.empty() &&
        static_cast<unsigned char>(pending_[0]) == burst.frame.address &&
        static_cast<unsigned char>(pending_[1]) == burst.frame.function)
        burst.reply_ms = std::max(burst.start_ms - pending_end_ms_, 0.0);
    pending_.clear();
}

void Traffic::count(const Burst& burst) {
    if (burst.gap_ms) gaps_.add(*burst.gap_ms);
    if (burst.reply_ms) reply_times_.add(*burst.reply_ms);
    const auto count_in = [&burst](TrafficRow& row) {
        if (burst.frame.kind == FrameKind::Request) ++row.requests;
        if (is_reply(burst.frame.kind)) ++row.replies;
        if (burst.frame.kind == FrameKind::ExceptionReply) ++row.exceptions;
        if (burst.reply_ms) row.reply.add(*burst.reply_ms);
        if (burst.gap_ms) row.gap.add(*burst.gap_ms);
    };
    count_in(all_);
    if (burst.frame.kind == FrameKind::Damaged) {
        ++damaged_;
        return;
    }
    count_in(by_address_[burst.frame.address]);
    count_in(by_function_[burst.frame.function]);
}

void Traffic::keep(Burst burst) {
    kept_bytes_ += burst.bytes.size();
    bursts_.push_back(std::move(burst));
    while (bursts_.size() > kKeptBursts || (kept_bytes_ > kKeptBytes && bursts_.size() > 1)) {
        kept_bytes_ -= bursts_.front().bytes.size();
        bursts_.pop_front();
    }
}

void Traffic::clear() {
    bursts_.clear();
    kept_bytes_ = 0;
    all_ = {};
    by_address_.clear();
    by_function_.clear();
    damaged_ = 0;
    reply_times_ = {};
    gaps_ = {};
    ++revision_;
}

std::string burst_note(const Burst& burst) {
    std::string note = time_ms_text(local_time(burst.start_ms));
    if (burst.gap_ms) note += "  +" + rounded_ms(*burst.gap_ms);
    return note + "  " + kind_text(burst);
}

} // namespace pelvan
