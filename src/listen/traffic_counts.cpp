#include "listen/traffic_counts.h"

#include <algorithm>

namespace pelvan {

void Histogram::add(double ms) {
    const auto* limit = std::upper_bound(kLimits.begin(), kLimits.end(), ms);
    ++counts_.at(static_cast<std::size_t>(limit - kLimits.begin()));
}

std::string Histogram::label(std::size_t index) {
    const std::string from = index == 0 ? "0" : std::to_string(kLimits.at(index - 1));
    return index < kLimits.size() ? from + "-" + std::to_string(kLimits.at(index)) : from + "+";
}

void TrafficCounts::add(const CountedFrame& frame) {
    if (frame.gap_ms) gaps_.add(*frame.gap_ms);
    if (frame.reply_ms) reply_times_.add(*frame.reply_ms);
    const auto count_in = [&frame](TrafficRow& row) {
        if (frame.info.kind == FrameKind::Request) ++row.requests;
        if (is_reply(frame.info.kind)) ++row.replies;
        if (frame.info.kind == FrameKind::ExceptionReply) ++row.exceptions;
        if (frame.reply_ms) row.reply.add(*frame.reply_ms);
        if (frame.gap_ms) row.gap.add(*frame.gap_ms);
    };
    count_in(all_);
    if (frame.info.kind == FrameKind::Damaged) {
        ++damaged_;
        return;
    }
    count_in(by_address_[frame.info.address]);
    count_in(by_function_[frame.info.function]);
}

void TrafficCounts::add_unanswered(int address, int function) {
    ++all_.unanswered;
    ++by_address_[address].unanswered;
    ++by_function_[function].unanswered;
}

} // namespace pelvan
