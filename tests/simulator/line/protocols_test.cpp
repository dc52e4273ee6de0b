// Full, Xon and Tellura/AB dialogues, and the command language that the first two share.
#include "line_test.h"

namespace pelvan::simulator {
namespace {

class ProtocolsTest : public LineTest {
  protected:
    /// A Full dialogue, message and answer by turns.
    void talk(const std::vector<std::pair<std::string, std::string>>& turns) {
        for (const auto& [message, answer] : turns)
            EXPECT_EQ(say(wire(message)), wire(answer)) << message;
    }
};

TEST_F(ProtocolsTest, FullReadsRepeatsAndEnds) {
    open("simulated:742");
    talk({{"{? MODEL}", ""}, {"2#", ""}, {"1#", "1^"}, {"{? MODEL}", "^"}, {"$", "{742}"}});
    // The host did not get it whole, and turns the line round again.
    talk({{"!", "{742}"}, {"$", "{742}"}, {"$", ""}, {"~$", ""}, {"{? MODEL}", ""}});
}

TEST_F(ProtocolsTest, FullTellsTheErrorOfARefusedCommandOnce) {
    open("simulated:742,address=10");
    talk({{"A#", "A^"}, {"{= SP1 5000}", "!"}, {"{? ER2}", "^"}, {"$", "{25}"}});
    talk({{"{? ER2}", "^"}, {"$", "{0}"}, {"{= SP1 100.5}", "^"}, {"$", ""}});
    talk({{"~$A#", "A^"}}); // sent in one go
    EXPECT_EQ(say(frame("0A 03 01 2C 00 01")), frame("0A 03 02 03 ED"));
}

TEST_F(ProtocolsTest, FullFaults) {
    open("simulated:742,lost_ack=1,no_etx=1");
    talk({{"1#", "1^"}, {"{? MODEL}", ""}, {"$", "{742"}});
    open("simulated:742,nak=1");
    talk({{"1#", "1^"}, {"{? MODEL}", "!"}});
    open("simulated:742,other=1");
    talk({{"1#", "2^"}});
}

TEST_F(ProtocolsTest, TheCommandLanguage) {
    const std::string cases =
        "? C1:25.0|?SP1:75.0|= SP1 -12.34:OK|? sp1:-12.3|= INTEGRAL1 45:OK|? INTEGRAL1:45|"
        "XYZ:ERROR 20|? SP9:ERROR 21|?:ERROR 22|= SP1:ERROR 22|= SP1 abc:ERROR 23|"
        "? SP1 1:ERROR 23|= SP1 1000:ERROR 25|= C1 3:ERROR 26|? ER2:26|? ER2:0|"
        "= ER2 1:ERROR 26|? COILSOFF:ERROR 27|? RETRANSMIT:ERROR 28|= SP1 1e99:ERROR 25";
    open("simulated:742");
    // The process begins to move with the first command: that one is read soon.
    for (const std::string& each : split(cases, '|')) {
        const auto turn = split(each, ':');
        EXPECT_EQ(say(turn[0] + "\r", turn[0] == "? C1" ? 20 : 600), turn[1] + "\r") << each;
    }
    EXPECT_EQ(say("? " + std::string(60, 'A') + "\r"), "ERROR 24\r");
}

TEST_F(ProtocolsTest, XonLinesMayBeTypedAndPausesAreTakenOutByFlowControl) {
    open("simulated:742");
    EXPECT_EQ(say("? M"), "");
    EXPECT_EQ(say("ODEL"), "");
    EXPECT_EQ(say("\r"), "742\r");
    EXPECT_EQ(say("\r? MODEL\r? REVISION\r"), "742\r203\r");
    for (const bool flow_control : {false, true}) {
        LineSettings settings;
        settings.xon_xoff = flow_control;
        open("simulated:742,xoff=1", settings);
        EXPECT_EQ(say("? MODEL\r", 50), flow_control ? "" : "\x13");
        EXPECT_EQ(say(""), std::string(flow_control ? "" : "\x11") + "742\r");
    }
}

// The BCC is the two's complement of the sum; the CRC was worked out with a separate script.
TEST_F(ProtocolsTest, TelluraReadsAndWrites) {
    const std::string to = "10 02 08 00 ";
    const std::string from = "10 06 10 02 00 08 ";
    const std::vector<std::pair<std::string, std::string>> turns{
        // Read the model; a wrong BCC; the answer to it again.
        {to + "01 00 00 00 00 00 02 10 03 01 47", from + "41 00 00 00 02 E6 10 03 FB 03"},
        {to + "01 00 00 00 00 00 02 10 03 F4", "10 15"},
        {"10 05", "10 15"},
        // Write 16 to register 300; read it, doubled; the packet again.
        {to + "08 00 00 00 01 2C 00 10 10 10 03 B3", from + "48 00 00 00 10 03 B0"},
        {to + "01 00 00 00 01 2C 02 10 03 C8", from + "41 00 00 00 00 10 10 10 03 A7"},
        {"10 15", "10 02 00 08 41 00 00 00 00 10 10 10 03 A7"},
        // A value out of limit, another device.
        {to + "08 00 00 00 01 2C 7F FF 10 03 45", from + "48 60 00 00 10 03 50"},
        {"10 02 09 00 01 00 00 00 00 00 02 10 03 F4", ""},
    };
    open("simulated:742");
    for (const auto& [request, reply] : turns)
        EXPECT_EQ(hex_of(say(bytes(request))), reply) << request;
}

} // namespace
} // namespace pelvan::simulator
