#include "listen/frame_selection.h"

#include <algorithm>

#include "text/numbers.h"
#include "text/strings.h"

namespace pelvan {
namespace {

constexpr long kMaxByte = 255;

} // namespace

std::optional<ByteFilter> byte_filter(std::string_view text) {
    if (trim(text).empty()) return ByteFilter().set();
    ByteFilter filter;
    for (const std::string& part : split(text, ',')) {
        const std::vector<std::string> ends = split(part, '-');
        if (ends.size() > 2) return std::nullopt;
        const auto first = whole_number(trim(ends.front()), 0, kMaxByte);
        const auto last = whole_number(trim(ends.back()), 0, kMaxByte);
        if (!first || !last || *last < *first) return std::nullopt;
        for (long number = *first; number <= *last; ++number)
            filter.set(static_cast<std::size_t>(number));
    }
    return filter;
}

bool FrameSelection::set_filter(const ByteFilter& addresses, const ByteFilter& functions) {
    if (addresses == addresses_ && functions == functions_) return false;
    addresses_ = addresses;
    functions_ = functions;
    // What a paused view has not seen stays unseen.
    const std::size_t end = paused_ ? seen_ : traffic_.next_number();
    numbers_.clear();
    for (seen_ = traffic_.first_number(); seen_ < end; ++seen_)
        if (passes(traffic_.frame(seen_))) numbers_.push_back(seen_);
    return true;
}

bool FrameSelection::passes(const ListenedFrame& frame) const {
    if (frame.info.kind == FrameKind::Damaged) return !filtered();
    return addresses_[static_cast<std::size_t>(frame.info.address)] &&
           functions_[static_cast<std::size_t>(frame.info.function)];
}

std::size_t FrameSelection::first_unseen() const {
    return std::max(seen_, traffic_.first_number());
}

std::size_t FrameSelection::behind() const {
    return traffic_.next_number() - first_unseen();
}

std::size_t FrameSelection::gone() const {
    const auto kept = std::lower_bound(numbers_.begin(), numbers_.end(), traffic_.first_number());
    return static_cast<std::size_t>(kept - numbers_.begin());
}

void FrameSelection::drop_gone() {
    numbers_.erase(numbers_.begin(), numbers_.begin() + static_cast<std::ptrdiff_t>(gone()));
}

std::size_t FrameSelection::fresh() const {
    if (paused_) return 0;
    std::size_t count = 0;
    for (std::size_t number = first_unseen(); number < traffic_.next_number(); ++number)
        if (passes(traffic_.frame(number))) ++count;
    return count;
}

void FrameSelection::take_new() {
    if (paused_) return;
    for (seen_ = first_unseen(); seen_ < traffic_.next_number(); ++seen_)
        if (passes(traffic_.frame(seen_))) numbers_.push_back(seen_);
}

const ListenedFrame* FrameSelection::row(std::size_t index) const {
    const std::size_t number = numbers_[index];
    return number < traffic_.first_number() ? nullptr : &traffic_.frame(number);
}

} // namespace pelvan
