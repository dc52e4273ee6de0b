#include <gtest/gtest.h>

#include <cmath>

#include "protocols/modbus/bytes.h"

namespace pelvan {
namespace {

using testing::bytes;
using testing::sealed;

class ModbusBuildRequest : public ::testing::Test {
  protected:
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
    struct Case {
        int function;
        int address;
        float start;
        std::vector<float> values;
        std::string frame;
    };
    const float end = kValueListEnd;
    const Case cases[] = {
        {3, 1, 0, {1, end, 7}, bytes({1, 3, 0, 0, 0, 1})},
        {3, 1, 0, {1}, bytes({1, 3, 0, 0, 0, 1})},
        {1, 0, 65535, {8, end}, bytes({0, 1, 0xFF, 0xFF, 0, 8})},
        {6, 247, 300, {-32768, end}, bytes({247, 6, 1, 44, 0x80, 0})},
        {6, 1, 2.5F, {2.5F, end}, bytes({1, 6, 0, 2, 0, 2})},
        {6, 1, 3.5F, {-0.25F, end}, bytes({1, 6, 0, 4, 0, 0})},
        {8, 1, 0, {0x1234, end}, bytes({1, 8, 0, 0, 0x12, 0x34})},
        {4, 1, 5, {1, 2, end}, bytes({1, 4, 0, 5, 0, 1, 0, 2})},
        {15, 2, 16, {1, 0, 1, end}, bytes({2, 15, 0, 16, 0, 3, 6, 0, 1, 0, 0, 0, 1})},
        {16, 2, 16, {-1, 258, end}, bytes({2, 16, 0, 16, 0, 2, 4, 0xFF, 0xFF, 1, 2})},
        {16, 2, 16, {end}, bytes({2, 16, 0, 16, 0, 0, 0})},
    };
    for (const Case& c : cases)
        EXPECT_EQ(build(c.function, c.address, c.start, c.values), sealed(c.frame)) << c.function;
}

TEST_F(ModbusBuildRequest, RefusesInThisOrder) {
    struct Case {
        int function;
        int address;
        float start;
        float value;
        const char* text;
    };
    const Case cases[] = {
        {0, 248, -1, 40000, "Bad COMMAND TYPE selected."},
        {7, 1, 0, 1, "Bad COMMAND TYPE selected."},
        {17, 1, 0, 1, "Bad COMMAND TYPE selected."},
        {3, 248, -1, 40000, "Bad ADDRESS entered."},
        {3, -1, 0, 1, "Bad ADDRESS entered."},
        {3, 1, -0.5F, 40000, "Bad REGISTER entered."},
        {3, 1, 65536, 1, "Bad REGISTER entered."},
        {3, 1, NAN, 1, "Bad REGISTER entered."},
        {6, 1, 0, 32768, "Bad DATA VALUE entered."},
        {6, 1, 0, -32769, "Bad DATA VALUE entered."},
        {6, 1, 0, NAN, "Bad DATA VALUE entered."},
    };
    for (const Case& c : cases) {
        const std::string text = build(c.function, c.address, c.start, {c.value, kValueListEnd});
        EXPECT_EQ(text, c.text);
        EXPECT_TRUE(is_refusal(text));
    }
}

TEST_F(ModbusBuildRequest, RewritesNegativeValuesUpToTheBadOne) {
    EXPECT_TRUE(is_refusal(build(16, 1, 0, {-1, 5, 32768, -2, kValueListEnd})));
    EXPECT_EQ(list, (std::vector<float>{0, 65535, 5, 32768, -2, kValueListEnd}));
}

TEST_F(ModbusBuildRequest, RefusesMoreWordsThanTheByteCountCanSay) {
    EXPECT_EQ(build(16, 1, 0, std::vector<float>(127, 1)).size(), 9U + 254U);
    EXPECT_EQ(build(16, 1, 0, std::vector<float>(128, 1)), "Bad DATA VALUE entered.");
    std::span<float> none;
    EXPECT_EQ(modbus.ModbusBuildRequest(3, 1, 0, none), sealed(bytes({1, 3, 0, 0})));
}

} // namespace
} // namespace pelvan
