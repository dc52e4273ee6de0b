#include <gtest/gtest.h>

#include "bytes.h"
#include "simulator/modbus_slave.h"

using namespace pelvan;
using namespace pelvan::simulator;
using pelvan::testing::bytes;
using pelvan::testing::frame;
using pelvan::testing::hex_of;

namespace {

/// The reply of a 742 at address 1, without its CRC, after the CRC was found right.
std::string reply_to(Controller& controller, const std::string& request) {
    const std::string reply = modbus_reply(controller, 1, frame(request));
    if (reply.empty()) return "";
    EXPECT_TRUE(modbus_crc_fits(reply));
    return hex_of(reply.substr(0, reply.size() - 2));
}

struct Case {
    const char* what;
    const char* request;
    const char* reply;
};

} // namespace

TEST(ModbusCrcOfTheSlave, KnownFrames) {
    // 84 0A is what libmodbus sends for this request.
    EXPECT_EQ(hex_of(frame("01 03 00 00 00 01")), "01 03 00 00 00 01 84 0A");
    EXPECT_TRUE(modbus_crc_fits(bytes("01 03 00 00 00 01 84 0A")));
    EXPECT_FALSE(modbus_crc_fits(bytes("01 03 00 00 00 01 84 0B")));
}

TEST(ModbusSlave, AnswersEveryFunctionAndException) {
    const std::vector<Case> cases{
        {"model", "01 03 00 00 00 01", "01 03 02 02 E6"},
        {"input registers are the same", "01 04 00 00 00 01", "01 04 02 02 E6"},
        {"a negative register", "01 03 03 22 00 01", "01 03 02 FE 0C"},
        {"a mark", "01 03 05 F1 00 01", "01 03 02 82 FF"},
        {"coils are off", "01 01 00 00 00 0A", "01 01 02 00 00"},
        {"coil on", "01 05 00 03 FF 00", "01 05 00 03 FF 00"},
        {"coil with a bad value", "01 05 00 03 00 01", "01 85 03"},
        {"coil outside", "01 05 00 10 FF 00", "01 85 02"},
        {"one coil is on", "01 01 00 00 00 0A", "01 01 02 08 00"},
        {"coils, a word each", "01 0F 00 00 00 03 06 00 01 00 00 FF 00", "01 0F 00 00 00 03"},
        {"as written: coils 0 and 2 on", "01 01 00 00 00 04", "01 01 01 0D"},
        {"one coil, a word", "01 0F 00 00 00 01 02 00 00", "01 0F 00 00 00 01"},
        {"coil 0 is off", "01 01 00 00 00 04", "01 01 01 0C"},
        {"coils, packed", "01 0F 00 00 00 0A 02 05 02", "01 0F 00 00 00 0A"},
        {"as written: 0, 2 and 9 on", "01 01 00 00 00 0A", "01 01 02 05 02"},
        {"coils with a wrong byte count", "01 0F 00 00 00 03 05 00 01 00 00 FF", "01 8F 03"},
        {"no coils", "01 0F 00 00 00 00 00", "01 8F 03"},
        {"inputs", "01 02 00 00 00 0C", "01 02 02 00 00"},
        {"inputs outside", "01 02 00 00 00 0D", "01 82 02"},
        {"set point", "01 06 01 2C 03 20", "01 06 01 2C 03 20"},
        {"set point reads back", "01 03 01 2C 00 01", "01 03 02 03 20"},
        {"negative set point", "01 06 01 2C FF 9C", "01 06 01 2C FF 9C"},
        {"out of limit", "01 06 01 2C 27 10", "01 86 03"},
        {"read-only", "01 06 00 00 00 01", "01 86 02"},
        {"inactive", "01 03 02 80 00 01", "01 83 02"},
        {"unknown", "01 03 00 05 00 01", "01 83 02"},
        {"too many registers", "01 03 02 58 00 7E", "01 83 03"},
        {"no registers", "01 03 02 58 00 00", "01 83 03"},
        {"several", "01 10 03 22 00 02 04 FC 18 03 E8", "01 10 03 22 00 02"},
        {"several read back", "01 03 03 22 00 02", "01 03 04 FC 18 03 E8"},
        {"several, the last refused", "01 10 03 22 00 02 04 00 00 7F FF", "01 90 03"},
        {"so the first is not written either", "01 03 03 22 00 01", "01 03 02 FC 18"},
        {"wrong byte count", "01 10 03 22 00 02 03 00 00 7F", "01 90 03"},
        {"loop-back", "01 08 00 00 12 34", "01 08 00 00 12 34"},
        {"other diagnostics", "01 08 00 01 00 00", "01 88 01"},
        {"unknown function", "01 07", "01 87 01"},
        {"two values behind a single write", "01 06 01 2C 00 01 00 02", "01 86 03"},
        {"another address", "02 03 00 00 00 01", ""},
        {"broadcast", "00 06 01 2C 00 07", ""},
        {"the broadcast was executed", "01 03 01 2C 00 01", "01 03 02 00 07"},
        {"end of the register space", "01 03 FF FF 00 02", "01 83 02"},
    };
    Controller controller(742);
    for (const Case& c : cases)
        EXPECT_EQ(reply_to(controller, c.request), c.reply) << c.what;
}

