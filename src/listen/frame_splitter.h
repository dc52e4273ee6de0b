// Puts Modbus RTU frames together again from what a line delivered in lumps of any size: bytes with
// their times in, frames out. Where a frame ends is told by the length that its first bytes promise
// and the check behind it, for pauses mean little once an adapter or a network has passed the bytes
// on. Both directions may be in the stream. Bytes of which no frame can be made come out as they
// are, and the search goes on behind the first of them; every byte comes out once, in order.
//
// No more than one frame of the largest size waits here once `next` has nothing to give, and every
// byte costs at most the check of two such frames, whatever the bytes are.
#pragma once

#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <string_view>

#include "listen/frame_kind.h"

namespace pelvan {

/// A frame, or (kind Damaged) bytes of which none could be made.
struct CutFrame {
    FrameInfo info;
    std::string bytes;
    double start_ms = 0; // of the lump that brought the first byte
    double end_ms = 0;   // of the lump that brought the last byte
    /// Numbers of these two lumps: what one lump brought cannot be told apart in time.
    std::uint64_t first_lump = 0;
    std::uint64_t last_lump = 0;
};

class FrameSplitter {
  public:
    /// Bytes that came together, between two moments.
    void add(double start_ms, double end_ms, std::string_view bytes);

    /// The next frame or noise; nothing until more bytes come. `pending` is the request that waits
    /// for its reply, empty when none does: it decides where the bytes could be either.
    [[nodiscard]] std::optional<CutFrame> next(std::string_view pending) {
        return cut(pending, false);
    }
    /// The same when no more bytes will come: nothing only when all are out.
    [[nodiscard]] std::optional<CutFrame> next_of_rest(std::string_view pending) {
        return cut(pending, true);
    }

    [[nodiscard]] bool empty() const { return head_ == stream_.size(); }
    /// End of the last lump, in ms; 0 before the first.
    [[nodiscard]] double last_ms() const { return last_end_ms_; }
    void clear();

  private:
    struct Lump {
        std::uint64_t number;
        std::uint64_t begin; // place in the stream of its first byte
        double start_ms;
        double end_ms;
        double pause_ms; // before it
    };
    /// What the bytes at `scan_` are.
    struct Reading {
        enum class State { None, NeedsMore, Frame };
        State state = State::None;
        std::size_t size = 0; // of the frame
    };

    [[nodiscard]] std::optional<CutFrame> cut(std::string_view pending, bool is_rest);
    [[nodiscard]] Reading read(std::string_view pending, bool is_rest) const;
    [[nodiscard]] Reading read_known(std::string_view view, std::string_view pending,
                                     bool give_up) const;
    [[nodiscard]] Reading read_by_pauses(std::string_view view, bool give_up) const;
    [[nodiscard]] bool noise_ends() const;
    [[nodiscard]] std::size_t lump_at(std::uint64_t place) const;
    CutFrame take(std::size_t size, std::string_view pending);
    void forget_taken();

    std::string stream_;
    std::uint64_t base_ = 0;  // place in the stream of `stream_`'s first byte
    std::size_t head_ = 0;    // first byte that is not out yet
    std::size_t scan_ = 0;    // from `head_` to here stand bytes that begin no frame
    bool after_frame_ = true; // a frame may begin at `head_`, for one has ended there
    std::deque<Lump> lumps_;  // from the one that holds `head_`
    std::uint64_t lump_count_ = 0;
    double last_end_ms_ = 0;
    std::uint64_t last_long_pause_ = 0; // place in the stream of the byte behind it
};

} // namespace pelvan
