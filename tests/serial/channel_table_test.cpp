#include <gtest/gtest.h>

#include "support/serial_rig.h"

namespace pelvan {
namespace {

using Texts = std::vector<std::string>;

class ChannelTableTest : public ::testing::Test, public testing::SerialRig {};
class OpenPortTest : public ChannelTableTest {};

TEST_F(ChannelTableTest, MissingOrEmptyFileGivesOneDefaultChannel) {
    for (const bool empty_file : {false, true}) {
        empty_file ? build({}) : rebuild();
        ASSERT_EQ(state.gCommDevice.size(), 1U);
        EXPECT_EQ(ports[0]->CommPort(), 2);
        EXPECT_EQ(ports[0]->Settings(), "9600,N,8,1");
        EXPECT_EQ(ports[0]->history(), "DTREnable 1, RTSEnable 1, Handshaking 0");
        EXPECT_EQ(state.gCharTime[0], 2);
    }
    EXPECT_TRUE(dialogs.shown.empty());
}

TEST_F(ChannelTableTest, ReadsChannelsUpToTheFirstGap) {
    build({"1;9600,N,8,1;0", "16;300,E,7,2;2", "0;9600,N,8,1;1", "4;9600,N,8,1;1"});
    ASSERT_EQ(state.gCommDevice.size(), 2U);
    EXPECT_EQ(ports[1]->CommPort(), 16);
    EXPECT_EQ(ports[1]->Settings(), "300,E,7,2");
    EXPECT_TRUE(state.gRtsToggle[1]);
    EXPECT_EQ(state.gCharTime[1], 50);
}

TEST_F(ChannelTableTest, SettleTimesFollowTheBaudRate) {
    const std::vector<std::pair<std::string, int>> cases{
        {"1200,N,8,1", 12}, {"38400,N,8,1", 0}, {"6000,N,8,1", 2}, // 2.5, halves to even
        {"nonsense!!", 0},  {"0.01,N,8,1", 0},
    };
    for (const auto& [settings, settle] : cases) {
        build({"1;" + settings + ";1"});
        EXPECT_EQ(state.gCharTime[0], settle) << settings;
    }
}

TEST_F(ChannelTableTest, SettingsOfTheWrongLengthAreReplaced) {
    for (const std::string settings : {"115200,N,8,1", "9600,N,8", ""}) {
        dialogs.shown.clear();
        build({"1;" + settings + ";1"});
        EXPECT_EQ(ports[0]->Settings(), "9600,N,8,1") << settings;
        EXPECT_EQ(dialogs.texts(), Texts{"Port settings are not valid in 'sub init_comms**'"});
    }
}

TEST_F(ChannelTableTest, BadPortNumberComesBackUntilTheFileIsMended) {
    int seen = 0;
    dialogs.on_message = [&](const std::string&) {
        if (++seen == 3)
            ini_write_string("COMMS CONTROLS", "DEVICE 0 COMM PORT ", "5", config.gIniFile);
    };
    build({"17;9600,N,8,1;1"});
    EXPECT_EQ(dialogs.texts(), Texts(3, "Port number is not valid in 'sub init_comms*'"));
    EXPECT_EQ(ports[0]->CommPort(), 5);
}

TEST_F(ChannelTableTest, ModemModes) {
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
    for (const auto& [mode, lines, toggle] : cases) {
        if (mode == "7") state.gRtsToggle[0] = true;
        build({"1;9600,N,8,1;" + mode});
        EXPECT_EQ(ports[0]->history(), lines) << mode;
        EXPECT_EQ(state.gRtsToggle[0], toggle) << mode;
    }
}

TEST_F(ChannelTableTest, DefineChecksItsArguments) {
    build({"1;9600,N,8,1;1", "2;9600,N,8,1;1"});
    table.define_comms_control(0, 17, "9600,N,8,1", "1");
    table.define_comms_control(2, 3, "9600,N,8,1", "1");
    table.define_comms_control(-1, 3, "9600,N,8,1", "1");
    const std::string channel = "comms_control% can only be (0 to 1) in sub define_comms_control";
    EXPECT_EQ(dialogs.texts(),
              (Texts{"port_number% can only be (1 to 16) in sub define_comms_control", channel,
                     channel}));
}

TEST_F(ChannelTableTest, RebuildingClosesEveryPort) {
    build({"1;9600,N,8,1;1", "2;9600,N,8,1;1"});
    for (std::int16_t channel : {std::int16_t{0}, std::int16_t{1}})
        table.open_port(channel);
    rebuild();
    EXPECT_EQ(closings, (Texts{"port 1", "port 2"}));
}

TEST_F(OpenPortTest, SharesOneOpenTwinAndClosesTheOthers) {
    const std::string same = "1;9600,N,8,1;1";
    // The fourth channel, what is open before, the wanted one, the used one, what is open then.
    const std::vector<std::tuple<std::string, std::string, std::int16_t, int, std::string>> cases{
        {"2;9600,N,8,1;1", "0001", 0, 0, "1001"},
        {"1;4800,N,8,1;1", "1000", 2, 0, "1000"},
        {"1;4800,N,8,1;1", "1100", 2, 0, "1000"},
        {"1;4800,N,8,1;1", "1000", 3, 3, "0001"},
    };
    for (auto [fourth, before, channel, used, after] : cases) {
        build({same, same, same, fourth});
        for (std::size_t i = 0; i < ports.size(); ++i)
            if (before[i] == '1') ports[i]->set_PortOpen(true);
        EXPECT_EQ(table.open_port(channel), used);
        for (std::size_t i = 0; i < ports.size(); ++i)
            EXPECT_EQ(ports[i]->PortOpen(), after[i] == '1') << before << " " << i;
    }
}

TEST_F(OpenPortTest, UnknownChannelIsSaidAndBecomesZero) {
    build({"1;9600,N,8,1;1"});
    for (std::int16_t wrong : {std::int16_t{7}, std::int16_t{-1}}) {
        std::int16_t channel = wrong;
        EXPECT_EQ(table.open_port(channel), 0);
        EXPECT_EQ(channel, 0);
    }
    EXPECT_EQ(dialogs.texts(),
              Texts(2, "This device/protocol has not been initialized. Check Pelvax6.ini."));
}

TEST_F(OpenPortTest, SaysEachErrorInItsOwnWords) {
    const std::vector<std::pair<int, std::string>> cases{
        {8000, "OPERATION NOT VALID WHILE THE PORT IS OPEN"},
        {8001, "TIMEOUT VALUE MUST BE GREATER THAN ZERO"},
        {8002, "INVALID PORT NUMBER"},
        {8003, "PROPERTY AVAILABLE ONLY AT RUNTIME"},
        {8004, "PROPERTY IS READONLY AT RUNTIME"},
        {8005, "PORT ALREADY OPEN"},
        {8006, "THE DEVICE IDENTIFIER IS INVALID OR UNSUPPORTED"},
        {8007, "THE DEVICE'S BAUD RATE IS UNSUPPORTED"},
        {8008, "THE SPECIFIED BYTE SIZE IS INVALID"},
        {8009, "THE DEFAULT PARAMETERS ARE IN ERROR"},
        {8010, "THE HARDWARE IS NOT AVAILABLE(LOCKED BY ANOTHER DEVICE)"},
        {8011, "THE FUNCTION CANNOT ALLOCATE THE QUEUES"},
        {8012, "THE DEVICE IS NOT OPEN"},
        {8013, "THE DEVICE IS ALREADY OPEN"},
        {8014, "COULD NOT ENABLE COMM NOTIFICATION"},
        {8015, "COULD NOT SET COMM STATE"},
        {8016, "COULD NOT SET COMM EVENT MASK"},
        {8018, "OPERATION VALID ONLY WHEN THE PORT IS OPEN"},
        {8019, "DEVICE BUSY"},
        {8020, "ERROR READING COMM DEVICE"},
        {8017, "COMM ERROR NUMBER: 8017.  CHECK PORT/SETTINGS"},
        {11, "DIVISION BY ZERO ERROR"},
    };
    for (const auto& [number, text] : cases) {
        build({"3;9600,N,8,1;1"});
        dialogs.shown.clear();
        ports[0]->fail_next("PortOpen", number);
        std::int16_t channel = 0;
        EXPECT_EQ(table.open_port(channel), 0);
        EXPECT_EQ(dialogs.texts().at(0), text);
        EXPECT_NE(log_text().find("open_port, ERROR #,  " + std::to_string(number)),
                  std::string::npos);
    }
}

TEST_F(OpenPortTest, UnavailableDeviceIsTriedAgainAfterEveryWarning) {
    build({"3;9600,N,8,1;1"});
    ports[0]->fail_next("PortOpen", 68);
    ports[0]->fail_next("PortOpen", 68);
    std::int16_t channel = 0;
    table.open_port(channel);
    EXPECT_EQ(dialogs.texts(), Texts(2, "Cannot open comm port #3, it is not available"));
    EXPECT_EQ(dialogs.shown[0].title, "WARNING");
    EXPECT_TRUE(ports[0]->PortOpen());
}

} // namespace
} // namespace pelvan
