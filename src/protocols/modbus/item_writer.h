// Writes the items of a frame into the text of one of the three renderings. It knows how a number
// looks and what stands between two numbers; which items a frame has, and in what order, is the
// decoder's.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace pelvan {

enum class Rendering { kDecimal, kHexadecimal, kSmartDecimal };

class ItemWriter {
  public:
    /// Takes room once for the items of a frame of `frame_bytes` bytes and a closing remark.
    ItemWriter(Rendering rendering, std::size_t frame_bytes);

    void byte(std::uint8_t value);
    /// A field, 0 to 65535.
    void word(std::uint16_t value);
    /// A data word: -32768 to 32767 in the decimal renderings, the raw word in hexadecimal.
    void signed_word(std::uint16_t value);

    /// Items that are shown with the whole packet only: "SmartDec" leaves them out.
    void packet_byte(std::uint8_t value);
    void packet_word(std::uint16_t value);

    /// A remark right behind the last number, instead of its space.
    void remark(std::string_view text);

    /// The text. In "Decimal" and hexadecimal one space follows every item, the last one included;
    /// in "SmartDec" spaces stand between items only.
    [[nodiscard]] std::string take();

  private:
    void decimal(std::int32_t value);
    void hexadecimal(unsigned value, int digits);

    Rendering rendering_;
    std::string text_;
    std::size_t used_ = 0;
};

} // namespace pelvan
