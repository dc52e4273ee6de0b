#include "listen/frame_splitter.h"

#include <algorithm>

#include "protocols/modbus/crc.h"
#include "protocols/modbus/frame_length.h"

namespace pelvan {
namespace {

constexpr std::size_t kMinFrame = 4;
/// No layout is longer than a count of 255 and the largest head.
constexpr std::size_t kMaxFrame = 268;
constexpr std::size_t kMaxNoise = 256;
/// Adapters hold bytes back for 16 ms, so this is a pause of the line.
constexpr double kNoisePauseMs = 50;
/// Between frames whose length is not known. Several of them may lie in one frame.
constexpr double kFramePauseMs = 5;
/// A frame that is not whole after such a pause will not be. Whole it is one all the same: a window
/// that was busy may have read its second half late.
constexpr double kPatienceMs = 250;

constexpr std::size_t kReadRequest = 8;
constexpr std::size_t kReadReplyHead = 5; // address, function, count and CRC

unsigned byte_at(std::string_view bytes, std::size_t at) {
    return static_cast<unsigned char>(bytes[at]);
}

unsigned word_at(std::string_view bytes, std::size_t at) {
    return byte_at(bytes, at) << 8U | byte_at(bytes, at + 1);
}

/// Whether the bytes begin as the reply to a read that waits: its address and function, and as many
/// values as were asked for.
bool is_due(const ExpectedLength& reply, std::string_view view, std::string_view pending) {
    if (!reply.known() || pending.size() != kReadRequest) return false;
    if (view.substr(0, 2) != pending.substr(0, 2)) return false;
    const unsigned function = byte_at(view, 1);
    const std::size_t count = word_at(pending, 4);
    if (function == 1 || function == 2) return reply.bytes == kReadReplyHead + (count + 7) / 8;
    if (function == 3 || function == 4) return reply.bytes == kReadReplyHead + 2 * count;
    return false;
}

/// Whether the bytes begin as a request that writes several values and agrees with itself: packed
/// coils, or a word a value.
bool is_whole_write(std::string_view view) {
    const unsigned function = view.size() > 6 ? byte_at(view, 1) : 0;
    if (function != 15 && function != 16) return false;
    const unsigned count = word_at(view, 4);
    const unsigned bytes = byte_at(view, 6);
    return bytes > 0 && (bytes == 2 * count || (function == 15 && bytes == (count + 7) / 8));
}

} // namespace

void FrameSplitter::add(double start_ms, double end_ms, std::string_view bytes) {
    if (bytes.empty()) return;
    const double pause = lump_count_ == 0 ? kPatienceMs : start_ms - last_end_ms_;
    const std::uint64_t place = base_ + stream_.size();
    lumps_.push_back({lump_count_++, place, start_ms, end_ms, pause});
    last_end_ms_ = end_ms;
    if (pause >= kPatienceMs) last_long_pause_ = place;
    stream_ += bytes;
}

void FrameSplitter::clear() {
    *this = FrameSplitter();
}

std::optional<CutFrame> FrameSplitter::cut(std::string_view pending, bool is_rest) {
    for (; scan_ < stream_.size(); ++scan_) {
        if (noise_ends()) return take(scan_ - head_, pending);
        const Reading reading = read(pending, is_rest);
        if (reading.state == Reading::State::NeedsMore) return std::nullopt;
        if (reading.state == Reading::State::None) continue;
        return take(scan_ > head_ ? scan_ - head_ : reading.size, pending);
    }
    if (is_rest && !empty()) return take(scan_ - head_, pending);
    return std::nullopt;
}

FrameSplitter::Reading FrameSplitter::read(std::string_view pending, bool is_rest) const {
    const std::string_view view = std::string_view(stream_).substr(scan_, kMaxFrame);
    Reading reading = read_known(view, pending, is_rest);
    if (reading.state != Reading::State::NeedsMore) return reading;
    // What needs more bytes reaches to the end of all that came.
    if (!is_rest && last_long_pause_ <= base_ + scan_) return reading;
    reading = read_known(view, pending, true);
    return reading.state == Reading::State::NeedsMore ? Reading() : reading;
}

/// Both directions are tried. One that what stands before or behind speaks for is waited for, so
/// that the other is not taken for a check that fits by chance.
FrameSplitter::Reading FrameSplitter::read_known(std::string_view view, std::string_view pending,
                                                 bool give_up) const {
    using State = Reading::State;
    const ExpectedLength request = expected_request_length(view);
    const ExpectedLength reply = expected_reply_length(view);
    if (request.state == ExpectedLength::State::Unknown && reply.state == request.state)
        return read_by_pauses(view, give_up);
    const auto read_as = [view](const ExpectedLength& expected) -> Reading {
        if (expected.state == ExpectedLength::State::Unknown) return {};
        if (!expected.known() || view.size() < expected.bytes) return {State::NeedsMore, 0};
        if (!has_valid_crc(view.substr(0, expected.bytes))) return {};
        return {State::Frame, expected.bytes};
    };
    const Reading as_request = read_as(request);
    const Reading as_reply = read_as(reply);
    const bool due = is_due(reply, view, pending);
    if (due && as_reply.state == State::Frame) return as_reply;
    if (due && view.substr(0, pending.size()) == pending) return {State::Frame, pending.size()};
    const bool waits = (due && as_reply.state == State::NeedsMore) ||
                       (!due && is_whole_write(view) && as_request.state == State::NeedsMore);
    if (waits && !give_up) return {State::NeedsMore, 0};
    if (as_request.state == State::Frame) return as_request;
    if (as_reply.state == State::Frame) return as_reply;
    const bool needs_more =
        as_request.state == State::NeedsMore || as_reply.state == State::NeedsMore;
    return {needs_more ? State::NeedsMore : State::None, 0};
}

/// A function that does not say its length begins where the line paused or a frame ended, and ends
/// with the first pause before which the check fits.
FrameSplitter::Reading FrameSplitter::read_by_pauses(std::string_view view, bool give_up) const {
    using State = Reading::State;
    const std::uint64_t place = base_ + scan_;
    std::size_t lump = lump_at(place);
    const bool behind_pause = lumps_[lump].begin == place && lumps_[lump].pause_ms >= kFramePauseMs;
    if (!behind_pause && !(scan_ == head_ && after_frame_)) return {};
    std::uint16_t crc = kModbusCrcStart;
    for (std::size_t at = 0; ++lump < lumps_.size();) {
        const std::uint64_t end = lumps_[lump].begin - place;
        if (end > view.size()) return {};
        crc = modbus_crc(view.substr(at, end - at), crc);
        at = end;
        const double pause = lumps_[lump].pause_ms;
        if (crc == 0 && at >= kMinFrame && pause >= kFramePauseMs) return {State::Frame, at};
        if (pause >= kNoisePauseMs) return {};
    }
    if (stream_.size() - scan_ > view.size()) return {};
    if (!give_up) return {State::NeedsMore, 0};
    if (view.size() < kMinFrame || !has_valid_crc(view)) return {};
    return {State::Frame, view.size()};
}

/// Noise that is long enough, or behind which the line paused, is one piece.
bool FrameSplitter::noise_ends() const {
    if (scan_ == head_) return false;
    if (scan_ - head_ >= kMaxNoise) return true;
    const Lump& lump = lumps_[lump_at(base_ + scan_)];
    return lump.begin == base_ + scan_ && lump.pause_ms >= kNoisePauseMs;
}

std::size_t FrameSplitter::lump_at(std::uint64_t place) const {
    const auto behind =
        std::upper_bound(lumps_.begin(), lumps_.end(), place,
                         [](std::uint64_t at, const Lump& lump) { return at < lump.begin; });
    return static_cast<std::size_t>(behind - lumps_.begin()) - 1;
}

CutFrame FrameSplitter::take(std::size_t size, std::string_view pending) {
    CutFrame cut;
    cut.bytes = stream_.substr(head_, size);
    const bool is_frame = scan_ == head_;
    if (is_frame) cut.info = classify_frame(cut.bytes, pending);
    const Lump& first = lumps_[lump_at(base_ + head_)];
    const Lump& last = lumps_[lump_at(base_ + head_ + size - 1)];
    cut.start_ms = first.start_ms;
    cut.end_ms = last.end_ms;
    cut.first_lump = first.number;
    cut.last_lump = last.number;
    head_ += size;
    scan_ = head_;
    after_frame_ = is_frame;
    forget_taken();
    return cut;
}

void FrameSplitter::forget_taken() {
    while (lumps_.size() > 1 && lumps_[1].begin <= base_ + head_)
        lumps_.pop_front();
    // Moved up when half of it is out, so that every byte is moved about once.
    if (head_ < stream_.size() - head_) return;
    stream_.erase(0, head_);
    base_ += head_;
    head_ = scan_ = 0;
}

} // namespace pelvan
