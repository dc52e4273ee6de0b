#include "protocols/modbus/item_writer.h"

#include <charconv>
#include <utility>

namespace pelvan {
namespace {

/// The widest items are "255 " for one byte and "-32768 " for two.
constexpr std::size_t kRoomForByte = 4;
constexpr std::size_t kRoomForRemark = 16;

} // namespace

ItemWriter::ItemWriter(Rendering rendering, std::size_t frame_bytes)
    : rendering_(rendering), text_(frame_bytes * kRoomForByte + kRoomForRemark, ' ') {}

void ItemWriter::byte(std::uint8_t value) {
    if (rendering_ == Rendering::kHexadecimal)
        hexadecimal(value, 2);
    else
        decimal(value);
}

void ItemWriter::word(std::uint16_t value) {
    if (rendering_ == Rendering::kHexadecimal)
        hexadecimal(value, 4);
    else
        decimal(value);
}

void ItemWriter::signed_word(std::uint16_t value) {
    if (rendering_ == Rendering::kHexadecimal)
        hexadecimal(value, 4);
    else
        decimal(static_cast<std::int16_t>(value));
}

void ItemWriter::packet_byte(std::uint8_t value) {
    if (rendering_ != Rendering::kSmartDecimal) byte(value);
}

void ItemWriter::packet_word(std::uint16_t value) {
    if (rendering_ != Rendering::kSmartDecimal) word(value);
}

void ItemWriter::remark(std::string_view text) {
    if (used_ > 0) --used_;
    text_.replace(used_, std::string::npos, text);
    used_ = text_.size();
}

std::string ItemWriter::take() {
    if (rendering_ == Rendering::kSmartDecimal && used_ > 0) --used_;
    text_.resize(used_);
    return std::move(text_);
}

// The text holds spaces from the start, so that stepping over one character writes the space.
void ItemWriter::decimal(std::int32_t value) {
    const auto end = std::to_chars(text_.data() + used_, text_.data() + text_.size(), value);
    used_ = static_cast<std::size_t>(end.ptr - text_.data()) + 1;
}

void ItemWriter::hexadecimal(unsigned value, int digits) {
    for (int shift = 4 * (digits - 1); shift >= 0; shift -= 4)
        text_[used_++] = "0123456789ABCDEF"[(value >> shift) & 0xFU];
    ++used_;
}

} // namespace pelvan
