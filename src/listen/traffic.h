// The frames of a line, both directions in one stream: cut out of what arrives, replies paired with
// their requests, and counted. Times are those of the lumps in which the bytes were delivered: two
// frames of one lump have no time between them.
#pragma once

#include <deque>

#include "listen/frame_splitter.h"
#include "listen/traffic_counts.h"

namespace pelvan {

/// What happened to a request.
enum class Answer { None /*no request, or a broadcast*/, Awaited, Came, Missing };

/// The values that a read asked for.
struct ItemRange {
    std::uint16_t first = 0;
    std::uint16_t count = 0;
};

struct ListenedFrame {
    std::size_t number = 0; // from 0, never given twice
    FrameInfo info;
    Answer answer = Answer::None;
    std::optional<ItemRange> asked; // of a reply to a read whose request was heard
    double start_ms = 0;            // since 1970, when the lump with the first byte came
    std::optional<double> gap_ms;   // from the start of the frame before
    std::optional<double> reply_ms; // of a reply, from the end of its request
    std::string bytes;
};

/// Frames that are kept; the oldest go first beyond either limit.
inline constexpr std::size_t kKeptFrames = 200000;
inline constexpr std::size_t kKeptBytes = std::size_t{32} << 20;

class Traffic {
  public:
    /// Begins a session: the first frame has no gap, no reply belongs to an earlier request.
    void start();
    /// Bytes that came together between two moments (ms since 1970).
    void hear(double start_ms, double end_ms, std::string_view bytes);
    /// Looks at the time: a frame that stays in pieces is none after a second of silence, a request
    /// is unanswered after ten.
    void settle(double now_ms);
    /// No more bytes will come.
    void finish();
    void clear();

    /// Another number whenever anything below is another.
    [[nodiscard]] unsigned long revision() const { return revision_; }
    /// In order; their numbers follow one another.
    [[nodiscard]] const std::deque<ListenedFrame>& frames() const { return frames_; }
    /// The number of the first frame that is kept, and that of the next one to come.
    [[nodiscard]] std::size_t first_number() const { return next_number_ - frames_.size(); }
    [[nodiscard]] std::size_t next_number() const { return next_number_; }
    /// `number` is one that is kept.
    [[nodiscard]] const ListenedFrame& frame(std::size_t number) const {
        return frames_[number - first_number()];
    }
    [[nodiscard]] const TrafficCounts& counts() const { return counts_; }

  private:
    struct Pending {
        std::string bytes; // empty while no request waits for its reply
        std::size_t number = 0;
        double end_ms = 0;
        std::uint64_t last_lump = 0;
    };

    void take_all(bool is_rest);
    void take(CutFrame&& cut);
    void take_reply(ListenedFrame& frame, const CutFrame& cut);
    [[nodiscard]] bool answers_pending(const CutFrame& cut) const;
    void close_pending(Answer answer);
    void keep(ListenedFrame&& frame);

    FrameSplitter splitter_;
    Pending pending_;
    std::optional<double> last_start_ms_;
    std::uint64_t last_first_lump_ = 0;

    unsigned long revision_ = 0;
    std::deque<ListenedFrame> frames_;
    std::size_t next_number_ = 0;
    std::size_t kept_bytes_ = 0;
    TrafficCounts counts_;
};

} // namespace pelvan
