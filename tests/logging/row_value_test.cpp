#include "logging/row_value.h"

#include <gtest/gtest.h>

#include "support/error_of.h"

namespace pelvan {
namespace {

using Pairs = std::vector<std::pair<std::string, std::string>>;

TEST(RowValue, ExceptionTextsBecomeNumbers) {
    const Pairs cases{
        {"Exception Error: 131 2", "-32002"},
        {"Exception Error: 131 11", "-32001"}, // one digit of the code is read
        {"Exception Error: ", "-65536"},       // too short to hold a number
        {"Error:", "-65536"},
    };
    for (const auto& [text, expected] : cases)
        EXPECT_EQ(exception_value(text), expected) << text;
}

TEST(RowValue, TwoWordsBecomeOne32BitNumber) {
    const Pairs cases{{"1 5", "65541"},
                      {"0 -1", "65535"},
                      {"1 -31072 ", "100000"},
                      {" 1 5", "65541"},
                      {"32767 -1", "2147483647"},
                      {"-32768 0", "-2147483648"},
                      {"-32002", "-32002"},
                      {"", ""},
                      {"NO NUMBER 1", "NO NUMBER 1"},
                      {"1 ", "1 "}};
    for (const auto& [text, expected] : cases)
        EXPECT_EQ(join_32_bit(text), expected) << "\"" << text << "\"";
    EXPECT_EQ(testing::error_of([] { static_cast<void>(join_32_bit("32768 0")); }), 6);
}

TEST(RowValue, DecimalPlacesScale) {
    const std::vector<std::tuple<std::string, double, std::string>> cases{
        {"725", 1, " 72.5"},
        {"-7", -4, "-70000"},
        {"5", 1, " 0.5"},
        {"", 3, ""},
        {"1", 5, " 0.00001"},
        {"no number", 1, "no number"}, // no 0 that would pass for a reading
        {" -.5 x", 1, "-0.05"},
        {"-", 0, "-"},
        {"2147483647", 0, " 2147483647"}};
    for (const auto& [text, decimals, expected] : cases)
        EXPECT_EQ(scaled_value(text, decimals), expected) << text;
    EXPECT_EQ(testing::error_of([] { static_cast<void>(scaled_value("1", -400)); }), 6);
}

} // namespace
} // namespace pelvan
