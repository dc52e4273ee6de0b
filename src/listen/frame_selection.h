// Which of the frames a view shows: those of some addresses and functions, up to the moment at
// which it was paused. It keeps the numbers of the frames and is brought up to date in steps, so
// that a view of a busy line is told what came and what went and reads nothing twice.
#pragma once

#include <bitset>
#include <deque>
#include <optional>
#include <string>
#include <string_view>

#include "listen/traffic.h"

namespace pelvan {

/// Numbers 0 to 255 that may pass.
using ByteFilter = std::bitset<256>;

/// "1, 3-5" as a filter; an empty text lets every number pass. Nothing for a text that is none.
[[nodiscard]] std::optional<ByteFilter> byte_filter(std::string_view text);

class FrameSelection {
  public:
    /// `traffic` is borrowed.
    explicit FrameSelection(const Traffic& traffic) : traffic_(traffic) {}

    /// Both must let a frame pass. Noise has neither address nor function: it is shown while every
    /// number passes. Begins anew; true when the filter is another.
    bool set_filter(const ByteFilter& addresses, const ByteFilter& functions);
    [[nodiscard]] bool filtered() const { return !addresses_.all() || !functions_.all(); }

    /// A paused view shows no frame that comes later.
    void set_paused(bool paused) { paused_ = paused; }
    [[nodiscard]] bool paused() const { return paused_; }
    /// Frames that came since it was brought up to date last and are not shown yet.
    [[nodiscard]] std::size_t behind() const;

    /// How many of the oldest rows are no longer kept. They go with `drop_gone`.
    [[nodiscard]] std::size_t gone() const;
    void drop_gone();
    /// How many rows would come in; they come with `take_new`. None while paused.
    [[nodiscard]] std::size_t fresh() const;
    void take_new();

    [[nodiscard]] std::size_t size() const { return numbers_.size(); }
    /// The frame of a row below `size`; null when it went since.
    [[nodiscard]] const ListenedFrame* row(std::size_t index) const;

  private:
    [[nodiscard]] bool passes(const ListenedFrame& frame) const;
    [[nodiscard]] std::size_t first_unseen() const;

    const Traffic& traffic_;
    ByteFilter addresses_ = ByteFilter().set();
    ByteFilter functions_ = ByteFilter().set();
    bool paused_ = false;
    std::deque<std::size_t> numbers_;
    std::size_t seen_ = 0; // number of the first frame that was not looked at
};

} // namespace pelvan
