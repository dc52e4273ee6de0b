#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <random>

#include "protocols/modbus/modbus.h"
#include "support/frames.h"

namespace pelvan {
namespace {

using testing::bytes;
using testing::frame;
using testing::sealed;

constexpr std::array kRenderings{&Modbus::ModbusDecodeDecimal, &Modbus::ModbusDecodeHex,
                                 &Modbus::ModbusDecodeSmartDecimal};

class ModbusDecode : public ::testing::Test {
  protected:
    /// All renderings of one frame; returns what each leaves in the first element of the table.
    std::vector<float> check(int is_request, const std::string& any,
                             const std::array<std::string, 3>& texts) {
        std::vector<float> firsts;
        for (std::size_t i = 0; i < texts.size(); ++i) {
            state.gReplyValues[1] = 0;
            EXPECT_EQ((modbus.*kRenderings[i])(static_cast<std::int16_t>(is_request), any),
                      texts[i])
                << testing::hex_of(any);
            firsts.push_back(state.gReplyValues[1]);
        }
        return firsts;
    }
    /// Elements 1 to 4 of the table, and those at which one of the two clearings ends.
    [[nodiscard]] std::vector<float> values() const {
        const auto& all = state.gReplyValues;
        return {all[1], all[2], all[3], all[4], all[65], all[66], all[258]};
    }

