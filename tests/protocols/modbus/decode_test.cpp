#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <random>

#include "protocols/modbus/modbus.h"
#include "support/frames.h"

namespace pelvan::testing {

constexpr std::array kRenderings{&Modbus::ModbusDecodeDecimal, &Modbus::ModbusDecodeHex,
                                 &Modbus::ModbusDecodeSmartDecimal};

struct ModbusDecode : ::testing::Test {
    /// Decodes a frame in all renderings; each leaves `first` in the first element of the table.
    void check(bool is_request, const std::string& any, const std::array<std::string, 3>& texts,
               float first = kNoReplyValue) {
        for (std::size_t i = 0; i < texts.size(); ++i) {
            state.gReplyValues[1] = 0;
            EXPECT_EQ((modbus.*kRenderings[i])(is_request ? 1 : 0, any), texts[i]) << hex_of(any);
            EXPECT_EQ(state.gReplyValues[1], first) << hex_of(any);
        }
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
    const std::tuple<bool, const char*, std::string, std::string, const char*, float> frames[] = {
        {true, "01 01 9C 40 00 08", "1 1 40000 8", "01 01 9C40 0008", "40000 8", none},
        {false, "01 02 02 FF 07", "1 2 2 255 7", "01 02 02 FF 07", "255 7", 255},
        {false, "01 03 04 FF FF 02 D5", "1 3 4 -1 725", "01 03 04 FFFF 02D5", "-1 725", -1},
        {false, "01 04 03 80 00 09", "1 4 3 -32768 9", "01 04 03 8000 09", "-32768 9", -32768},
        {false, "01 03 00", "1 3 0", "01 03 00", "", none},
        {false, "01 05 FF FE FF 00", "1 5 65534 -256", "01 05 FFFE FF00", "65534 -256", none},
        {true, "01 06 00 01 7F FF", "1 6 1 32767", "01 06 0001 7FFF", "1 32767", none},
        {true, "01 08 00 00 FF FF", "1 8 0 65535", "01 08 0000 FFFF", "0 65535", none},
        {false, "01 08 00 00 FF FF", "1 8 0 65535", "01 08 0000 FFFF", "65535", none},
        // The first data word alone is signed.
        {true, "01 10 00 09 00 02 04 FF FF FF FE", "1 16 9 2 4 -1 65534",
         "01 10 0009 0002 04 FFFF FFFE", "9 -1 65534", none},
        {true, "01 0F 00 09 00 03 01 05", "1 15 9 3 1 5", "01 0F 0009 0003 01 05", "9 5", none},
        {true, "01 10 00 09 00 00 00", "1 16 9 0 0", "01 10 0009 0000 00", "9", none},
        {false, "01 10 00 09 80 00", "1 16 9 32768", "01 10 0009 8000", "9 32768", none},
        // Exceptions, of five bytes; also of a function that is not known.
        {false, "01 83 02", "1 131 2", "01 83 02", "Exception Error: 131 2", 2},
        {false, "F7 FF 0B", "247 255 11", "F7 FF 0B", "Exception Error: 255 11", 11}};
    for (const auto& [is_request, body, decimal, hex, smart, first] : frames) {
        const std::string whole = frame(body);
        const std::string crc = whole.substr(whole.size() - 2);
        std::string numbers = " ";
        for (const char c : crc)
            numbers += std::to_string(static_cast<unsigned char>(c)) + " ";
        check(is_request, whole, {decimal + numbers, hex + " " + hex_of(crc) + " ", smart}, first);
    }
}

TEST_F(ModbusDecode, FaultyFramesInAllRenderings) {
    const std::string cut = bytes("01 03 FF 00");
    for (const bool is_request : {false, true})
        check(is_request, cut, {cut, "01 03 FF 00 ", ""});
    check(false, "", {});
    check(true, bytes("01 07 09 09 09 09"), {"1 7 ", "01 07 ", "1 7"});
    check(false, bytes("01 83 02 FF FE"),
          {"1 131 2 65534<--CRC ERROR!", "01 83 02 FFFE<--CRC ERROR!",
           "RESPONSE FROM CONTROLLER HAS CRC ERROR!"},
          2);
    // Frames of a wrong length, behind 0 for a reply and 1 for a request.
    for (const auto& [text, frames] :
         {std::pair{"Character Count error occurred.  Verify Communications.",
                    "0 01 03 04 01 02 03|1 01 03 00 00 00 01 00 02|0 01 01 00 01|"
                    "1 01 10 00 09 00 01 02 07|0 01 0F 00 09 00 01 00|1 01 10 00"},
          std::pair{"-32100", "0 01 05 00 09 00|0 01 06 00 09 00 01 00|1 01 08 00 09"}})
        for (const std::string& one : split(frames, '|'))
            check(one[0] == '1', frame(one.substr(2)), {text, text, text});
}

TEST_F(ModbusDecode, ValuesAreStoredAndTheRestCleared) {
    const float none = kNotFilled;
    state.gReplyValues.fill(7);
    (void)modbus.ModbusDecodeSmartDecimal(0, frame("01 03 04 FF FF 02 D5"));
    EXPECT_EQ(values(), (std::vector<float>{-1, 725, none, none, none, 7, 7}));
    (void)modbus.ModbusDecodeHex(0, frame("01 01 01 09"));
    EXPECT_EQ(values(), (std::vector<float>{9, 0x91, 0x8E, none, none, none, none}));
    // A frame too short to be one changes nothing but the mark.
    state.gReplyValues.fill(7);
    (void)modbus.ModbusDecodeDecimal(0, "abcd");
    EXPECT_EQ(values(), (std::vector<float>{kNoReplyValue, 7, 7, 7, 7, 7, 7}));
    // The longest reply fits.
    (void)modbus.ModbusDecodeDecimal(0, sealed(bytes("01 01 FF") + std::string(255, '\xC8')));
    EXPECT_EQ(state.gReplyValues[255], 200);
    EXPECT_NE(state.gReplyValues[257], kNotFilled);
}

// Whatever comes in, the two renderings of the whole packet say the same, and a wrong CRC is told.
TEST_F(ModbusDecode, AnyBytes) {
    std::mt19937 random(20261121);
    const auto check_any = [&](const std::string& any, std::int16_t request, bool valid) {
        // Memory of just this size: the sanitizer sees a byte read behind it.
        const std::vector<char> exact(any.begin(), any.end());
        const std::string_view view(exact.data(), exact.size());
        const auto decimal = split(modbus.ModbusDecodeDecimal(request, view), ' ');
        const auto hex = split(modbus.ModbusDecodeHex(request, view), ' ');
        const bool words = decimal == hex || decimal.back() == "ERROR!";
        for (std::size_t i = 0; i + 1 < decimal.size() && !words; ++i)
            EXPECT_EQ(std::stoul(decimal[i]) & 0xFFFFU, std::stoul(hex.at(i), nullptr, 16));
        EXPECT_TRUE(words || decimal.size() == hex.size()) << hex_of(any);
        const bool told = modbus.ModbusDecodeSmartDecimal(request, view).ends_with("CRC ERROR!");
        EXPECT_EQ(told, request == 0 && !valid) << hex_of(any);
        EXPECT_TRUE(!told || state.gReplyValues[1] == static_cast<unsigned char>(any[2]));
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

} // namespace pelvan::testing
