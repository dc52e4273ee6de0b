// Commands to a simulated controller on a line that echoes, in all protocols, and to one that stops
// its host.
#include <gtest/gtest.h>

#include "console/senders.h"
#include "support/simulated_ports.h"

namespace pelvan::testing {

class EchoingControllerTest : public ::testing::TestWithParam<const char*>, public SerialRig {
  protected:
    void start(const std::string& options, const std::string& echo = "YES") {
        configure_devices(dir, std::vector<std::string>(4, "simulated:742" + options));
        exchange_by(GetParam());
        set_channels(ini_key::echo, echo);
    }
    /// Sends a read and a write in each protocol; what was said of those that counted, and of those
    /// that did not.
    void send() {
        counted = refused = {};
        take(senders.modbus.send({2, "1", "0", "3", false}, {}));   // a read
        take(senders.modbus.send({5, "1", "300", "3", false}, {})); // a write of one register
        for (const char* command : {"? C1", "= SP1 50"})
            for (const auto protocol : {TextProtocol::Full, TextProtocol::Xon})
                take(senders.text.send(protocol, {"1", command}));
        for (const bool write : {false, true})
            take(senders.tellura.send({"1", "0000", "2", "0001", write, TelluraCheck::Bcc}));
    }
    void take(const SendOutcome& outcome) {
        (outcome.accepted ? counted : refused).push_back(outcome.remark);
        tick.advance(LateAnswers::kDoubtMs + 1); // nobody is in doubt any more
    }

    SimulatedPorts simulated{*this};
    ModbusState modbus_state;
    Modbus modbus{modbus_state};
    Senders senders{link, modbus, clock, dialogs};
    std::vector<std::string> counted;
    std::vector<std::string> refused;
};

INSTANTIATE_TEST_SUITE_P(, EchoingControllerTest, ::testing::Values("QUIET", "COMPLETE"));

TEST_P(EchoingControllerTest, AnswersAllProtocolsAndADamagedEchoNeverCounts) {
    start("", "NO");
    send();
    const std::vector<std::string> answered = counted;
    ASSERT_GE(answered.size(), 7U);
    start(",echo=1");
    send();
    EXPECT_EQ(counted, answered);
    // A line without an echo: each reply counts but that of the write which is like its request.
    start("");
    send();
    EXPECT_EQ(counted.size() + 1, answered.size());
    for (const std::string& remark : counted)
        EXPECT_TRUE(remark.starts_with("The reply came without an echo")) << remark;
    const auto broadcast = [this] { return senders.modbus.send({5, "0", "300", "3", false}, {}); };
    start(",echo=1");
    EXPECT_TRUE(broadcast().accepted);
    start(",echo=1,echo_flip=1");
    EXPECT_FALSE(broadcast().accepted);
    send();
    EXPECT_TRUE(counted.empty());
    const SendOutcome differing = senders.modbus.send({2, "1", "0", "3", false}, {});
    EXPECT_EQ(differing.status, differing.remark) << "something came";
    tick.advance(LateAnswers::kDoubtMs + 1);
    for (const std::string& remark : refused)
        EXPECT_FALSE(remark.empty());
    start(",echo=1,lost=1,lost_ack=1");
    const SendOutcome silent = senders.modbus.send({2, "1", "0", "3", false}, {});
    EXPECT_EQ(silent.remark, "The echo of the command came, but no answer.");
    configure_devices(dir, std::vector<std::string>(4, dir.file("unplugged")));
    set_channels(ini_key::echo, "YES");
    EXPECT_EQ(senders.modbus.send({2, "1", "0", "3", false}, {}).status,
              "Not sent: the port is not open.")
        << "so no echo is missed";
}

TEST_P(EchoingControllerTest, ACommandThatIsStoppedArrivesWholeOnlyWithTheProgramsHandshake) {
    for (const auto& [way, answered] : {std::pair("DRIVER", false), {"PROGRAM", true}}) {
        start(",xoff_after=3", "NO");
        for (int n = 0; n < 4; ++n)
            ini_write_string(ini_key::kCommsSection, ini_key::rts_mode(n), "4", config.gIniFile);
        set_channels(ini_key::xon_xoff, way);
        const SendOutcome sent = senders.text.send(TextProtocol::Xon, {"1", "= SP1 50"});
        EXPECT_EQ(sent.accepted, answered) << way;
        tick.advance(LateAnswers::kDoubtMs + 1);
    }
}

} // namespace pelvan::testing
