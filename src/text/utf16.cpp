#include "text/utf16.h"

#include <cstdint>

namespace pelvan {
namespace {

constexpr char16_t kMark = 0xFEFF;
constexpr char32_t kFirstPair = 0x10000;
constexpr char32_t kMaxCode = 0x10FFFF;
constexpr char16_t kFirstHigh = 0xD800;
constexpr char16_t kFirstLow = 0xDC00;
constexpr char16_t kSurrogateMask = 0xFC00;

char16_t unit_at(std::string_view bytes, std::size_t at, ByteOrder order) {
    const auto first = static_cast<std::uint8_t>(bytes[at]);
    const auto second = static_cast<std::uint8_t>(bytes[at + 1]);
    return static_cast<char16_t>(order == ByteOrder::BigEndian ? first << 8 | second
                                                               : second << 8 | first);
}

void append_unit(std::string& out, char16_t unit, ByteOrder order) {
    const char high = static_cast<char>(unit >> 8);
    const char low = static_cast<char>(unit & 0xFF);
    out += order == ByteOrder::BigEndian ? high : low;
    out += order == ByteOrder::BigEndian ? low : high;
}

void append_utf8(std::string& out, char32_t code) {
    const auto tail = [&](int shift) { out += static_cast<char>(0x80 | (code >> shift & 0x3F)); };
    if (code < 0x80) {
        out += static_cast<char>(code);
    } else if (code < 0x800) {
        out += static_cast<char>(0xC0 | code >> 6);
        tail(0);
    } else if (code < kFirstPair) {
        out += static_cast<char>(0xE0 | code >> 12);
        tail(6);
        tail(0);
    } else {
        out += static_cast<char>(0xF0 | code >> 18);
        tail(12);
        tail(6);
        tail(0);
    }
}

/// Takes one character off the text.
char32_t take_utf8(std::string_view& text) {
    const auto byte = [&](std::size_t at) { return static_cast<std::uint8_t>(text[at]); };
    const std::uint8_t lead = byte(0);
    const std::size_t length = lead >= 0xF0 && lead < 0xF5   ? 4
                               : lead >= 0xE0 && lead < 0xF0 ? 3
                               : lead >= 0xC2 && lead < 0xE0 ? 2
                                                             : 1;
    char32_t code = length == 1 ? lead : static_cast<char32_t>(lead & (0xFF >> (length + 1)));
    for (std::size_t at = 1; at < length; ++at) {
        if (at >= text.size() || (byte(at) & 0xC0) != 0x80) {
            text.remove_prefix(1);
            return lead;
        }
        code = code << 6 | (byte(at) & 0x3F);
    }
    const bool known = code <= kMaxCode;
    text.remove_prefix(known ? length : 1);
    return known ? code : lead;
}

} // namespace

std::optional<ByteOrder> utf16_order(std::string_view bytes) {
    if (bytes.size() < 2 || bytes.size() % 2 != 0) return {};
    for (const ByteOrder order : {ByteOrder::LittleEndian, ByteOrder::BigEndian})
        if (unit_at(bytes, 0, order) == kMark) return order;
    return {};
}

std::string from_utf16(std::string_view bytes, ByteOrder order) {
    std::string out;
    for (std::size_t at = 2; at + 2 <= bytes.size(); at += 2) {
        char32_t code = unit_at(bytes, at, order);
        if ((code & kSurrogateMask) == kFirstHigh && at + 4 <= bytes.size()) {
            const char16_t low = unit_at(bytes, at + 2, order);
            if ((low & kSurrogateMask) == kFirstLow) {
                code = kFirstPair + ((code - kFirstHigh) << 10) + (low - kFirstLow);
                at += 2;
            }
        }
        append_utf8(out, code);
    }
    return out;
}

std::string to_utf16(std::string_view text, ByteOrder order) {
    std::string out;
    append_unit(out, kMark, order);
    while (!text.empty()) {
        const char32_t code = take_utf8(text);
        if (code < kFirstPair) {
            append_unit(out, static_cast<char16_t>(code), order);
        } else {
            append_unit(out, static_cast<char16_t>(kFirstHigh + ((code - kFirstPair) >> 10)),
                        order);
            append_unit(out, static_cast<char16_t>(kFirstLow + ((code - kFirstPair) & 0x3FF)),
                        order);
        }
    }
    return out;
}

} // namespace pelvan
