#include "config/ini.h"

#include <gtest/gtest.h>

#include "config/device_map.h"
#include "support/cases.h"
#include "support/temp_dir.h"

namespace pelvan::testing {

class Ini : public ::testing::Test {
  protected:
    TempDir directory_;
    std::string file_ = directory_.file("pelvan7.ini");
};

TEST_F(Ini, CutsIntegersTo16Bits) {
    for (const auto& [value, number] : cases("99999->-31073|-32769->32767|40001->-25535|"
                                             "4294967297->1|-5->-5|x->0|->1000")) {
        ini_write_string("COMMS CONTROLS", "TIMER OFFSET", value, file_);
        EXPECT_EQ(ini_read_int("COMMS CONTROLS", "TIMER OFFSET", 1000, file_), std::stoi(number));
    }
}

TEST_F(Ini, WritesTheKeysOfAChannel) {
    for (const auto& [key, value] : {std::pair{ini_key::comm_port(2), "3"},
                                     {ini_key::port_setting(0), "9600,N,8,1"},
                                     {ini_key::rts_mode(0), "5"}})
        EXPECT_NE(ini_write_string(ini_key::kCommsSection, key, value, file_), 0);
    EXPECT_EQ(read_file(file_), "[COMMS CONTROLS]\r\nDEVICE 2 COMM PORT=3\r\n"
                                "DEVICE 0 PORT SETTING=9600,N,8,1\r\nDEVICE 0 RTS Mode=5\r\n");
    EXPECT_EQ(ini_key::comm_port(2) + ini_key::port_setting(2) + ini_key::rts_mode(2),
              "DEVICE 2 COMM PORT DEVICE 2 PORT SETTING DEVICE 2 RTS Mode ");
    EXPECT_EQ(ini_write_string("S", "K", "v", directory_.file("missing/pelvan7.ini")), 0);
    EXPECT_EQ(ini_read_string("S", "K", std::string(300, 'd'), file_), std::string(254, 'd'));
}

TEST_F(Ini, AssignsDevicesToPortNumbers) {
    write_file(file_, "[SERIAL DEVICES]\r\nPORT 0=/dev/a\r\nPORT 1=simulated:742\r\n"
                      "PORT 16=/dev/serial/by-id/usb-x\r\nPORT 17=/dev/b\r\n");
    EXPECT_EQ(device_for_port(1, file_), "simulated:742");
    EXPECT_EQ(device_for_port(16, file_), "/dev/serial/by-id/usb-x");
    EXPECT_FALSE(device_for_port(0, file_) || device_for_port(17, file_));
    const auto built_in = [](int number) { return std::optional(std::to_string(number)); };
    EXPECT_EQ(device_for_port(1, file_, built_in), "simulated:742");
    EXPECT_EQ(device_for_port(2, file_, built_in), "2");
}

// The sample files are what a technician copies: every key in them must be one that is read.
TEST_F(Ini, SampleFilesHoldEveryKey) {
    for (const auto& [name, device] :
         cases("pelvan7.ini->/dev/|demonstration.ini->simulated:742")) {
        const std::string sample = std::string(PELVAN_SAMPLES) + "/" + name;
        const auto text = [&](const std::string& key) {
            return ini_read_string(ini_key::kCommsSection, key, "missing", sample) + ";";
        };
        for (int channel = 0; channel < 4; ++channel) {
            const std::string mode = channel == 2 ? "4" : "1"; // the Xon channel has handshaking
            EXPECT_EQ(text(ini_key::comm_port(channel)) + text(ini_key::port_setting(channel)) +
                          text(ini_key::rts_mode(channel)),
                      std::to_string(channel + 1) + ";9600,N,8,1;" + mode + ";");
            EXPECT_TRUE(device_for_port(channel + 1, sample).value().starts_with(device)) << name;
        }
        EXPECT_EQ(text(ini_key::kDefaultProtocol) + text(ini_key::kTimerOffset), "1;1000;");
    }
}

} // namespace pelvan::testing
