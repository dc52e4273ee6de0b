#include "logging/row_value.h"

#include <gtest/gtest.h>

#include "support/error_of.h"

namespace pelvan {
namespace {

TEST(RowValue, ExceptionTextsBecomeNumbers) {
    const std::vector<std::pair<std::string, std::string>> cases{
        {"Exception Error: 131 2", "-32002"},
        {"Exception Error: 129 1", "-32513"},
        {"Exception Error: 131 11", "-32001"}, // one digit of the code is read
        {"Exception Error: ", "-65536"},       // too short to hold a number
        {"Error:", "-65536"},
    };
    for (const auto& [text, expected] : cases)
        EXPECT_EQ(exception_value(text), expected) << text;
}

TEST(RowValue, TwoWordsBecomeOne32BitNumber) {
    const std::vector<std::pair<std::string, std::string>> cases{
        {"1 5", "65541"},
        {"-1 -1", "-1"},
        {"0 -1", "65535"},
        {"1 -31072 ", "100000"},
        {" 1 5", "65541"},
        {"32767 -1", "2147483647"},
        {"-32768 0", "-2147483648"},
        {"-32002", "-32002"},
        {"", ""},
        {"1 ", "1 "},
    };
    for (const auto& [text, expected] : cases)
        EXPECT_EQ(join_32_bit(text), expected) << "\"" << text << "\"";
    EXPECT_EQ(testing::error_of([] { static_cast<void>(join_32_bit("32768 0")); }), 6);
}

TEST(RowValue, DecimalPlacesScale) {
    struct Case {
        std::string text;
        double decimals;
        std::string expected;
    };
    const std::vector<Case> cases{
        {"725", 1, " 72.5"},
        {"7", -2, " 700"},
        {"-7", -4, "-70000"},
        {"5", 1, " 0.5"},
        {"-99999", 1, "-9999.9"},
        {"100", 0, " 100"},
        {"", 3, ""},
        {"1", 5, " 0.00001"},
        {"no number", 1, " 0"},
        {"2147483647", 0, " 2147483647"},
    };
    for (const Case& each : cases)
        EXPECT_EQ(scaled_value(each.text, each.decimals), each.expected) << each.text;
    EXPECT_EQ(testing::error_of([] { static_cast<void>(scaled_value("1", -400)); }), 6);
}

} // namespace
} // namespace pelvan
