#include <gtest/gtest.h>

#include <random>

#include "platform/line_port.h"
#include "protocols/tellura_ab/tellura_prot.h"
#include "simulator/simulator_hub.h"
#include "support/serial_rig.h"
#include "text/numbers.h"
#include "text/strings.h"

namespace pelvan {
namespace {

using Texts = std::vector<std::string>;

/// "01 03 0A" as bytes.
std::string bytes(const std::string& hex) {
    std::string result;
    for (const std::string& pair : split(hex, ' '))
        if (!pair.empty()) result += static_cast<char>(hex_number(pair).value());
    return result;
}

class TelluraTest : public ::testing::Test {
  protected:
    TelluraTest() { rig.build(Texts(4, "1;9600,N,8,1;1")); }

    /// The request packet in hexadecimal, or the message that refused it.
    std::string build(int address, const std::string& parameter, const std::string& data,
                      bool write, int count) {
        auto device = static_cast<std::uint8_t>(address);
        const auto packet = prot.BuildRequest(device, parameter, data, write, count);
        if (!packet) return rig.dialogs.shown.back().text;
        EXPECT_EQ(device, address + 7);
        return TelluraProt::DisplayPacket(packet->packet);
    }
    testing::FakeSerialPort& port() { return *rig.ports[3]; }

