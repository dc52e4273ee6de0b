#include "registers/read_ahead.h"

#include <algorithm>
#include <utility>

namespace pelvan {
namespace {

constexpr ReadRange kNoRange{0, 0, 0, 0};
/// No request holds the line, and with it whoever waits, for much longer.
constexpr float kLongestMs = 500;
constexpr float kWordBytes = 2;
/// Codes of what will be refused again.
constexpr int kLastLasting = 3;
constexpr int kTooMany = 3;
/// Where a number of registers that is refused is no longer to blame for it.
constexpr int kHardlyMany = 16;
/// How many requests without an answer are remembered: on a bad line reads must not become short.
constexpr std::size_t kUnanswered = 8;
/// Answers that come later are not told from others anywhere.
constexpr double kLatestMs = 10'000;

int exception_code(const std::string& reply) {
    return static_cast<unsigned char>(reply.at(2));
}

std::string line_text(const SerialState& state) {
    const auto channel = static_cast<std::size_t>(kModbusChannel);
    if (channel >= state.gCommDevice.size()) return {};
    const SerialPort& port = *state.gCommDevice[channel];
    return std::to_string(port.CommPort()) + " " + port.Settings();
}

} // namespace

void ReadAhead::begin() {
    held_ = last_ = kNoRange;
    failed_ = {};
}

/// More than a character takes; 0 on quick lines.
float ReadAhead::settle_ms() const {
    return static_cast<float>(link_.channels().state().gCharTime[kModbusChannel]);
}

int ReadAhead::count_for(const ReadRange& range) const {
    ReadRange wanted = range;
    if (settle_ms() > 0)
        wanted.count =
            std::min(wanted.count, static_cast<int>(kLongestMs / (kWordBytes * settle_ms())));
    int count = memory_.together(wanted);
    // A reply that comes twice must not pass for that to the next request.
    const bool other = last_.address == range.address && last_.function == range.function &&
                       last_.first != range.first;
    const double now = link_.tick().precise_ms();
    const auto may_come_late = [&](int number) {
        if (other && number == last_.count) return true;
        return std::any_of(unanswered_.begin(), unanswered_.end(), [&](const Unanswered& each) {
            return each.count == number && now < each.until_ms;
        });
    };
    while (count > 1 && may_come_late(count))
        --count;
    return count;
}

void ReadAhead::remember_unanswered(int count) {
    unanswered_.push_back({count, link_.tick().precise_ms() + kLatestMs});
    if (unanswered_.size() > kUnanswered) unanswered_.pop_front();
}

/// The registers of a range that failed, until somebody begins at a lower one again.
bool ReadAhead::is_left_to_single_reads(const ReadRange& one) {
    if (!failed_.range.contains(one) || one.first < failed_.reached) failed_ = {};
    failed_.reached = one.first;
    return failed_.range.count > 0;
}

void ReadAhead::fetch(const std::string& single, int count, const Exchange& exchange) {
    const auto one = read_range(single);
    if (!one || one->count != 1 || holds(single)) return;
    held_ = kNoRange;
    memory_.use_line(line_text(link_.channels().state()));
    while (held_.count == 0 && !is_left_to_single_reads(*one)) {
        ReadRange range = *one;
        range.count = count;
        range.count = count_for(range);
        if (range.count < 2) return;
        last_ = range;
        const float more_ms = kWordBytes * static_cast<float>(range.count) * settle_ms();
        take_in(range, exchange(read_request(range), more_ms));
    }
}

void ReadAhead::take_in(const ReadRange& range, const std::string& reply) {
    constexpr std::size_t kReplyOverhead = 5;
    late_bytes_ = reply.empty() ? kReplyOverhead + 2 * static_cast<std::size_t>(range.count) : 0;
    if (!reply.empty() && !is_exception(reply)) {
        memory_.answered(range);
        held_ = range;
        next_ = range.first;
        reply_ = reply;
        return;
    }
    if (reply.empty()) remember_unanswered(range.count);
    const int code = reply.empty() ? 0 : exception_code(reply);
    if (code == kTooMany && range.count > kHardlyMany) return memory_.too_many(range);
    failed_ = {};
    failed_.range = range;
    failed_.refused = code > 0 && code <= kLastLasting;
    failed_.reached = failed_.answered_to = range.first;
}

bool ReadAhead::came_late(std::size_t bytes) {
    const bool came = late_bytes_ > 0 && bytes > late_bytes_;
    if (bytes > 0) late_bytes_ = 0;
    return came;
}

bool ReadAhead::holds(const std::string& single) const {
    const auto one = read_range(single);
    return one && one->count == 1 && one->first >= next_ && held_.contains(*one);
}

std::optional<std::string> ReadAhead::take(const std::string& single) {
    const auto one = read_range(single);
    if (!one || !holds(single)) {
        held_ = kNoRange;
        return std::nullopt;
    }
    next_ = one->end(); // whoever asks again wants to know how it is now
    return reply_to_one(*one, held_, reply_);
}

void ReadAhead::sent(const std::string& request, const std::string& reply) {
    held_ = last_ = kNoRange;
    if (const auto one = read_range(request); one && one->count == 1) learn(*one, reply);
}

void ReadAhead::learn(const ReadRange& one, const std::string& reply) {
    memory_.heard(one, !reply.empty());
    if (reply.empty()) return;
    const bool of_failed = failed_.range.contains(one);
    if (is_exception(reply)) {
        if (of_failed || exception_code(reply) <= kLastLasting) memory_.refused(one);
        failed_.judged = failed_.judged || of_failed;
        return;
    }
    if (!of_failed || failed_.judged) return;
    if (one.first == failed_.answered_to) ++failed_.answered_to;
    // A range is refused for one of its registers, or, when all of them are answered, its length.
    if (failed_.refused && failed_.answered_to < failed_.range.end()) return;
    failed_.refused ? memory_.too_many(failed_.range) : memory_.failed(failed_.range);
    failed_.judged = true;
}

} // namespace pelvan
