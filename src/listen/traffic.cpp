#include "listen/traffic.h"

#include <algorithm>

#include "listen/burst.h"
#include "protocols/modbus/function_codes.h"
#include "protocols/modbus/modbus.h"

namespace pelvan {
namespace {

/// Longer than a busy window leaves bytes unread: what is whole then is shown as whole.
constexpr double kSettleMs = 1000;

int byte_at(std::string_view bytes, std::size_t at) {
    return static_cast<unsigned char>(bytes[at]);
}

ItemRange asked_by(std::string_view request) {
    const auto word = [request](std::size_t at) {
        return static_cast<std::uint16_t>(byte_at(request, at) << 8 | byte_at(request, at + 1));
    };
    return {word(2), word(4)};
}

} // namespace

void Traffic::start() {
    finish();
    last_start_ms_.reset();
    pending_ = {};
}

void Traffic::hear(double start_ms, double end_ms, std::string_view bytes) {
    splitter_.add(start_ms, end_ms, bytes);
    take_all(false);
}

void Traffic::settle(double now_ms) {
    if (!splitter_.empty() && now_ms - splitter_.last_ms() >= kSettleMs) take_all(true);
    if (!pending_.bytes.empty() && now_ms - pending_.end_ms > kMaxReplyMs)
        close_pending(Answer::Missing);
}

void Traffic::finish() {
    take_all(true);
}

void Traffic::take_all(bool is_rest) {
    const auto next = [this, is_rest] {
        return is_rest ? splitter_.next_of_rest(pending_.bytes) : splitter_.next(pending_.bytes);
    };
    for (auto cut = next(); cut; cut = next())
        take(std::move(*cut));
}

void Traffic::take(CutFrame&& cut) {
    if (!pending_.bytes.empty() && cut.start_ms - pending_.end_ms > kMaxReplyMs)
        close_pending(Answer::Missing);
    ListenedFrame frame;
    frame.number = next_number_;
    frame.info = cut.info;
    frame.start_ms = cut.start_ms;
    if (last_start_ms_ && last_first_lump_ != cut.first_lump)
        frame.gap_ms = cut.start_ms - *last_start_ms_;
    last_start_ms_ = cut.start_ms;
    last_first_lump_ = cut.first_lump;
    if (is_reply(cut.info.kind)) take_reply(frame, cut);
    if (cut.info.kind == FrameKind::Request) {
        close_pending(Answer::Missing);
        if (cut.info.address != kBroadcastAddress) {
            frame.answer = Answer::Awaited;
            pending_ = {cut.bytes, frame.number, cut.end_ms, cut.last_lump};
        }
    }
    counts_.add({frame.info, frame.gap_ms, frame.reply_ms});
    frame.bytes = std::move(cut.bytes);
    keep(std::move(frame));
}

/// What answers another request than the one that waits, a late one say, leaves that one waiting.
void Traffic::take_reply(ListenedFrame& frame, const CutFrame& cut) {
    if (!answers_pending(cut)) return;
    if (cut.first_lump != pending_.last_lump)
        frame.reply_ms = std::max(cut.start_ms - pending_.end_ms, 0.0);
    if (is_read(pending_.bytes)) frame.asked = asked_by(pending_.bytes);
    close_pending(Answer::Came);
}

bool Traffic::answers_pending(const CutFrame& cut) const {
    const std::string& request = pending_.bytes;
    if (request.empty() || byte_at(request, 0) != cut.info.address ||
        byte_at(request, 1) != cut.info.function)
        return false;
    return cut.info.kind == FrameKind::ExceptionReply || !is_known_function(cut.info.function) ||
           can_answer(request, cut.bytes);
}

void Traffic::close_pending(Answer answer) {
    if (pending_.bytes.empty()) return;
    if (answer == Answer::Missing)
        counts_.add_unanswered(byte_at(pending_.bytes, 0), byte_at(pending_.bytes, 1));
    if (pending_.number >= first_number() && pending_.number < next_number_)
        frames_[pending_.number - first_number()].answer = answer;
    pending_ = {};
    ++revision_;
}

void Traffic::keep(ListenedFrame&& frame) {
    kept_bytes_ += frame.bytes.size();
    frames_.push_back(std::move(frame));
    ++next_number_;
    ++revision_;
    while (frames_.size() > kKeptFrames || (kept_bytes_ > kKeptBytes && frames_.size() > 1)) {
        kept_bytes_ -= frames_.front().bytes.size();
        frames_.pop_front();
    }
}

/// A request that waits is forgotten with its frame; bytes of a frame that is still in pieces stay.
void Traffic::clear() {
    frames_.clear();
    kept_bytes_ = 0;
    pending_ = {};
    counts_ = {};
    ++revision_;
}

} // namespace pelvan
