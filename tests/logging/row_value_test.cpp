#include "logging/row_value.h"

#include <gtest/gtest.h>

#include "support/cases.h"
#include "support/error_of.h"

namespace pelvan {
namespace {

using testing::cases;
using testing::error_of;

TEST(RowValue, ExceptionsAndPairsOfWordsBecomeNumbers) {
    // One digit of an exception's code is read. The last two are too short to hold a number.
    for (const auto& [text, number] :
         cases("Exception Error: 131 2->-32002|Exception Error: 131 11->-32001|"
               "Exception Error: ->-65536|Error:->-65536"))
        EXPECT_EQ(exception_value(text), number) << text;
    for (const auto& [text, number] :
         cases("1 5->65541| 1 5->65541|0 -1->65535|1 -31072 ->100000|32767 -1->2147483647|"
               "-32768 0->-2147483648|-32002->-32002|->|NO NUMBER 1->NO NUMBER 1|1 ->1 "))
        EXPECT_EQ(join_32_bit(text), number) << "\"" << text << "\"";
    EXPECT_EQ(error_of(join_32_bit, "32768 0"), 6);
}

TEST(RowValue, DecimalPlacesScale) {
    const std::pair<double, const char*> tables[] = {
        {0, "->|-->-|2147483647-> 2147483647"},
        // No 0 that would pass for a reading.
        {1, "725-> 72.5|5-> 0.5| -.5 x->-0.05|no number->no number"},
        {5, "1-> 0.00001"},
        {-4, "-7->-70000"},
    };
    for (const auto& [decimals, table] : tables)
        for (const auto& [text, scaled] : cases(table))
            EXPECT_EQ(scaled_value(text, decimals), scaled) << text;
    EXPECT_EQ(error_of(scaled_value, "1", -400), 6);
}

} // namespace
} // namespace pelvan
