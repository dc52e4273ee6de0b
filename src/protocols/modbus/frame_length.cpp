#include "protocols/modbus/frame_length.h"

#include <cstdint>

namespace pelvan {
namespace {

constexpr std::size_t kHead = 2; // address and function
constexpr unsigned kExceptionBit = 0x80;
constexpr std::size_t kExceptionSize = 5;
/// Counts of one byte end here, and so do the frames that RTU allows: a count of two bytes that
/// says more is none.
constexpr std::size_t kMaxCounted = 255;

/// A frame has `fixed` bytes and those that a count in it tells of.
struct Layout {
    std::uint8_t fixed = 0; // address, function and CRC included; 0 for a layout that is not known
    std::uint8_t count_at = 0; // 0 when nothing is counted
    std::uint8_t count_width = 1;
};

Layout request_layout(unsigned function) {
    switch (function) {
    case 1:
    case 2:
    case 3:
    case 4:
    case 5:
    case 6:
    case 8:
        return {8};
    case 7:
    case 11:
    case 12:
    case 17:
        return {4};
    case 15:
    case 16:
        return {9, 6};
    case 20:
    case 21:
        return {5, 2};
    case 22:
        return {10};
    case 23:
        return {13, 10};
    case 24:
        return {6};
    default:
        return {};
    }
}

Layout reply_layout(unsigned function) {
    if ((function & kExceptionBit) != 0) return {kExceptionSize};
    switch (function) {
    case 1:
    case 2:
    case 3:
    case 4:
    case 12:
    case 17:
    case 20:
    case 21:
    case 23:
        return {5, 2};
    case 5:
    case 6:
    case 8:
    case 11:
    case 15:
    case 16:
        return {8};
    case 7:
        return {5};
    case 22:
        return {10};
    case 24:
        return {6, 2, 2};
    default:
        return {};
    }
}

unsigned byte_at(std::string_view bytes, std::size_t at) {
    return static_cast<unsigned char>(bytes[at]);
}

ExpectedLength expected(std::string_view begin, Layout (*layout_of)(unsigned function)) {
    using State = ExpectedLength::State;
    if (begin.size() < kHead) return {State::NeedsMore, kHead};
    const Layout layout = layout_of(byte_at(begin, 1));
    if (layout.fixed == 0) return {State::Unknown, 0};
    if (layout.count_at == 0) return {State::Known, layout.fixed};
    const std::size_t behind_count = std::size_t{layout.count_at} + layout.count_width;
    if (begin.size() < behind_count) return {State::NeedsMore, behind_count};
    std::size_t counted = 0;
    for (std::size_t at = layout.count_at; at < behind_count; ++at)
        counted = counted << 8U | byte_at(begin, at);
    if (counted > kMaxCounted) return {State::Unknown, 0};
    return {State::Known, layout.fixed + counted};
}

} // namespace

ExpectedLength expected_request_length(std::string_view begin) {
    return expected(begin, request_layout);
}

ExpectedLength expected_reply_length(std::string_view begin) {
    return expected(begin, reply_layout);
}

} // namespace pelvan
