// Texts that an editor saved as UTF-16: told by their byte-order mark.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace pelvan {

enum class ByteOrder { LittleEndian, BigEndian };

/// The byte order that the mark at the beginning tells; nothing without one, or when the number of
/// bytes is odd.
[[nodiscard]] std::optional<ByteOrder> utf16_order(std::string_view bytes);

/// UTF-8 without the mark. Half a surrogate pair becomes three bytes, which `to_utf16` turns back.
[[nodiscard]] std::string from_utf16(std::string_view bytes, ByteOrder order);

/// UTF-16 with a mark. A byte that belongs to no UTF-8 sequence becomes the character of its
/// number.
[[nodiscard]] std::string to_utf16(std::string_view text, ByteOrder order);

} // namespace pelvan