    ModbusState state;
    Modbus modbus{state};
};

TEST_F(ModbusDecode, RightFramesInAllRenderings) {
    const float none = kNotFilled;
    // Of the first two texts the CRC is left away and worked out; the last is the first value.
    const std::vector<std::tuple<int, const char*, std::string, std::string, const char*, float>>
        cases{
            {1, "01 01 9C 40 00 08", "1 1 40000 8", "01 01 9C40 0008", "40000 8", none},
            {0, "01 02 02 FF 07", "1 2 2 255 7", "01 02 02 FF 07", "255 7", 255},
            {0, "01 03 04 FF FF 02 D5", "1 3 4 -1 725", "01 03 04 FFFF 02D5", "-1 725", -1},
            {0, "01 04 03 80 00 09", "1 4 3 -32768 9", "01 04 03 8000 09", "-32768 9", -32768},
            {0, "01 03 00", "1 3 0", "01 03 00", "", none},
            {0, "01 05 FF FE FF 00", "1 5 65534 -256", "01 05 FFFE FF00", "65534 -256", none},
            {1, "01 06 00 01 7F FF", "1 6 1 32767", "01 06 0001 7FFF", "1 32767", none},
            {1, "01 08 00 00 FF FF", "1 8 0 65535", "01 08 0000 FFFF", "0 65535", none},
            {0, "01 08 00 00 FF FF", "1 8 0 65535", "01 08 0000 FFFF", "65535", none},
            // The first data word alone is signed.
            {1, "01 10 00 09 00 02 04 FF FF FF FE", "1 16 9 2 4 -1 65534",
             "01 10 0009 0002 04 FFFF FFFE", "9 -1 65534", none},
            {1, "01 0F 00 09 00 03 01 05", "1 15 9 3 1 5", "01 0F 0009 0003 01 05", "9 5", none},
            {1, "01 10 00 09 00 00 00", "1 16 9 0 0", "01 10 0009 0000 00", "9", none},
            {0, "01 10 00 09 80 00", "1 16 9 32768", "01 10 0009 8000", "9 32768", none},
            // Exceptions, of five bytes; also of a function that is not known.
            {0, "01 83 02", "1 131 2", "01 83 02", "Exception Error: 131 2", 2},
            {0, "F7 FF 0B", "247 255 11", "F7 FF 0B", "Exception Error: 255 11", 11},
        };
    for (const auto& [is_request, body, decimal, hex, smart, first] : cases) {
        const std::string whole = frame(body);
        std::string numbers = " ";
        for (const char c : whole.substr(whole.size() - 2))
            numbers += std::to_string(static_cast<unsigned char>(c)) + " ";
        const std::string crc = " " + testing::hex_of(whole.substr(whole.size() - 2)) + " ";
        const auto firsts = check(is_request, whole, {decimal + numbers, hex + crc, smart});
        EXPECT_EQ(firsts, std::vector<float>(3, first)) << body;
    }
}

TEST_F(ModbusDecode, FaultyFramesInAllRenderings) {
    const std::vector<float> mark(3, kNoReplyValue);
    const std::string cut = bytes("01 03 FF 00");
    for (const int is_request : {0, 1})
        EXPECT_EQ(check(is_request, cut, {cut, "01 03 FF 00 ", ""}), mark);
    EXPECT_EQ(check(0, "", {}), mark);
    EXPECT_EQ(check(1, bytes("01 07 09 09 09 09"), {"1 7 ", "01 07 ", "1 7"}), mark);
    const std::string bad_crc = "RESPONSE FROM CONTROLLER HAS CRC ERROR!";
    EXPECT_EQ(check(0, bytes("01 83 02 FF FE"),
                    {"1 131 2 65534<--CRC ERROR!", "01 83 02 FFFE<--CRC ERROR!", bad_crc}),
              std::vector<float>(3, 2));
    const std::string count_error = "Character Count error occurred.  Verify Communications.";
    const std::vector<std::tuple<int, const char*, std::string>> miscounted{
        {0, "01 03 04 01 02 03", count_error},
        {1, "01 03 00 00 00 01 00 02", count_error},
        {0, "01 01 00 01", count_error},
        {1, "01 10 00 09 00 01 02 07", count_error},
        {0, "01 0F 00 09 00 01 00", count_error},
        {1, "01 10 00", count_error},
        {0, "01 05 00 09 00", "-32100"},
        {0, "01 06 00 09 00 01 00", "-32100"},
        {1, "01 08 00 09", "-32100"}};
    for (const auto& [is_request, body, text] : miscounted)
        EXPECT_EQ(check(is_request, frame(body), {text, text, text}), mark) << body;
}

TEST_F(ModbusDecode, ValuesAreStoredAndTheRestCleared) {
    state.gReplyValues.fill(7);
    (void)modbus.ModbusDecodeSmartDecimal(0, frame("01 03 04 FF FF 02 D5"));
    EXPECT_EQ(values(), (std::vector<float>{-1, 725, kNotFilled, kNotFilled, kNotFilled, 7, 7}));
    (void)modbus.ModbusDecodeHex(0, frame("01 01 01 09"));
    EXPECT_EQ(values(),
              (std::vector<float>{9, 0x91, 0x8E, kNotFilled, kNotFilled, kNotFilled, kNotFilled}));
    // A frame too short to be one changes nothing but the mark.
    state.gReplyValues.fill(7);
    (void)modbus.ModbusDecodeDecimal(0, "abcd");
    EXPECT_EQ(values(), (std::vector<float>{kNoReplyValue, 7, 7, 7, 7, 7, 7}));
    // The longest reply fits.
    (void)modbus.ModbusDecodeDecimal(0, sealed(bytes("01 01 FF") + std::string(255, '\xC8')));
    EXPECT_EQ(state.gReplyValues[255], 200);
    EXPECT_NE(state.gReplyValues[257], kNotFilled);
}

/// The items of a rendering as numbers 0 to 65535.
std::vector<unsigned long> items(const std::string& text, int base) {
    std::vector<unsigned long> numbers;
    for (const std::string& item : split(text, ' '))
        if (!item.empty()) numbers.push_back(std::stoul(item, nullptr, base) & 0xFFFFU);
    return numbers;
}

// Whatever comes in, the two renderings of the whole packet say the same, and a wrong CRC is told.
TEST_F(ModbusDecode, AnyBytes) {
    std::mt19937 random(20261121);
    const auto check_any = [&](const std::string& any, std::int16_t request, bool valid) {
        // Memory of just this size: the sanitizer sees a byte read behind it.
        const std::vector<char> exact(any.begin(), any.end());
        const std::string_view view(exact.data(), exact.size());
        const std::string decimal = modbus.ModbusDecodeDecimal(request, view);
        const std::string hex = modbus.ModbusDecodeHex(request, view);
        const bool words = decimal == hex || decimal.ends_with("<--CRC ERROR!");
        if (!words) {
            EXPECT_EQ(items(decimal, 10), items(hex, 16)) << testing::hex_of(any);
        }
        const bool told = modbus.ModbusDecodeSmartDecimal(request, view).ends_with("CRC ERROR!");
        EXPECT_EQ(told, request == 0 && !valid) << testing::hex_of(any);
        if (told) {
            EXPECT_EQ(state.gReplyValues[1], static_cast<unsigned char>(any[2]));
        }
    };
    for (std::size_t length = 3; length <= 300; length += length < 30 ? 1 : 9)
        for (const char function : bytes("01 02 03 04 05 06 07 08 0F 10 83 90")) {
            std::string any(length < 300 ? length : 10'000, '\0');
            std::generate(any.begin(), any.end(), [&] { return static_cast<char>(random()); });
            any[1] = function;
            // Often a byte count that fits this length, where one byte can say it.
            if (random() % 2 == 0) any[2] = static_cast<char>(length - 3);
            if (length > 6 && random() % 2 == 0) any[6] = static_cast<char>(length - 7);
            for (const auto request : {std::int16_t{0}, std::int16_t{1}}) {
                std::string whole = sealed(any);
                check_any(whole, request, true);
                whole.back() = static_cast<char>(whole.back() ^ 1);
                check_any(whole, request, false);
            }
        }
}

} // namespace
} // namespace pelvan
