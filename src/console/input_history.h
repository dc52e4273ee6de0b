// Earlier entries of one protocol, walked through with the arrow keys.
#pragma once

#include <cstddef>
#include <optional>
#include <vector>

namespace pelvan {

template <class Entry> class InputHistory {
  public:
    static constexpr std::size_t kMaxEntries = 200;

    /// Remembers an entry that was sent; one that repeats the newest is not stored again.
    void remember(const Entry& entry) {
        if (entries_.empty() || !(entries_.back() == entry)) entries_.push_back(entry);
        if (entries_.size() > kMaxEntries) entries_.erase(entries_.begin());
        at_ = entries_.size();
        draft_.reset();
    }

    /// The entry before the one shown. `shown` is kept as the draft to come back to.
    std::optional<Entry> earlier(const Entry& shown) {
        if (at_ == entries_.size()) draft_ = shown;
        // What was just sent still stands in the fields: a first step that shows it again is no
        // step.
        if (at_ > 0 && at_ == entries_.size() && entries_.back() == shown) --at_;
        if (at_ == 0) return std::nullopt;
        return entries_[--at_];
    }

    /// The entry after the one shown, at last the draft.
    std::optional<Entry> later() {
        if (at_ >= entries_.size()) return std::nullopt;
        if (++at_ < entries_.size()) return entries_[at_];
        return draft_;
    }

  private:
    std::vector<Entry> entries_;
    std::size_t at_ = 0;
    std::optional<Entry> draft_;
};

} // namespace pelvan
