#include <gtest/gtest.h>

#include "platform/line_port.h"
#include "protocols/full/full_protocol.h"
#include "simulator/simulator_hub.h"
#include "support/serial_rig.h"

namespace pelvan {
namespace {

const std::string kAck = "\x06";
const std::string kNak = "\x15";
const std::string kEot = "\x04";
const std::string kEnd = "\n\x04";

std::string framed(const std::string& text) {
    return "\x02" + text + "\x03";
}

/// The dialogue on a scripted port; each script entry answers one message.
class FullTest : public ::testing::Test {
  protected:
    FullTest() { rig.build({"1;9600,N,8,1;1"}); }

    std::string run(const std::string& command, const std::vector<std::string>& script,
                    std::int16_t address = 1) {
        port().outputs.clear();
        port().replies.clear();
        for (const std::string& reply : script) {
            std::vector<testing::Arrival> arrivals;
            if (!reply.empty()) arrivals.push_back({0.5, reply});
            port().replies.push_back(arrivals);
        }
        return full.full_command(command, address, 5000);
    }
    testing::FakeSerialPort& port() { return *rig.ports[0]; }
    using Texts = std::vector<std::string>;

    testing::SerialRig rig;
    FullProtocol full{rig.link, rig.dialogs};
};

TEST_F(FullTest, DialoguesAndTheirOutcomes) {
    const std::string query = framed("? ER2");
    struct Case {
        const char* what;
        std::string command;
        Texts script;
        std::string result;
        Texts sent; // after the poll
        bool completed;
    };
    const std::vector<Case> cases{
        {"a read",
         "? C1",
         {"1" + kAck, kAck, framed("25.0")},
         "25.0",
         {framed("? C1"), kEot, kEot, kEnd},
         true},
        {"a read with an empty response",
         "? C1",
         {"1" + kAck, kAck, "\x03"},
         "",
         {framed("? C1"), kEot, kEot, kEnd},
         true},
        {"a write",
         "= SP1 5",
         {"1" + kAck, kAck},
         "MESSAGE COMPLETED",
         {framed("= SP1 5"), kEnd},
         true},
        {"a response without its end, then whole",
         "? C1",
         {"1" + kAck, kAck,
          "\x02"
          "25",
          framed("25"), framed("25.0")},
         "25.0",
         {framed("? C1"), kEot, kNak, kEot, kEot, kEnd},
         true},
        {"never whole",
         "? C1",
         {"1" + kAck, kAck,
          "\x02"
          "25",
          "\x02"
          "25"},
         "NAK NOT RECEIVED",
         {framed("? C1"), kEot, kNak, kEnd},
         false},
        {"whole only for the NAK",
         "? C1",
         {"1" + kAck, kAck, "", framed("25"), ""},
         "NOT RECEIVED",
         {framed("? C1"), kEot, kNak, kEot, kEnd},
         false},
        {"silence", "? C1", {""}, "COULDN'T CONNECT TO DEVICE", {}, false},
        {"another device", "? C1", {"2" + kAck}, "COULDN'T CONNECT TO DEVICE", {}, false},
        {"refused",
         "= C1 1",
         {"1" + kAck, kNak, kAck, framed(" 26")},
         "Read only command",
         {framed("= C1 1"), query, kEot, kEot, kEnd},
         false},
        {"refused, no reason given",
         "= C1 1",
         {"1" + kAck, kNak, kNak},
         "DEVICE ERROR COULDN'T BE DETECTED",
         {framed("= C1 1"), query, kEnd},
         false},
        {"refused, reason lost",
         "= C1 1",
         {"1" + kAck, kNak, kAck, ""},
         "DEVICE ERROR COULDN'T BE DETECTED",
         {framed("= C1 1"), query, kEot, kEnd},
         false},
    };
    for (const Case& each : cases) {
        EXPECT_EQ(run(each.command, each.script), each.result) << each.what;
        Texts sent{"1\x05"};
        sent.insert(sent.end(), each.sent.begin(), each.sent.end());
        EXPECT_EQ(port().outputs, sent) << each.what;
        EXPECT_EQ(full.completed(), each.completed) << each.what;
    }
    EXPECT_TRUE(rig.dialogs.shown.empty());
}

TEST_F(FullTest, ErrorCodesInWords) {
    const std::vector<std::pair<std::string, std::string>> cases{
        {"0", "No comms error"},       {"8", "Noise error"},
        {"9", "Unknown Error"},        {"20", "Command not found"},
        {"29", "Unknown Error"},       {"30", "Request to RUN invalid"},
        {"36", "Unknown Error"},       {"40", "Output 2 is not an Event"},
        {"41", "Asterisk expected"},   {"25.5", "Unknown Error"},
        {"nothing", "No comms error"}, {"-1", "Unknown Error"},
    };
    for (const auto& [code, text] : cases)
        EXPECT_EQ(run("= SP1 1", {"1" + kAck, kNak, kAck, framed(code)}), text) << code;
}

TEST_F(FullTest, AddressesAndTheMessageForABadOne) {
    const std::vector<std::pair<std::int16_t, std::string>> cases{{0, "0"},  {9, "9"},  {10, "A"},
                                                                  {32, "W"}, {33, "1"}, {-1, "1"}};
    for (const auto& [address, text] : cases) {
        static_cast<void>(run("? C1", {}, address));
        EXPECT_EQ(port().outputs, Texts{text + "\x05"}) << address;
    }
    EXPECT_EQ(rig.dialogs.texts(), Texts(2, "Device address is not valid. Defaulting to 1"));
}

TEST_F(FullTest, ACommandOfNeitherKindIsSentAndThenQuestioned) {
    std::size_t sent_at_message = 0;
    rig.dialogs.on_message = [&](const std::string&) { sent_at_message = port().outputs.size(); };
    EXPECT_EQ(run("C1", {"1" + kAck, kAck}), "");
    EXPECT_EQ(port().outputs, (Texts{"1\x05", framed("C1"), kEnd}));
    EXPECT_EQ(sent_at_message, 2U);
    EXPECT_EQ(rig.dialogs.texts(), Texts{"Beginning of comms command not valid (= or ?)"});
    EXPECT_FALSE(full.completed());
    EXPECT_EQ(run("", {"1" + kAck, kAck}), "");
    EXPECT_EQ(run("C1", {"1" + kAck, kNak, kAck, framed("20")}), "Command not found");
    EXPECT_EQ(rig.dialogs.shown.size(), 2U);
}

TEST_F(FullTest, ASilentDeviceIsGivenUpQuickly) {
    const double begun = rig.tick.now();
    static_cast<void>(run("? C1", {}));
    EXPECT_GE(rig.tick.now() - begun, 200);
    EXPECT_LT(rig.tick.now() - begun, 300);
}

/// The same with a simulated controller at the other end of a paced line.
TEST(FullOnTheSimulator, ReadsWritesAndExplains) {
    testing::SerialRig rig;
    simulator::SimulatorHub hub(rig.tick);
    std::string device;
    frm_Comms comms([&] {
        return std::make_unique<LinePort>([&](int) { return device; },
                                          [&](const std::string& text, const LineSettings& line) {
                                              return hub.open(text, line);
                                          });
    });
    ChannelTable table(rig.state, rig.config, comms, rig.dialogs, rig.log);
    Link link(table, rig.countdowns, rig.dialogs, rig.log);
    FullProtocol full(link, rig.dialogs);
    struct Case {
        const char* device;
        const char* command;
        const char* result;
    };
    const std::vector<Case> cases{
        {"simulated:742,address=10", "? MDL", "742"},
        {"simulated:742,address=10", "= SP1 100", "MESSAGE COMPLETED"},
        {"simulated:742,address=10", "? SP1", "100.0"},
        {"simulated:742,address=10", "= SP1 5000", "Input out of limit"},
        {"simulated:742,address=10", "= C1 3", "Read only command"},
        {"simulated:742,address=10", "? XYZ", "Command not found"},
        {"simulated:742", "? MDL", "COULDN'T CONNECT TO DEVICE"},
        {"simulated:742,address=10,no_etx=1", "? MDL", "NAK NOT RECEIVED"},
        {"simulated:742,address=10,other=1", "? MDL", "COULDN'T CONNECT TO DEVICE"},
    };
    rig.build({"1;9600,N,8,1;1"});
    for (const Case& each : cases) {
        device = each.device;
        table.init_comms();
        EXPECT_EQ(full.full_command(each.command, 10, 5000), each.result)
            << each.device << " " << each.command;
    }
    EXPECT_TRUE(rig.dialogs.shown.empty());
}

} // namespace
} // namespace pelvan
