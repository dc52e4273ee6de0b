#include <gtest/gtest.h>

#include "support/cases.h"
#include "support/serial_rig.h"

namespace pelvan::testing {

struct ChannelTableTest : ::testing::Test, SerialRig {
    /// What a channel was built with: "port settings settle-time [toggles] events".
    std::string channel(std::size_t n) {
        return std::to_string(ports[n]->CommPort()) + " " + ports[n]->Settings() + " " +
               std::to_string(state.gCharTime[n]) + " " + (state.gRtsToggle[n] ? "toggles " : "") +
               ports[n]->history();
    }
};

TEST_F(ChannelTableTest, ReadsChannelsUpToTheFirstGapAndGivesOneDefaultForNone) {
    for (const bool empty_file : {false, true}) {
        empty_file ? build({}) : rebuild();
        EXPECT_EQ(state.gCommDevice.size(), 1U);
        EXPECT_EQ(channel(0), "2 9600,N,8,1 2 DTREnable 1, RTSEnable 1, Handshaking 0");
    }
    build({"1;9600,N,8,1;0", "16;300,E,7,2;2", "0;9600,N,8,1;1", "4;9600,N,8,1;1"});
    EXPECT_EQ(state.gCommDevice.size(), 2U);
    EXPECT_EQ(channel(1), "16 300,E,7,2 50 toggles DTREnable 1, RTSEnable 0, Handshaking 0");
    EXPECT_TRUE(dialogs.shown.empty());
}

TEST_F(ChannelTableTest, SettleTimesFollowTheBaudRateAndLinesTheMode) {
    for (const auto& [keys, built] :
         cases("1200,N,8,1;0->1200,N,8,1 12 DTREnable 0, RTSEnable 0, Handshaking 0|"
               "38400,N,8,1;1->38400,N,8,1 0 DTREnable 1, RTSEnable 1, Handshaking 0|"
               "6000,N,8,1;2->6000,N,8,1 2 toggles DTREnable 1, RTSEnable 0, Handshaking 0|" // 2.5
               "nonsense!!;3->nonsense!! 0 DTREnable 0, RTSEnable 0, Handshaking 1|"
               "0.01,N,8,1;4->0.01,N,8,1 0 DTREnable 1, RTSEnable 1, Handshaking 1|"
               "9600,N,8,1;words->9600,N,8,1 2 DTREnable 0, RTSEnable 0, Handshaking 0|"
               "9600,N,8,1;5->9600,N,8,1 2 toggles DTREnable 1, RTSEnable 0, Handshaking 1|"
               "9600,N,8,1;7->9600,N,8,1 2 toggles ")) { // unknown: all stays as it was
        build({"1;" + keys});
        EXPECT_EQ(channel(0), "1 " + built);
    }
    EXPECT_TRUE(dialogs.shown.empty());
    for (const std::string wrong_length : {"115200,N,8,1", "9600,N,8", ""}) {
        dialogs.shown.clear();
        build({"1;" + wrong_length + ";1"});
        EXPECT_EQ(channel(0), "1 9600,N,8,1 2 DTREnable 1, RTSEnable 1, Handshaking 0");
        EXPECT_EQ(dialogs.texts(), Texts{"Port settings are not valid in 'sub init_comms**'"});
    }
}

TEST_F(ChannelTableTest, BadPortNumberComesBackUntilTheFileIsMended) {
    dialogs.on_message = [&](const std::string&) {
        if (dialogs.shown.size() == 3)
            ini_write_string("COMMS CONTROLS", "DEVICE 0 COMM PORT ", "5", config.gIniFile);
    };
    build({"17;9600,N,8,1;1"});
    EXPECT_EQ(dialogs.texts(), Texts(3, "Port number is not valid in 'sub init_comms*'"));
    EXPECT_EQ(ports[0]->CommPort(), 5);
}

TEST_F(ChannelTableTest, DefineChecksItsArguments) {
    build({"1;9600,N,8,1;1", "2;9600,N,8,1;1"});
    table.define_comms_control(0, 17, "9600,N,8,1", "1");
    table.define_comms_control(2, 3, "9600,N,8,1", "1");
    table.define_comms_control(-1, 3, "9600,N,8,1", "1");
    const std::string bad = "comms_control% can only be (0 to 1) in sub define_comms_control";
    EXPECT_EQ(dialogs.texts(),
              (Texts{"port_number% can only be (1 to 16) in sub define_comms_control", bad, bad}));
}

TEST_F(ChannelTableTest, SharesOneOpenTwinAndClosesTheOthers) {
    const std::string same = "1;9600,N,8,1;1";
    // The fourth channel, what is open before, the wanted one, the used one, what is open then.
    const std::tuple<std::string, std::string, std::int16_t, int, std::string> twins[] = {
        {"2;9600,N,8,1;1", "0001", 0, 0, "1001"},
        {"1;4800,N,8,1;1", "1000", 2, 0, "1000"},
        {"1;4800,N,8,1;1", "1100", 2, 0, "1000"},
        {"1;4800,N,8,1;1", "1000", 3, 3, "0001"}};
    for (const auto& [fourth, before, wanted, used, after] : twins) {
        build({same, same, same, fourth});
        for (std::size_t i = 0; i < ports.size(); ++i)
            if (before[i] == '1') ports[i]->set_PortOpen(true);
        EXPECT_EQ(open_port(wanted), used);
        std::string now;
        for (const auto* port : ports)
            now += port->PortOpen() ? '1' : '0';
        EXPECT_EQ(now, after) << before;
    }
}

TEST_F(ChannelTableTest, UnknownChannelIsSaidAndBecomesZero) {
    build({"1;9600,N,8,1;1"});
    for (std::int16_t wrong : {std::int16_t{7}, std::int16_t{-1}}) {
        EXPECT_EQ(table.open_port(wrong), 0);
        EXPECT_EQ(wrong, 0);
    }
    EXPECT_EQ(dialogs.texts(),
              Texts(2, "This device/protocol has not been initialized. Check Pelvax6.ini."));
}

TEST_F(ChannelTableTest, SaysEachErrorInItsOwnWords) {
    for (const auto& [number, text] :
         cases("8000->OPERATION NOT VALID WHILE THE PORT IS OPEN|"
               "8001->TIMEOUT VALUE MUST BE GREATER THAN ZERO|8002->INVALID PORT NUMBER|"
               "8003->PROPERTY AVAILABLE ONLY AT RUNTIME|8004->PROPERTY IS READONLY AT RUNTIME|"
               "8005->PORT ALREADY OPEN|"
               "8006->THE DEVICE IDENTIFIER IS INVALID OR UNSUPPORTED|"
               "8007->THE DEVICE'S BAUD RATE IS UNSUPPORTED|"
               "8008->THE SPECIFIED BYTE SIZE IS INVALID|8009->THE DEFAULT PARAMETERS ARE IN ERROR|"
               "8010->THE HARDWARE IS NOT AVAILABLE(LOCKED BY ANOTHER DEVICE)|"
               "8011->THE FUNCTION CANNOT ALLOCATE THE QUEUES|8012->THE DEVICE IS NOT OPEN|"
               "8013->THE DEVICE IS ALREADY OPEN|8014->COULD NOT ENABLE COMM NOTIFICATION|"
               "8015->COULD NOT SET COMM STATE|8016->COULD NOT SET COMM EVENT MASK|"
               "8018->OPERATION VALID ONLY WHEN THE PORT IS OPEN|8019->DEVICE BUSY|"
               "8020->ERROR READING COMM DEVICE|"
               "8017->COMM ERROR NUMBER: 8017.  CHECK PORT/SETTINGS|11->DIVISION BY ZERO ERROR")) {
        build({"3;9600,N,8,1;1"});
        dialogs.shown.clear();
        ports[0]->fail_next("PortOpen", std::stoi(number));
        EXPECT_EQ(open_port(0), 0);
        EXPECT_EQ(dialogs.texts().at(0), text);
        EXPECT_NE(log_text().find("open_port, ERROR #,  " + number), std::string::npos);
    }
}

TEST_F(ChannelTableTest, UnavailableDeviceIsTriedAgainAfterEveryWarning) {
    build({"3;9600,N,8,1;1"});
    ports[0]->fail_next("PortOpen", 68);
    ports[0]->fail_next("PortOpen", 68);
    open_port(0);
    EXPECT_EQ(dialogs.texts(), Texts(2, "Cannot open comm port #3, it is not available"));
    EXPECT_EQ(dialogs.shown[0].title, "WARNING");
    EXPECT_TRUE(ports[0]->PortOpen());
}

} // namespace pelvan::testing
