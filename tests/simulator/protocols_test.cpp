// Full, Xon and Tellura/AB dialogues on one line, and the command language that the first two
// share.
#include <gtest/gtest.h>

#include "bytes.h"
#include "simulator/simulator_hub.h"
#include "support/fake_time.h"

using namespace pelvan;
using namespace pelvan::simulator;
using pelvan::testing::bytes;
using pelvan::testing::FakeTick;
using pelvan::testing::frame;
using pelvan::testing::hex_of;

namespace {

class ProtocolsTest : public ::testing::Test {
  protected:
    ProtocolsTest() { tick.step_ms = 0; }

    void open(const std::string& device, LineSettings settings = {}) {
        line = hub.open(device, settings);
    }
    std::string say(const std::string& request, double wait_ms = 600) {
        line->write(request);
        tick.advance(wait_ms);
        std::string reply;
        line->read_into(reply);
        return reply;
    }
    /// A Full message and its answer.
    std::string command(const std::string& text) { return say("\x02" + text + "\x03"); }

    FakeTick tick;
    SimulatorHub hub{tick};
    std::unique_ptr<SerialLine> line;
};

const std::string kPoll = "1\x05";
const std::string kAck = "\x06";
const std::string kNak = "\x15";
const std::string kEot = "\x04";
const std::string kEnd = "\n\x04";

} // namespace

TEST_F(ProtocolsTest, FullReadsRepeatsAndEnds) {
    open("simulated:742");
    EXPECT_EQ(command("? MDL"), ""); // not polled yet
    EXPECT_EQ(say("2\x05"), "");
    EXPECT_EQ(say(kPoll), "1" + kAck);
    EXPECT_EQ(command("? MDL"), kAck);
    EXPECT_EQ(say(kEot), "\x02"
                         "742\x03");
    EXPECT_EQ(say(kNak), "\x02"
                         "742\x03"); // the host did not get it whole,
    EXPECT_EQ(say(kEot), "\x02"
                         "742\x03"); // and turns the line round again
    EXPECT_EQ(say(kEot), "");
    EXPECT_EQ(say(kEnd), "");
    EXPECT_EQ(command("? MDL"), "");
}

TEST_F(ProtocolsTest, FullTellsTheErrorOfARefusedCommandOnce) {
    open("simulated:742,address=10");
    EXPECT_EQ(say("A\x05"), "A" + kAck);
    EXPECT_EQ(command("= SP1 5000"), kNak);
    for (const char* code : {"25", "0"}) {
        EXPECT_EQ(command("? ER2"), kAck);
        EXPECT_EQ(say(kEot), "\x02" + std::string(code) + "\x03");
    }
    EXPECT_EQ(command("= SP1 100.5"), kAck);
    EXPECT_EQ(say(kEot), "");
    EXPECT_EQ(say(kEnd + "A\x05"), "A" + kAck); // sent in one go
    EXPECT_EQ(say(frame("0A 03 01 2C 00 01")), frame("0A 03 02 03 ED"));
}

TEST_F(ProtocolsTest, FullFaults) {
    open("simulated:742,lost_ack=1,no_etx=1");
    EXPECT_EQ(say(kPoll), "1" + kAck);
    EXPECT_EQ(command("? MDL"), "");
    EXPECT_EQ(say(kEot), "\x02"
                         "742");
    open("simulated:742,nak=1");
    EXPECT_EQ(say(kPoll), "1" + kAck);
    EXPECT_EQ(command("? MDL"), kNak);
    open("simulated:742,other=1");
    EXPECT_EQ(say(kPoll), "2" + kAck);
}