    testing::SerialRig rig;
    TelluraProt prot{rig.link, rig.dialogs};
};

// The public description of the full-duplex DLE link gives its BCC by example: for the data bytes
// 8, 9, 6, 0, 2, 4, 3 it is E0 hex, the two's complement of their sum 20 hex. The other rows follow
// from "the two's complement of the eight-bit sum, a doubled DLE counted once" by hand.
TEST_F(TelluraTest, Bcc) {
    const std::vector<std::pair<std::string, int>> cases{
        {"08 09 06 00 02 04 03", 0xE0},
        {"10 10 01", 0xEF},    // 10 + 01 = 11
        {"10 10 10 10", 0xE0}, // two data bytes of 10
        {"FF 02", 0xFF},       // 101, cut to 01
        {"80 80", 256},        // adds up to 0
        {"", 256},
    };
    for (const auto& [body, bcc] : cases)
        EXPECT_EQ(TelluraProt::Bcc(bytes(body)), bcc) << body;
}

// The link's CRC is the one of the catalogues with reflected polynomial A001 and start 0, whose
// check value (over the characters "123456789") is BB3D. One step on, with ETX: the low byte 3D
// and 03 give 3E; its table entry is the exclusive-or of the entries of its bits, C181 (2), C301
// (4), C601 (8), CC01 (10) and D801 (20), which is D081; with the high byte BB that makes D03A. A
// body without bytes is ETX alone: the table entry of 3, 0140.
TEST_F(TelluraTest, Crc) {
    EXPECT_EQ(TelluraProt::Crc("123456789"), bytes("3A D0"));
    EXPECT_EQ(TelluraProt::Crc(""), bytes("40 01"));
    // A doubled DLE counts once: 10 has the table entry CC01, whose low byte 01 with 03 makes 02,
    // entry C181; with the high byte CC that is C14D.
    EXPECT_EQ(TelluraProt::Crc(bytes("10 10")), bytes("4D C1"));
}

TEST_F(TelluraTest, BuildsRequests) {
    EXPECT_EQ(build(1, "01ca", "", false, 2), "10 02 08 00 01 00 00 00 01 CA 02 10 03 2A");
    EXPECT_EQ(build(9, "0110", "", false, 16),
              "10 02 10 10 00 01 00 00 00 01 10 10 10 10 10 03 CE");
    EXPECT_EQ(build(32, "FFfF", "10a0", true, 0),
              "10 02 27 00 08 00 00 00 FF FF 10 10 A0 10 03 23");
    prot.set_check(TelluraCheck::Crc);
    // Worked out with a separate script from the published polynomial.
    EXPECT_EQ(build(1, "0000", "", false, 2), "10 02 08 00 01 00 00 00 00 00 02 10 03 01 47");
    EXPECT_TRUE(rig.dialogs.shown.empty());
}

TEST_F(TelluraTest, RefusesRequestsInWords) {
    struct Case {
        int address;
        const char* parameter;
        const char* data;
        bool write;
        int count;
        const char* message;
    };
    const std::vector<Case> cases{
        {0, "01ca", "", false, 2, "Invalid device address!"},
        {33, "01ca", "", false, 2, "Invalid device address!"},
        {1, "1ca", "", false, 2, " Invalid parameter address!"},
        {1, "001ca", "", false, 2, " Invalid parameter address!"},
        {1, "01cg", "", false, 2, " Invalid parameter address!"},
        {1, " 1ca", "", false, 2, " Invalid parameter address!"},
        {1, "01ca", "", true, 2, "Invalid data!"},
        {1, "01ca", "123", true, 2, "Invalid data!"},
        {1, "01ca", "12 4", true, 2, "Invalid data!"},
        {1, "01ca", "", false, 0, "Invalid number of bytes!"},
        {1, "01ca", "", false, 256, "Invalid number of bytes!"},
    };
    for (const Case& each : cases)
        EXPECT_EQ(build(each.address, each.parameter, each.data, each.write, each.count),
                  each.message);
    EXPECT_EQ(rig.dialogs.shown.size(), cases.size());
}

TEST_F(TelluraTest, Exchanges) {
    const std::string reply = "10 02 00 08 41 00 00 00 02 E6 10 03 CF";
    struct Case {
        const char* what;
        std::vector<std::vector<testing::Arrival>> script; // one a send
        std::string result;
        std::size_t sends;
    };
    const std::vector<Case> cases{
        {"in one go", {{{5, bytes("10 06 " + reply)}}}, reply, 1},
        {"behind noise, before noise", {{{5, bytes("FF 10 06 " + reply + " 00 10")}}}, reply, 1},
        {"packet later", {{{5, bytes("10 06")}, {1500, bytes(reply)}}}, reply, 1},
        {"in four parts",
         {{{5, bytes("10 06 10")},
           {300, bytes("02 00 08 41 00")},
           {900, bytes("00 00 02 E6 10")},
           {2000, bytes("03")},
           {3000, bytes("CF")}}},
         reply,
         1},
        {"NAK, silence, ACK",
         {{{5, bytes("10 15")}}, {}, {{5, bytes("10 06 " + reply)}}},
         reply,
         3},
        {"never acknowledged",
         {{{5, bytes("10 15")}}, {}, {}, {{5, bytes("10 06 " + reply)}}},
         "Bad or incomplete Packet!",
         3},
        {"reply without an end",
         {{{5, bytes("10 06 10 02 00 08 41 00 00 00 10 10 03")}}},
         "Bad or incomplete Packet!",
         1},
        {"no reply", {{{5, bytes("10 06")}}}, "Bad or incomplete Packet!", 1},
    };
    for (const Case& each : cases) {
        rig.rebuild();
        port().replies.assign(each.script.begin(), each.script.end());
        EXPECT_EQ(TelluraProt::DisplayPacket(prot.Exchange("packet")), each.result) << each.what;
        EXPECT_EQ(port().outputs, Texts(each.sends, "packet")) << each.what;
    }
}

TEST_F(TelluraTest, ChecksAndReadsReplies) {
    struct Case {
        std::string reply;
        TelluraCheck check;
        bool passes;
        std::string data;
    };
    const std::vector<Case> cases{
        {"10 02 00 08 41 00 00 00 02 E6 10 03 CF", TelluraCheck::Bcc, true, "02 E6"},
        {"10 02 00 08 41 00 00 00 02 E6 10 03 CE", TelluraCheck::Bcc, false, ""},
        {"10 02 00 08 41 00 00 00 00 10 10 10 03 A7", TelluraCheck::Bcc, true, "00 10"},
        {"10 02 00 08 48 00 00 00 10 03 B0", TelluraCheck::Bcc, true, ""},
        {"10 02 00 08 41 00 00 00 02 E6 10 03 FB 03", TelluraCheck::Crc, true, "02 E6"},
        {"10 02 00 08 41 00 00 00 02 E6 10 03 03 FB", TelluraCheck::Crc, false, ""},
        {"10 02 01 02 03 04 10 03 F6", TelluraCheck::Bcc, false, ""}, // sound but too short
        {"", TelluraCheck::Crc, false, ""},
        {"42 41 44", TelluraCheck::Bcc, false, ""},
    };
    for (const Case& each : cases) {
        prot.set_check(each.check);
        const std::string reply = bytes(each.reply);
        EXPECT_EQ(prot.CheckReply(reply), each.passes) << each.reply;
        EXPECT_EQ(each.passes ? TelluraProt::DisplayPacket(prot.ReadReply(reply).data) : "",
                  each.data);
    }
    EXPECT_EQ(prot.ReadReply(bytes("10 02 00 08 41 50 00 00 10 03 67 00")).status, 0x50U);
}

TEST_F(TelluraTest, AnyBytesEndInAPacketOrInBad) {
    rig.tick.step_ms = 20;
    std::mt19937 random(7);
    const std::string favourites = bytes("10 02 03 06 10 00 15 FF");
    for (int i = 0; i < 400; ++i) {
        prot.set_check(i % 2 == 0 ? TelluraCheck::Bcc : TelluraCheck::Crc);
        std::string back = i % 3 == 0 ? bytes("10 06 10 02") : std::string();
        for (std::size_t left = i == 0 ? 10000 : random() % 40; left > 0; --left)
            back += favourites[random() % favourites.size()];
        port().replies.assign(1, {{1, back}});
        const std::string reply = prot.Exchange("packet");
        EXPECT_TRUE(reply == kTelluraBad || reply.starts_with(bytes("10 02")));
        for (const std::string& text : {reply, back}) {
            static_cast<void>(prot.CheckReply(text));
            EXPECT_LE(prot.ReadReply(text).data.size(), text.size());
        }
    }
}

/// Writes and reads back through a simulated controller on a paced line.
TEST_F(TelluraTest, OnTheSimulator) {
    simulator::SimulatorHub hub(rig.tick);
    frm_Comms comms([&] {
        return std::make_unique<LinePort>(
            [](int) { return "simulated:742,address=9,flip=0.1,lost_ack=0.2"; },
            [&](const std::string& text, const LineSettings& line) {
                return hub.open(text, line);
            });
    });
    ChannelTable table(rig.state, rig.config, comms, rig.dialogs, rig.log);
    Link link(table, rig.countdowns, rig.dialogs, rig.log);
    TelluraProt over(link, rig.dialogs);
    table.init_comms();
    int sound = 0;
    for (int i = 0; i < 40; ++i) {
        over.set_check(i % 2 == 0 ? TelluraCheck::Bcc : TelluraCheck::Crc);
        std::uint8_t device = 9;
        const auto request = over.BuildRequest(device, "0110", i == 0 ? "0010" : "", i == 0, 2);
        ASSERT_TRUE(request);
        const std::string reply = over.Exchange(request->packet);
        if (!over.CheckReply(reply)) continue;
        ++sound;
        EXPECT_EQ(over.ReadReply(reply).data.size() % 2, 0U);
    }
    EXPECT_GT(sound, 20);
}

} // namespace
} // namespace pelvan
