#include <gtest/gtest.h>

#include "support/serial_rig.h"

namespace pelvan {
namespace {

using testing::SerialRig;
using Texts = std::vector<std::string>;

TEST(ChannelTable, MissingOrEmptyFileGivesOneDefaultChannel) {
    SerialRig rig;
    rig.rebuild();
    for (int round = 0; round < 2; ++round) {
        ASSERT_EQ(rig.state.gCommDevice.size(), 1U);
        EXPECT_EQ(rig.ports[0]->CommPort(), 2);
        EXPECT_EQ(rig.ports[0]->Settings(), "9600,N,8,1");
        EXPECT_EQ(rig.ports[0]->history(), "DTREnable 1, RTSEnable 1, Handshaking 0");
        EXPECT_EQ(rig.state.gCharTime[0], 2);
        rig.build({});
    }
    EXPECT_TRUE(rig.dialogs.shown.empty());
}

TEST(ChannelTable, ReadsChannelsUpToTheFirstGap) {
    SerialRig rig;
    rig.build({"1;9600,N,8,1;0", "16;300,E,7,2;2", "0;9600,N,8,1;1", "4;9600,N,8,1;1"});
    ASSERT_EQ(rig.state.gCommDevice.size(), 2U);
    EXPECT_EQ(rig.ports[1]->CommPort(), 16);
    EXPECT_EQ(rig.state.gRtsToggle[1], true);
    EXPECT_EQ(rig.state.gCharTime[1], 50);
}

TEST(ChannelTable, SettleTimesFollowTheBaudRate) {
    const std::vector<std::pair<std::string, int>> cases{
        {"9600,N,8,1", 2},  {"4800,N,8,1", 3},  {"1200,N,8,1", 12}, {"300,N,8,1", 50},
        {"19200,N,8,1", 1}, {"38400,N,8,1", 0}, {"6000,N,8,1", 2}, // 2.5, halves to even
        {"nonsense!!", 0},  {"0.01,N,8,1", 0},
    };
    for (const auto& [settings, settle] : cases) {
        SerialRig rig;
        rig.build({"1;" + settings + ";1"});
        EXPECT_EQ(rig.state.gCharTime[0], settle) << settings;
        EXPECT_EQ(rig.ports[0]->Settings(), settings);
    }
}

TEST(ChannelTable, SettingsOfTheWrongLengthAreReplaced) {
    for (const std::string settings :
         {"115200,N,8,1", "9600,N,8", "9600, N, 8, 1", "NO PORT DATA", ""}) {
        SerialRig rig;
        rig.build({"1;" + settings + ";1"});
        EXPECT_EQ(rig.ports[0]->Settings(), "9600,N,8,1") << settings;
        EXPECT_EQ(rig.dialogs.texts(), Texts{"Port settings are not valid in 'sub init_comms**'"});
    }
}

TEST(ChannelTable, BadPortNumberComesBackUntilTheFileIsMended) {
    SerialRig rig;
    int seen = 0;
    rig.dialogs.on_message = [&](const std::string&) {
        if (++seen == 3)
            ini_write_string("COMMS CONTROLS", "DEVICE 0 COMM PORT ", "5", rig.config.gIniFile);
    };
    rig.build({"17;9600,N,8,1;1"});
    EXPECT_EQ(rig.dialogs.texts(), Texts(3, "Port number is not valid in 'sub init_comms*'"));
    EXPECT_EQ(rig.ports[0]->CommPort(), 5);
}

TEST(ChannelTable, ModemModes) {
    const std::vector<std::tuple<std::string, std::string, bool>> cases{
        {"0", "DTREnable 0, RTSEnable 0, Handshaking 0", false},
        {"1", "DTREnable 1, RTSEnable 1, Handshaking 0", false},
        {"2", "DTREnable 1, RTSEnable 0, Handshaking 0", true},
        {"3", "DTREnable 0, RTSEnable 0, Handshaking 1", false},
        {"4", "DTREnable 1, RTSEnable 1, Handshaking 1", false},
        {"5", "DTREnable 1, RTSEnable 0, Handshaking 1", true},
        {"words", "DTREnable 0, RTSEnable 0, Handshaking 0", false},
        {"7", "", true}, // unknown: lines and flag stay as they were
    };
    SerialRig rig;
    for (const auto& [mode, lines, toggle] : cases) {
        if (mode == "7") rig.state.gRtsToggle[0] = true;
        rig.build({"1;9600,N,8,1;" + mode});
        EXPECT_EQ(rig.ports[0]->history(), lines) << mode;
        EXPECT_EQ(rig.state.gRtsToggle[0], toggle) << mode;
    }
}

TEST(ChannelTable, FifthChannelIsOutOfRangeAndFourStay) {
    SerialRig rig;
    const std::string channel = "1;9600,N,8,1;1";
    try {
        rig.build({channel, channel, channel, channel, channel});
        FAIL() << "no error";
    } catch (const RunTimeError& error) {
        EXPECT_EQ(error.number(), 9);
    }
    EXPECT_EQ(rig.state.gCommDevice.size(), 4U);
}

TEST(ChannelTable, DefineChecksItsArguments) {
    SerialRig rig;
    rig.build({"1;9600,N,8,1;1", "2;9600,N,8,1;1"});
    rig.table.define_comms_control(0, 17, "9600,N,8,1", "1");
    rig.table.define_comms_control(2, 3, "9600,N,8,1", "1");
    rig.table.define_comms_control(-1, 3, "9600,N,8,1", "1");
    EXPECT_EQ(rig.dialogs.texts(),
              (Texts{"port_number% can only be (1 to 16) in sub define_comms_control",
                     "comms_control% can only be (0 to 1) in sub define_comms_control",
                     "comms_control% can only be (0 to 1) in sub define_comms_control"}));
    EXPECT_EQ(rig.ports[0]->CommPort(), 1);
}

TEST(ChannelTable, RebuildingClosesEveryPort) {
    SerialRig rig;
    rig.build({"1;9600,N,8,1;1", "2;9600,N,8,1;1"});
    for (std::int16_t channel : {std::int16_t{0}, std::int16_t{1}})
        rig.table.open_port(channel);
    rig.rebuild();
    EXPECT_EQ(rig.closings, (Texts{"port 1", "port 2"}));
    EXPECT_FALSE(rig.ports[0]->PortOpen());
}

TEST(OpenPort, SharesAnOpenTwinAndClosesOneWithOtherSettings) {
    SerialRig rig;
    rig.build({"1;9600,N,8,1;1", "2;9600,N,8,1;1", "1;9600,N,8,1;1", "1;4800,N,8,1;1"});
    std::int16_t channel = 0;
    EXPECT_EQ(rig.table.open_port(channel), 0);
    channel = 2;
    EXPECT_EQ(rig.table.open_port(channel), 0);
    EXPECT_EQ(channel, 2);
    EXPECT_FALSE(rig.ports[2]->PortOpen());
    channel = 3;
    EXPECT_EQ(rig.table.open_port(channel), 3);
    EXPECT_FALSE(rig.ports[0]->PortOpen());
    EXPECT_TRUE(rig.ports[3]->PortOpen());
}

TEST(OpenPort, KeepsOnlyOneOpenTwin) {
    SerialRig rig;
    rig.build({"1;9600,N,8,1;1", "1;9600,N,8,1;1", "1;9600,N,8,1;1"});
    rig.ports[0]->set_PortOpen(true);
    rig.ports[1]->set_PortOpen(true);
    std::int16_t channel = 2;
    EXPECT_EQ(rig.table.open_port(channel), 0);
    EXPECT_TRUE(rig.ports[0]->PortOpen());
    EXPECT_FALSE(rig.ports[1]->PortOpen());
}

TEST(OpenPort, UnknownChannelIsSaidAndBecomesZero) {
    SerialRig rig;
    rig.build({"1;9600,N,8,1;1"});
    for (std::int16_t wrong : {std::int16_t{7}, std::int16_t{-1}}) {
        std::int16_t channel = wrong;
        EXPECT_EQ(rig.table.open_port(channel), 0);
        EXPECT_EQ(channel, 0);
    }
    EXPECT_EQ(rig.dialogs.texts(),
              Texts(2, "This device/protocol has not been initialized. Check Pelvax6.ini."));
}

TEST(OpenPort, SaysEachErrorInItsOwnWords) {
    const std::vector<std::pair<int, std::string>> cases{
        {8002, "INVALID PORT NUMBER"},
        {8005, "PORT ALREADY OPEN"},
        {8010, "THE HARDWARE IS NOT AVAILABLE(LOCKED BY ANOTHER DEVICE)"},
        {8015, "COULD NOT SET COMM STATE"},
        {8020, "ERROR READING COMM DEVICE"},
        {8017, "COMM ERROR NUMBER: 8017.  CHECK PORT/SETTINGS"},
        {11, "DIVISION BY ZERO ERROR"},
    };
    for (const auto& [number, text] : cases) {
        SerialRig rig;
        rig.build({"3;9600,N,8,1;1"});
        rig.ports[0]->fail_next("PortOpen", number);
        std::int16_t channel = 0;
        EXPECT_EQ(rig.table.open_port(channel), 0);
        ASSERT_FALSE(rig.dialogs.shown.empty());
        EXPECT_EQ(rig.dialogs.shown[0].text, text);
        EXPECT_EQ(rig.dialogs.shown[0].title, "");
        const std::string line =
            "11-15-2026, 16:30:05, open_port, ERROR #,  " + std::to_string(number) + " \r\n";
        EXPECT_EQ(rig.log_text().substr(0, line.size()), line);
    }
}

TEST(OpenPort, UnavailableDeviceIsTriedAgainAfterEveryWarning) {
    SerialRig rig;
    rig.build({"3;9600,N,8,1;1"});
    rig.ports[0]->fail_next("PortOpen", 68);
    rig.ports[0]->fail_next("PortOpen", 68);
    std::int16_t channel = 0;
    rig.table.open_port(channel);
    EXPECT_EQ(rig.dialogs.texts(), Texts(2, "Cannot open comm port #3, it is not available"));
    EXPECT_EQ(rig.dialogs.shown[0].title, "WARNING");
    EXPECT_TRUE(rig.ports[0]->PortOpen());
}

} // namespace
} // namespace pelvan
