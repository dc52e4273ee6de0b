#include <gtest/gtest.h>

#include "platform/run_time_error.h"
#include "protocols/modbus/bytes.h"

namespace pelvan {
namespace {

using testing::bytes;

TEST(ModbusCrc, KnownAnswers) {
    struct Case {
        std::string frame;
        int low;
        int high;
    };
    const Case cases[] = {
        // "MODBUS over Serial Line", appendix on CRC generation.
        {bytes({0x02, 0x07}), 0x41, 0x12},
        // Check value of CRC-16/MODBUS.
        {"123456789", 0x37, 0x4B},
        {bytes({1, 3, 0, 0, 0, 1}), 0x84, 0x0A},
        // Sent by mbpoll on libmodbus 3.1.6, captured on a pseudo-terminal.
        {bytes({1, 3, 0, 0x62, 0, 4}), 0xE5, 0xD7},
        {bytes({1, 16, 0, 0x32, 0, 2, 4, 2, 0x8F, 0, 5}), 0x81, 0x32},
        // The answer of a libmodbus slave to the first of the two.
        {bytes({1, 3, 8, 3, 0xD4, 3, 0xDE, 0xFC, 0x18, 0xFC, 0x0E}), 0x99, 0x7C},
        {"", 0xFF, 0xFF},
    };
    ModbusState state;
    for (const Case& c : cases) {
        Modbus(state).ModbusCrc(c.frame);
        EXPECT_EQ(state.gCrcLow, c.low) << c.frame.size();
        EXPECT_EQ(state.gCrcHigh, c.high) << c.frame.size();
    }
}

TEST(LongWords, SplitAndJoin) {
    struct Case {
        const char* text;
        const char* words;
        std::int32_t number;
        int high;
        int low;
    };
    const Case cases[] = {
        {"0", "0 0", 0, 0, 0},
        {"65541", "1 5", 65541, 1, 5},
        {"40000", "0 -25536", 40000, 0, -25536},
        {"-1", "-1 -1", -1, -1, -1},
        {"-65536", "-1 0", -65536, -1, 0},
        {"2147483647", "32767 -1", 2147483647, 32767, -1},
        {"-2147483648", "-32768 0", INT32_MIN, -32768, 0},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(SplitLongToWords(c.text), c.words);
        EXPECT_EQ(join_words(static_cast<std::int16_t>(c.high), static_cast<std::int16_t>(c.low)),
                  c.number);
    }
    EXPECT_EQ(SplitLongToWords(""), "");
    EXPECT_THROW((void)SplitLongToWords("2147483648"), RunTimeError);
}

} // namespace
} // namespace pelvan