TEST(ModbusSlave, ModelsDiffer) {
    Controller small(730);
    EXPECT_EQ(reply_to(small, "01 03 00 00 00 01"), "01 03 02 02 DA");
    EXPECT_EQ(reply_to(small, "01 03 0F A0 00 01"), "01 83 02"); // no profiles
    EXPECT_EQ(reply_to(small, "01 03 01 3F 00 01"), "01 83 02"); // no second loop
}

TEST(ModbusSlave, EveryRegisterOfASetupTakesItsOwnValueBack) {
    for (const int model : {742, 730}) {
        Controller controller(model);
        int active = 0;
        for (const auto& [number, reg] : controller.table().all()) {
            if (reg.access == Access::ReadOnly || !reg.active) continue;
            ++active;
            EXPECT_EQ(controller.write(number, reg.value), Answer::Ok) << number;
            EXPECT_LE(reg.min, reg.max) << number;
        }
        EXPECT_GE(active, model == 742 ? 300 : 80);
    }
}

TEST(ControllerTime, TheProcessFollowsItsSetPointAndAlarmsFollowTheProcess) {
    Controller controller(742);
    controller.advance(1000);
    std::int16_t value = 0;
    ASSERT_EQ(controller.read(reg::kProcessValue1, value), Answer::Ok);
    EXPECT_EQ(value, 250);
    controller.advance(6000);
    ASSERT_EQ(controller.read(reg::kProcessValue1, value), Answer::Ok);
    EXPECT_GT(value, 250);
    EXPECT_LT(value, 750);
    controller.advance(1e6);
    ASSERT_EQ(controller.read(reg::kProcessValue1, value), Answer::Ok);
    EXPECT_EQ(value, 750);
    EXPECT_FALSE(controller.inputs()[8]);
    ASSERT_EQ(controller.write(803, 700), Answer::Ok); // high limit of alarm 1
    controller.advance(1e6 + 1000);
    EXPECT_TRUE(controller.inputs()[8]);
    ASSERT_EQ(controller.read(reg::kAlarmState1, value), Answer::Ok);
    EXPECT_EQ(value, 1);
}

TEST(ControllerReset, NeedsBothKeysAndIsSilentAfterwards) {
    Controller controller(742);
    controller.advance(5000);
    ASSERT_EQ(controller.write(reg::kSetPoint1, 100), Answer::Ok);
    EXPECT_EQ(controller.write(reg::kReset, 800), Answer::IllegalValue);
    ASSERT_EQ(controller.write(reg::kResetKey1, 1512), Answer::Ok);
    EXPECT_EQ(controller.write(reg::kReset, 800), Answer::IllegalValue);
    ASSERT_EQ(controller.write(reg::kResetKey2, 1600), Answer::Ok);
    EXPECT_EQ(controller.write(reg::kReset, 800), Answer::Ok);
    EXPECT_EQ(controller.table().value(reg::kSetPoint1), 750);
    EXPECT_EQ(controller.table().value(reg::kResetKey1), 0);
    EXPECT_TRUE(controller.silent(6999));
    EXPECT_FALSE(controller.silent(7000));
}