TEST_F(ProtocolsTest, TheCommandLanguage) {
    const std::vector<std::pair<std::string, std::string>> cases{
        {"? C1", "25.0"},
        {"?SP1", "75.0"},
        {"= SP1 -12.34", "OK"},
        {"? sp1", "-12.3"},
        {"? A1LO", "-50.0"},
        {"= PB2 30", "OK"},
        {"? PB2", "30.0"},
        {"= IT1 45", "OK"},
        {"? IT1", "45"},
        {"XYZ", "ERROR 20"},
        {"? XYZ", "ERROR 20"},
        {"? SP9", "ERROR 21"},
        {"?", "ERROR 22"},
        {"= SP1", "ERROR 22"},
        {"= SP1 abc", "ERROR 23"},
        {"? SP1 1", "ERROR 23"},
        {"= SP1 1000", "ERROR 25"},
        {"= C1 3", "ERROR 26"},
        {"? ER2", "26"},
        {"? ER2", "0"},
        {"= ER2 1", "ERROR 26"},
        {"? CLR", "ERROR 27"},
        {"= CLR 1", "OK"},
        {"? RTX", "ERROR 28"},
        {"= SP1 1e99", "ERROR 25"},
        {"? " + std::string(60, 'A'), "ERROR 24"},
    };
    open("simulated:742");
    // The process begins to move with the first command: that one is read soon.
    for (const auto& [text, reply] : cases) {
        EXPECT_EQ(say(text + "\r", text == "? C1" ? 20 : 600), reply + "\r") << text;
    }
    open("simulated:730");
    EXPECT_EQ(say("? C2\r"), "ERROR 21\r");
}

TEST_F(ProtocolsTest, XonLinesMayBeTypedAndPausesAreTakenOutByFlowControl) {
    open("simulated:742");
    EXPECT_EQ(say("? M"), "");
    EXPECT_EQ(say("DL"), "");
    EXPECT_EQ(say("\r"), "742\r");
    EXPECT_EQ(say("\r"), "");
    EXPECT_EQ(say("? MDL\r? REV\r"), "742\r203\r");
    open("simulated:742,xoff=1");
    EXPECT_EQ(say("? MDL\r", 50), "\x13");
    EXPECT_EQ(say(""), "\x11"
                       "742\r");
    LineSettings settings;
    settings.xon_xoff = true;
    open("simulated:742,xoff=1", settings);
    EXPECT_EQ(say("? MDL\r", 50), "");
    EXPECT_EQ(say(""), "742\r");
}

// The BCC is the two's complement of the sum; the CRCs were worked out bit by bit with a separate
// script from the published polynomial.
TEST_F(ProtocolsTest, TelluraReadsAndWrites) {
    struct Case {
        const char* what;
        const char* request;
        const char* reply;
    };
    const std::vector<Case> cases{
        {"read, BCC", "10 02 08 00 01 00 00 00 00 00 02 10 03 F5",
         "10 06 10 02 00 08 41 00 00 00 02 E6 10 03 CF"},
        {"read, CRC", "10 02 08 00 01 00 00 00 00 00 02 10 03 01 47",
         "10 06 10 02 00 08 41 00 00 00 02 E6 10 03 FB 03"},
        {"wrong BCC", "10 02 08 00 01 00 00 00 00 00 02 10 03 F4", "10 15"},
        {"the answer again", "10 05", "10 15"},
        {"write 16 to register 300", "10 02 08 00 08 00 00 00 01 2C 00 10 10 10 03 B3",
         "10 06 10 02 00 08 48 00 00 00 10 03 B0"},
        {"read it, doubled", "10 02 08 00 01 00 00 00 01 2C 02 10 03 C8",
         "10 06 10 02 00 08 41 00 00 00 00 10 10 10 03 A7"},
        {"the packet again", "10 15", "10 02 00 08 41 00 00 00 00 10 10 10 03 A7"},
        {"unknown register", "10 02 08 00 01 00 00 00 00 05 02 10 03 F0",
         "10 06 10 02 00 08 41 50 00 00 10 03 67"},
        {"value out of limit", "10 02 08 00 08 00 00 00 01 2C 7F FF 10 03 45",
         "10 06 10 02 00 08 48 60 00 00 10 03 50"},
        {"another device", "10 02 09 00 01 00 00 00 00 00 02 10 03 F4", ""},
    };
    open("simulated:742");
    for (const Case& c : cases)
        EXPECT_EQ(hex_of(say(bytes(c.request))), c.reply) << c.what;
}
