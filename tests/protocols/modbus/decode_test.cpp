#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "protocols/modbus/bytes.h"

namespace pelvan {
namespace {

using testing::bytes;
using testing::sealed;

constexpr const char* kCountError = "Character Count error occurred.  Verify Communications.";

struct ModbusDecode : ::testing::Test {
    ModbusState state;
    Modbus modbus{state};
    /// Elements 1 to 4 of the table.
    [[nodiscard]] std::vector<float> first_values() const {
        return {state.gReplyValues.begin() + 1, state.gReplyValues.begin() + 5};
    }
};

/// A frame without its CRC and its three renderings without theirs: what the CRC adds is worked
/// out.
struct Case {
    std::int16_t is_request;
    std::string body;
    std::string decimal;
    std::string hex;
    std::string smart;
};

TEST_F(ModbusDecode, RightFramesInAllRenderings) {
    const Case cases[] = {
        {1, bytes({1, 3, 0, 100, 0, 2}), "1 3 100 2 ", "01 03 0064 0002 ", "100 2"},
        {1, bytes({1, 1, 0x9C, 0x40, 0, 8}), "1 1 40000 8 ", "01 01 9C40 0008 ", "40000 8"},
        {0, bytes({1, 2, 2, 255, 7}), "1 2 2 255 7 ", "01 02 02 FF 07 ", "255 7"},
        {0, bytes({1, 3, 4, 0xFF, 0xFF, 2, 0xD5}), "1 3 4 -1 725 ", "01 03 04 FFFF 02D5 ",
         "-1 725"},
        {0, bytes({1, 4, 3, 0x80, 0, 9}), "1 4 3 -32768 9 ", "01 04 03 8000 09 ", "-32768 9"},
        {0, bytes({1, 3, 0}), "1 3 0 ", "01 03 00 ", ""},
        {0, bytes({1, 5, 0xFF, 0xFE, 0xFF, 0}), "1 5 65534 -256 ", "01 05 FFFE FF00 ",
         "65534 -256"},
        {1, bytes({1, 6, 0, 1, 0x7F, 0xFF}), "1 6 1 32767 ", "01 06 0001 7FFF ", "1 32767"},
        {1, bytes({1, 8, 0, 0, 0xFF, 0xFF}), "1 8 0 65535 ", "01 08 0000 FFFF ", "0 65535"},
        {0, bytes({1, 8, 0, 0, 0xFF, 0xFF}), "1 8 0 65535 ", "01 08 0000 FFFF ", "65535"},
        // The first data word alone is signed.
        {1, bytes({1, 16, 0, 9, 0, 2, 4, 0xFF, 0xFF, 0xFF, 0xFE}), "1 16 9 2 4 -1 65534 ",
         "01 10 0009 0002 04 FFFF FFFE ", "9 -1 65534"},
        {1, bytes({1, 15, 0, 9, 0, 3, 1, 5}), "1 15 9 3 1 5 ", "01 0F 0009 0003 01 05 ", "9 5"},
        {1, bytes({1, 16, 0, 9, 0, 0, 0}), "1 16 9 0 0 ", "01 10 0009 0000 00 ", "9"},
        {0, bytes({1, 16, 0, 9, 0x80, 0}), "1 16 9 32768 ", "01 10 0009 8000 ", "9 32768"},
        {0, bytes({1, 131, 2}), "1 131 2 ", "01 83 02 ", "Exception Error: 131 2"},
    };
    for (const Case& c : cases) {
        const std::string frame = sealed(c.body);
        const int low = static_cast<unsigned char>(frame[frame.size() - 2]);
        const int high = static_cast<unsigned char>(frame.back());
        char hex[8];
        std::snprintf(hex, sizeof hex, "%02X %02X ", static_cast<unsigned>(low),
                      static_cast<unsigned>(high));
        EXPECT_EQ(modbus.ModbusDecodeDecimal(c.is_request, frame),
                  c.decimal + std::to_string(low) + " " + std::to_string(high) + " ");
        EXPECT_EQ(modbus.ModbusDecodeHex(c.is_request, frame), c.hex + hex);
        EXPECT_EQ(modbus.ModbusDecodeSmartDecimal(c.is_request, frame), c.smart);
    }
}

TEST_F(ModbusDecode, FaultyFramesInAllRenderings) {
    struct Fault {
        std::int16_t is_request;
        std::string frame;
        std::string decimal;
        std::string hex;
        std::string smart;
        float mark;
    };
    const std::string short_frame = bytes({1, 3, 255, 0});
    const std::string bad_crc = "RESPONSE FROM CONTROLLER HAS CRC ERROR!";
    const float mark = kNoReplyValue;
    const auto all = [](std::int16_t request, const std::string& body, const std::string& text) {
        return Fault{request, sealed(body), text, text, text, kNoReplyValue};
    };
    const Fault cases[] = {
        {0, short_frame, short_frame, "01 03 FF 00 ", "", mark},
        {1, short_frame, short_frame, "01 03 FF 00 ", "", mark},
        {0, "", "", "", "", mark},
        {0, bytes({1, 3, 2, 0xFF, 0xFE, 0, 0}), "1 3 2 65534<--CRC ERROR!",
         "01 03 02 FFFE<--CRC ERROR!", bad_crc, 2},
        {0, bytes({1, 131, 4, 0, 0}), "1 131 4 0<--CRC ERROR!", "01 83 04 0000<--CRC ERROR!",
         bad_crc, 4},
        all(0, bytes({1, 3, 4, 1, 2, 3}), kCountError),
        all(1, bytes({1, 3, 0, 0, 0, 1, 0, 2}), kCountError),
        all(0, bytes({1, 1, 0, 1}), kCountError),
        all(0, bytes({1, 15, 0, 9, 0, 1, 0}), kCountError),
        all(1, bytes({1, 16, 0, 9, 0, 1, 2, 7}), kCountError),
        all(1, bytes({1, 16, 0}), kCountError),
        all(0, bytes({1, 5, 0, 9, 0}), "-32100"),
        all(0, bytes({1, 6, 0, 9, 0, 1, 0}), "-32100"),
        all(1, bytes({1, 8, 0, 9}), "-32100"),
        {1, bytes({1, 7, 9, 9, 9, 9}), "1 7 ", "01 07 ", "", mark},
    };
    for (const Fault& c : cases) {
        state.gReplyValues[1] = 0;
        EXPECT_EQ(modbus.ModbusDecodeDecimal(c.is_request, c.frame), c.decimal);
        EXPECT_EQ(state.gReplyValues[1], c.mark) << c.decimal;
        state.gReplyValues[1] = 0;
        EXPECT_EQ(modbus.ModbusDecodeHex(c.is_request, c.frame), c.hex);
        EXPECT_EQ(state.gReplyValues[1], c.mark) << c.hex;
        state.gReplyValues[1] = 0;
        EXPECT_EQ(modbus.ModbusDecodeSmartDecimal(c.is_request, c.frame), c.smart);
        EXPECT_EQ(state.gReplyValues[1], c.mark) << c.smart;
    }
}

TEST_F(ModbusDecode, ValuesAreStoredAndTheRestCleared) {
    const std::string words = sealed(bytes({1, 3, 4, 0xFF, 0xFF, 2, 0xD5}));
    const std::string bits = sealed(bytes({1, 1, 1, 9}));
    state.gReplyValues.fill(7);
    (void)modbus.ModbusDecodeSmartDecimal(0, words);
    EXPECT_EQ(first_values(), (std::vector<float>{-1, 725, kNotFilled, kNotFilled}));
    EXPECT_EQ(state.gReplyValues[65], kNotFilled);
    EXPECT_EQ(state.gReplyValues[66], 7);
    (void)modbus.ModbusDecodeHex(0, bits);
    EXPECT_EQ(first_values(), (std::vector<float>{9, 0x91, 0x8E, kNotFilled}));
    EXPECT_EQ(state.gReplyValues[258], kNotFilled);
    (void)modbus.ModbusDecodeDecimal(0, sealed(bytes({1, 131, 2})));
    EXPECT_EQ(first_values(), (std::vector<float>{2, kNotFilled, kNotFilled, kNotFilled}));
    // A frame too short to be one changes nothing but the mark.
    state.gReplyValues.fill(7);
    (void)modbus.ModbusDecodeDecimal(0, "abcd");
    EXPECT_EQ(first_values(), (std::vector<float>{kNoReplyValue, 7, 7, 7}));
}

TEST_F(ModbusDecode, RequestKeepsTheStoredCrc) {
    state.gCrcLow = 1;
    state.gCrcHigh = 2;
    EXPECT_EQ(modbus.ModbusDecodeDecimal(1, bytes({1, 3, 0, 0, 0, 1, 8, 9})), "1 3 0 1 8 9 ");
    EXPECT_EQ(state.gCrcLow, 1);
    EXPECT_EQ(state.gCrcHigh, 2);
}

TEST_F(ModbusDecode, LongestReplyFits) {
    std::string body = bytes({1, 1, 255}) + std::string(255, '\xC8');
    const std::string text = modbus.ModbusDecodeDecimal(0, sealed(body));
    EXPECT_EQ(std::count(text.begin(), text.end(), ' '), 260);
    EXPECT_EQ(state.gReplyValues[255], 200);
    EXPECT_NE(state.gReplyValues[257], kNotFilled);
    EXPECT_EQ(state.gReplyValues[258], kNotFilled);
}

// What comes out is a text, whatever goes in; the sanitizers watch the rest.
TEST_F(ModbusDecode, AnyBytesEndInAText) {
    std::mt19937 random(20261121);
    const int functions[] = {1, 2, 3, 4, 5, 6, 7, 8, 15, 16, 131, 144};
    const auto decode_all = [this](const std::string& frame) {
        for (const auto request : {std::int16_t{0}, std::int16_t{1}}) {
            EXPECT_NO_THROW((void)modbus.ModbusDecodeDecimal(request, frame));
            EXPECT_NO_THROW((void)modbus.ModbusDecodeHex(request, frame));
            EXPECT_NO_THROW((void)modbus.ModbusDecodeSmartDecimal(request, frame));
        }
    };
    std::vector<std::size_t> lengths{10'000};
    for (std::size_t length = 0; length <= 300; ++length)
        lengths.push_back(length);
    for (const std::size_t length : lengths) {
        std::string frame(length, '\0');
        for (char& byte : frame)
            byte = static_cast<char>(random());
        decode_all(frame);
        for (const int function : functions) {
            if (length > 1) frame[1] = static_cast<char>(function);
            decode_all(sealed(frame));
            // A byte count that fits this length, where one byte can say it.
            if (length > 6) frame[2] = static_cast<char>(length - 3);
            if (length > 6) frame[6] = static_cast<char>(length - 7);
            decode_all(sealed(frame));
        }
    }
}

} // namespace
} // namespace pelvan
