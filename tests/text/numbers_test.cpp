#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>

#include "text/numbers.h"

namespace pelvan {
namespace {

TEST(Numbers, LeadingNumberTakesWhatATextBeginsWith) {
    const std::vector<std::pair<std::string, double>> cases{
        {"", 0},          {"none", 0},     {" 20", 20},         {"12abc", 12}, {"-.5x", -0.5},
        {"+7", 7},        {"1e3", 1000},   {"1e", 1},           {"- 5", 0},    {".", 0},
        {"3.25 7", 3.25}, {"0100 x", 100}, {"1e999", HUGE_VAL}, {"\t8", 8},    {"&HFF", 0}};
    for (const auto& [text, value] : cases)
        EXPECT_EQ(leading_number(text), value) << text;
    // What no number of the machine holds is nothing or without end, however it is written.
    const std::string zeros(400, '0');
    EXPECT_EQ(leading_number("0." + zeros + "1"), 0);
    EXPECT_EQ(leading_number("-1" + zeros + "e-5"), -HUGE_VAL);
    EXPECT_EQ(leading_number("." + zeros + "1E+2"), 0);
    EXPECT_EQ(leading_number("1e-99999999999"), 0);
    EXPECT_TRUE(is_numeric(" -12.5 "));
    for (const std::string text : {"", " ", "12x", "1 2", "--1", "End"})
        EXPECT_FALSE(is_numeric(text)) << text;
}

TEST(Numbers, PlainTextsHaveNoExponentAndNoNoise) {
    const std::vector<std::pair<double, std::string>> cases{{0, "0"},
                                                            {-0.0, "0"},
                                                            {72.5, "72.5"},
                                                            {0.5, "0.5"},
                                                            {-9999.9, "-9999.9"},
                                                            {0.1 + 0.2, "0.3"},
                                                            {1e15, "1000000000000000"},
                                                            {1e-7, "0.0000001"},
                                                            {-32768, "-32768"},
                                                            {4294967295.0, "4294967295"}};
    for (const auto& [value, text] : cases) {
        EXPECT_EQ(plain_number(value), text);
        EXPECT_EQ(signed_number(value), text[0] == '-' ? text : " " + text);
    }
    EXPECT_EQ(plain_number(DBL_MAX).substr(0, 4), "1797");
    EXPECT_EQ(plain_single(1234.56789), "1234.568");
    EXPECT_EQ(plain_single(1e10), "10000000000");
}

TEST(Numbers, RoundingAndHexadecimal) {
    for (const auto& [value, rounded] : std::vector<std::pair<double, double>>{
             {0.5, 0}, {1.5, 2}, {2.5, 2}, {-2.5, -2}, {2.4999, 2}, {-0.6, -1}})
        EXPECT_EQ(round_half_even(value), rounded) << value;
    EXPECT_EQ(hex_number("&h1f"), 31U);
    EXPECT_EQ(hex_number(" ffff "), 65535U);
    for (const std::string text : {"", "g", "1 2", "123456789", "0x"})
        EXPECT_FALSE(hex_number(text).has_value()) << text;
    EXPECT_EQ(hex_text(10, 4), "000A");
    EXPECT_EQ(whole_number("-7", -7, 7), -7);
    EXPECT_EQ(whole_number("0016", 1, 16), 16);
    for (const std::string text : {"", " 1", "1 ", "+1", "1.0", "17", "-1", "99999999999999999999"})
        EXPECT_FALSE(whole_number(text, 0, 16).has_value()) << text;
}

} // namespace
} // namespace pelvan
