#include <gtest/gtest.h>

#include <cmath>

#include "protocols/modbus/crc.h"
#include "protocols/modbus/modbus.h"
#include "support/error_of.h"
#include "support/frames.h"
#include "support/modbus_slave.h"

namespace pelvan::testing {

TEST(ModbusCrc, CheckValue) {
    ModbusState state;
    Modbus(state).ModbusCrc("123456789");
    EXPECT_EQ(state.gCrcLow, 0x37);
    EXPECT_EQ(state.gCrcHigh, 0x4B);
    EXPECT_EQ(modbus_crc("123456789"), 0x4B37);
    EXPECT_TRUE(has_valid_crc("123456789\x37\x4B"));
    for (const char* corrupt : {"", "\xFF", "123456789\x4B\x37", "123456788\x37\x4B"})
        EXPECT_FALSE(has_valid_crc(corrupt)) << corrupt;
}

TEST(LongWords, SplitAndJoin) {
    const std::vector<std::tuple<const char*, std::int16_t, std::int16_t>> cases = {
        {"65541", 1, 5}, {"40000", 0, -25536}, {"-1", -1, -1}, {"-2147483648", -32768, 0}};
    for (const auto& [text, high, low] : cases) {
        EXPECT_EQ(SplitLongToWords(text), std::to_string(high) + " " + std::to_string(low));
        EXPECT_EQ(std::to_string(join_words(high, low)), text);
    }
    // The same words as those of the signed number.
    EXPECT_EQ(SplitLongToWords("4294967295"), "-1 -1");
    EXPECT_EQ(SplitLongToWords("2147483648"), "-32768 0");
    EXPECT_EQ(SplitLongToWords(""), "");
    EXPECT_EQ(error_of(SplitLongToWords, "4294967296"), 6);
}

struct ModbusBuildRequest : ::testing::Test {
    std::string build(int function, int address, float start, std::vector<float> values) {
        list = std::move(values);
        list.insert(list.begin(), 0);
        return modbus.ModbusBuildRequest(static_cast<std::int16_t>(function),
                                         static_cast<std::int16_t>(address), start, list);
    }
    ModbusState state;
    Modbus modbus{state};
    std::vector<float> list;
};

TEST_F(ModbusBuildRequest, FramesAreExact) {
    const float end = kValueListEnd;
    EXPECT_EQ(build(3, 1, 0, {1, end, 7}), frame("01 03 00 00 00 01"));
    EXPECT_EQ(build(1, 0, 65535, {8, end}), frame("00 01 FF FF 00 08"));
    EXPECT_EQ(build(6, 247, 300, {-32768, end}), frame("F7 06 01 2C 80 00"));
    EXPECT_EQ(build(6, 1, 2.5F, {2.5F, end}), frame("01 06 00 02 00 02"));
    EXPECT_EQ(build(6, 1, 3.5F, {-0.25F, end}), frame("01 06 00 04 00 00"));
    EXPECT_EQ(build(8, 1, 0, {0x1234, end}), frame("01 08 00 00 12 34"));
    EXPECT_EQ(build(4, 1, 5, {1, 2, end}), frame("01 04 00 05 00 01 00 02"));
    EXPECT_EQ(build(15, 2, 16, {1, 0, 1, end}), frame("02 0F 00 10 00 03 06 00 01 00 00 00 01"));
    EXPECT_EQ(build(16, 2, 16, {-1, 258, end}), frame("02 10 00 10 00 02 04 FF FF 01 02"));
    EXPECT_EQ(build(16, 2, 16, {end}), frame("02 10 00 10 00 00 00"));
    std::span<float> none;
    EXPECT_EQ(modbus.ModbusBuildRequest(3, 1, 0, none), frame("01 03 00 00"));
}

TEST_F(ModbusBuildRequest, RefusesInThisOrder) {
    const auto refusal = [this](int function, int address, float start, float value) {
        const std::string text = build(function, address, start, {value, kValueListEnd});
        EXPECT_TRUE(is_refusal(text));
        return text;
    };
    EXPECT_EQ(refusal(0, 248, -1, 40000), "Bad COMMAND TYPE selected.");
    for (const int function : {7, 17})
        EXPECT_EQ(refusal(function, 1, 0, 1), "Bad COMMAND TYPE selected.") << function;
    for (const int address : {248, -1})
        EXPECT_EQ(refusal(3, address, -1, 40000), "Bad ADDRESS entered.") << address;
    for (const float start : {-0.5F, 65536.0F, NAN})
        EXPECT_EQ(refusal(3, 1, start, 40000), "Bad REGISTER entered.") << start;
    for (const float value : {32768.0F, -32769.0F, NAN})
        EXPECT_EQ(refusal(6, 1, 0, value), "Bad DATA VALUE entered.") << value;
}

TEST_F(ModbusBuildRequest, RewritesNegativeValuesUpToTheBadOne) {
    EXPECT_TRUE(is_refusal(build(16, 1, 0, {-1, 5, 32768, -2, kValueListEnd})));
    EXPECT_EQ(list, (std::vector<float>{0, 65535, 5, 32768, -2, kValueListEnd}));
    // No more words than the byte count can say.
    EXPECT_EQ(build(16, 1, 0, std::vector<float>(127, 1)).size(), 9U + 254U);
    EXPECT_EQ(build(16, 1, 0, std::vector<float>(128, 1)), "Bad DATA VALUE entered.");
}

/// A slave built on libmodbus takes the builder's frames; the decoder takes its replies.
struct LibmodbusSlave : ModbusBuildRequest {
    std::string exchange(int function, float start, const std::vector<float>& values,
                         std::size_t reply_bytes) {
        line_.send(build(function, 1, start, values));
        return modbus.ModbusDecodeSmartDecimal(0, line_.receive(reply_bytes));
    }
    PtyPair line_{PtyPair::Slave::KeepOpen};
    ModbusSlaveProcess slave_{PELVAN_MODBUS_SLAVE, line_.path()};
};

TEST_F(LibmodbusSlave, TakesTheBuildersFrames) {
    EXPECT_EQ(exchange(3, 98, {4}, 13), "980 990 -1000 -1010");
    EXPECT_EQ(exchange(4, 5, {1}, 7), "51");
    EXPECT_EQ(exchange(1, 3, {4}, 6), "9");
    EXPECT_EQ(exchange(2, 0, {8}, 6), "170");
    EXPECT_EQ(exchange(6, 7, {-12}, 8), "7 -12");
    EXPECT_EQ(exchange(5, 4, {-256}, 8), "4 -256");
    EXPECT_EQ(exchange(16, 20, {-1, 5}, 8), "20 2");
    EXPECT_EQ(exchange(3, 20, {2}, 9), "-1 5");
    EXPECT_EQ(exchange(1, 3, {4}, 6), "11");
    EXPECT_EQ(exchange(3, 198, {4}, 5), "Exception Error: 131 2");
}

} // namespace pelvan::testing
