#include "config/ini.h"

#include <gtest/gtest.h>

#include "config/device_map.h"
#include "support/temp_dir.h"

namespace pelvan {
namespace {

using testing::read_file;
using testing::TempDir;
using testing::write_file;

class Ini : public ::testing::Test {
  protected:
    TempDir directory_;
    std::string file_ = directory_.file("pelvan7.ini");
};

TEST_F(Ini, CutsIntegersTo16Bits) {
    const struct {
        const char* value;
        std::int16_t expected;
    } cases[] = {{"99999", -31073}, {"-32769", 32767}, {"40001", -25535}, {"4294967297", 1},
                 {"-5", -5},        {"x", 0},          {"", 1000}};
    for (const auto& c : cases) {
        ini_write_string("COMMS CONTROLS", "TIMER OFFSET", c.value, file_);
        EXPECT_EQ(ini_read_int("COMMS CONTROLS", "TIMER OFFSET", 1000, file_), c.expected)
            << c.value;
    }
}

TEST_F(Ini, WritesTheKeysOfAChannel) {
    const auto write = [&](const std::string& key, const char* value) {
        return ini_write_string(ini_key::kCommsSection, key, value, file_);
    };
    EXPECT_NE(write(ini_key::comm_port(0), "3"), 0);
    EXPECT_NE(write(ini_key::port_setting(0), "9600,N,8,1"), 0);
    EXPECT_NE(write(ini_key::rts_mode(0), "5"), 0);
    EXPECT_EQ(read_file(file_), "[COMMS CONTROLS]\r\nDEVICE 0 COMM PORT=3\r\n"
                                "DEVICE 0 PORT SETTING=9600,N,8,1\r\nDEVICE 0 RTS Mode=5\r\n");
    EXPECT_EQ(ini_key::comm_port(2), "DEVICE 2 COMM PORT ");
    EXPECT_EQ(ini_key::port_setting(2), "DEVICE 2 PORT SETTING ");
    EXPECT_EQ(ini_key::rts_mode(2), "DEVICE 2 RTS Mode ");
    EXPECT_EQ(ini_write_string("S", "K", "v", directory_.file("missing/pelvan7.ini")), 0);
    EXPECT_EQ(ini_read_string("S", "K", std::string(300, 'd'), file_), std::string(254, 'd'));
}

TEST_F(Ini, AssignsDevicesToPortNumbers) {
    write_file(file_, "[SERIAL DEVICES]\r\nPORT 0=/dev/a\r\nPORT 1=simulated:742\r\n"
                      "PORT 16=/dev/serial/by-id/usb-x\r\nPORT 17=/dev/b\r\n");
    EXPECT_EQ(device_for_port(1, file_), "simulated:742");
    EXPECT_EQ(device_for_port(16, file_), "/dev/serial/by-id/usb-x");
    EXPECT_EQ(device_for_port(0, file_), std::nullopt);
    EXPECT_EQ(device_for_port(17, file_), std::nullopt);
}

// The sample files are what a technician copies: every key in them must be one that is read.
TEST_F(Ini, SampleFilesHoldEveryKey) {
    for (const std::string name : {"pelvan7.ini", "demonstration.ini"}) {
        const std::string sample = std::string(PELVAN_SAMPLES) + "/" + name;
        const auto text = [&](const std::string& key) {
            return ini_read_string(ini_key::kCommsSection, key, "missing", sample);
        };
        for (int channel = 0; channel < 4; ++channel) {
            EXPECT_EQ(text(ini_key::comm_port(channel)), std::to_string(channel + 1)) << name;
            EXPECT_EQ(text(ini_key::port_setting(channel)), "9600,N,8,1") << name;
            const std::string mode = channel == 2 ? "4" : "1"; // the Xon channel has handshaking
            EXPECT_EQ(text(ini_key::rts_mode(channel)), mode) << name;
            const auto device = device_for_port(channel + 1, sample);
            ASSERT_TRUE(device) << name;
            if (name == "demonstration.ini")
                EXPECT_EQ(*device, "simulated:742");
            else
                EXPECT_TRUE(device->starts_with("/dev/")) << *device;
        }
        EXPECT_EQ(ini_read_int(ini_key::kCommsSection, ini_key::kDefaultProtocol, -1, sample), 1);
        EXPECT_EQ(ini_read_int(ini_key::kCommsSection, ini_key::kTimerOffset, -1, sample), 1000);
    }
}

} // namespace
} // namespace pelvan
