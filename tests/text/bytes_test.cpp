#include "text/bytes.h"

#include <gtest/gtest.h>

namespace pelvan {
namespace {

TEST(Bytes, AreShownByTheRuleAskedFor) {
    const std::string bytes("A\0\r~\x7F\x80\xFF", 7);
    EXPECT_EQ(hex_bytes(bytes), "41 00 0D 7E 7F 80 FF");
    EXPECT_EQ(decimal_bytes(bytes), "65 0 13 126 127 128 255");
    EXPECT_EQ(ascii_in_brackets(bytes), "A<00><0D>~<7F><80><FF>");
    EXPECT_EQ(controls_in_brackets(bytes), "A<00><0D>~<7F>\x80\xFF");
    EXPECT_EQ(ascii_with_escapes(bytes), "A\\x00\\x0D~\\x7F\\x80\\xFF");
    EXPECT_EQ(hex_bytes("") + decimal_bytes("") + ascii_in_brackets(""), "");
}

} // namespace
} // namespace pelvan
