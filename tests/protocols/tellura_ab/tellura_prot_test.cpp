#include <gtest/gtest.h>

#include <random>

#include "platform/line_port.h"
#include "protocols/tellura_ab/tellura_prot.h"
#include "simulator/simulator_hub.h"
#include "support/frames.h"
#include "support/serial_rig.h"

namespace pelvan {
namespace {

using testing::bytes;
using Texts = std::vector<std::string>;

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
    for (const int bad : {0, 33})
        EXPECT_EQ(build(bad, "01ca", "", false, 2), "Invalid device address!") << bad;
    for (const char* bad : {"1ca", "001ca", "01cg", " 1ca"})
        EXPECT_EQ(build(1, bad, "", false, 2), " Invalid parameter address!") << bad;
    for (const char* bad : {"", "123", "12 4"})
        EXPECT_EQ(build(1, "01ca", bad, true, 2), "Invalid data!") << bad;
    for (const int bad : {0, 256})
        EXPECT_EQ(build(1, "01ca", "", false, bad), "Invalid number of bytes!") << bad;
    EXPECT_EQ(rig.dialogs.shown.size(), 11U);
}

TEST_F(TelluraTest, Exchanges) {
    const std::string packet = "10 02 00 08 41 00 00 00 02 E6 10 03 CF";
    const std::string bad = "Bad or incomplete Packet!";
    // Sends and their answers between strokes, the parts of one as "ms:bytes;ms:bytes"; the result;
    // the sends.
    const std::vector<std::tuple<std::string, std::string, std::size_t>> cases{
        {"5:10 06 " + packet, packet, 1},
        {"5:FF 10 06 " + packet + " 00 10", packet, 1}, // behind noise, before noise
        {"5:10 06;1500:" + packet, packet, 1},
        {"5:10 06 10;300:02 00 08 41 00;900:00 00 02 E6 10;2000:03;3000:CF", packet, 1},
        {"5:10 15|5:|5:10 06 " + packet, packet, 3},          // NAK, silence, ACK
        {"5:10 15|5:|5:|5:10 06 " + packet, bad, 3},          // never acknowledged
        {"5:10 06 10 02 00 08 41 00 00 00 10 10 03", bad, 1}, // without an end
        {"5:10 06", bad, 1},
    };
    for (const auto& [script, result, sends] : cases) {
        rig.rebuild();
        for (const std::string& answer : split(script, '|')) {
            auto& arrivals = port().replies.emplace_back();
            for (const std::string& part : split(answer, ';'))
                arrivals.push_back({std::stod(part), bytes(part.substr(part.find(':') + 1))});
        }
        EXPECT_EQ(TelluraProt::DisplayPacket(prot.Exchange("packet")), result) << script;
        EXPECT_EQ(port().outputs, Texts(sends, "packet")) << script;
    }
}

TEST_F(TelluraTest, ChecksAndReadsReplies) {
    const std::string head = "10 02 00 08 4";
    const auto bcc = TelluraCheck::Bcc;
    const auto crc = TelluraCheck::Crc;
    const std::vector<std::tuple<TelluraCheck, std::string, std::string>> cases{
        {bcc, head + "1 00 00 00 02 E6 10 03 CF", "02 E6"},
        {bcc, head + "1 00 00 00 02 E6 10 03 CE", "fails"},
        {bcc, head + "1 00 00 00 00 10 10 10 03 A7", "00 10"},
        {bcc, head + "8 00 00 00 10 03 B0", ""},
        {crc, head + "1 00 00 00 02 E6 10 03 FB 03", "02 E6"},
        {crc, head + "1 00 00 00 02 E6 10 03 03 FB", "fails"},
        {bcc, "10 02 01 02 03 04 10 03 F6", "fails"}, // sound but too short
        {crc, "", "fails"},
        {bcc, "42 41 44", "fails"},
    };
    for (const auto& [check, hex, data] : cases) {
        prot.set_check(check);
        const std::string reply = bytes(hex);
        const bool sound = prot.CheckReply(reply);
        EXPECT_EQ(sound ? TelluraProt::DisplayPacket(prot.ReadReply(reply).data) : "fails", data)
            << hex;
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
            [&](const auto& text, const auto& line) { return hub.open(text, line); });
    });
    ChannelTable table(rig.state, rig.config, comms, rig.dialogs, rig.log);
    Link link(table, rig.countdowns, rig.dialogs, rig.log);
    TelluraProt over(link, rig.dialogs);
    table.init_comms();
    int sound = 0;
    for (int i = 0; i < 40; ++i) {
        over.set_check(i % 2 == 0 ? TelluraCheck::Bcc : TelluraCheck::Crc);
        std::uint8_t device = 9;
        const auto request = over.BuildRequest(device, "012C", i == 0 ? "0010" : "", i == 0, 2);
        ASSERT_TRUE(request);
        const std::string reply = over.Exchange(request->packet);
        if (!over.CheckReply(reply)) continue;
        ++sound;
        EXPECT_EQ(over.ReadReply(reply).data, i == 0 ? "" : bytes("00 10")) << i;
    }
    EXPECT_GT(sound, 20);
}

} // namespace
} // namespace pelvan
