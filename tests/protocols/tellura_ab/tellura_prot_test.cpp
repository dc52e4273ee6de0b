#include <gtest/gtest.h>

#include <random>

#include "protocols/tellura_ab/tellura_prot.h"
#include "support/frames.h"
#include "support/serial_rig.h"

namespace pelvan::testing {

struct TelluraTest : ::testing::Test, SerialRig {
    TelluraTest() { SerialRig::build(Texts(4, "1;9600,N,8,1;1")); }

    /// The request packet in hexadecimal, or the message that refused it.
    std::string build(int address, const std::string& parameter, const std::string& data,
                      bool write, int count) {
        auto device = static_cast<std::uint8_t>(address);
        const auto packet = prot.BuildRequest(device, parameter, data, write, count);
        if (!packet) return dialogs.shown.back().text;
        EXPECT_EQ(device, address + 7);
        return TelluraProt::DisplayPacket(packet->packet);
    }
    FakeSerialPort& port() { return *ports[3]; }
    TelluraProt prot{link, dialogs};
};

// By hand: the BCC is the two's complement of the eight-bit sum, the CRC the check value of
// CRC-16/ARC (BB3D over "123456789") one step on with ETX; a doubled DLE counts once.
TEST_F(TelluraTest, ChecksOfABody) {
    EXPECT_EQ(TelluraProt::Bcc(bytes("08 09 06 00 02 04 03")), 0xE0);
    EXPECT_EQ(TelluraProt::Bcc(bytes("10 10 10 10")), 0xE0); // two data bytes of 10
    EXPECT_EQ(TelluraProt::Bcc(bytes("FF 02")), 0xFF);       // 101, cut to 01
    EXPECT_EQ(TelluraProt::Bcc(bytes("80 80")), 256);        // adds up to 0
    EXPECT_EQ(TelluraProt::Crc("123456789"), bytes("3A D0"));
    EXPECT_EQ(TelluraProt::Crc(bytes("10 10")), bytes("4D C1"));
}

TEST_F(TelluraTest, BuildsRequestsOrRefusesThemInWords) {
    EXPECT_EQ(build(9, "0110", "", false, 16),
              "10 02 10 10 00 01 00 00 00 01 10 10 10 10 10 03 CE");
    EXPECT_EQ(build(32, "FFfF", "10a0", true, 0),
              "10 02 27 00 08 00 00 00 FF FF 10 10 A0 10 03 23");
    for (const int bad : {0, 33})
        EXPECT_EQ(build(bad, "01ca", "", false, 2), "Invalid device address!") << bad;
    for (const char* bad : {"1ca", "001ca", "01cg", " 1ca"})
        EXPECT_EQ(build(1, bad, "", false, 2), " Invalid parameter address!") << bad;
    for (const char* bad : {"", "123", "12 4"})
        EXPECT_EQ(build(1, "01ca", bad, true, 2), "Invalid data!") << bad;
    for (const int bad : {0, 256})
        EXPECT_EQ(build(1, "01ca", "", false, bad), "Invalid number of bytes!") << bad;
}

TEST_F(TelluraTest, Exchanges) {
    const std::string packet = "10 02 00 08 41 00 00 00 02 E6 10 03 CF";
    const std::string bad = "Bad or incomplete Packet!";
    // The answers to the sends, between strokes and as "ms:bytes;ms:bytes"; the result; the sends;
    // the milliseconds: 200 at most for a send, 2000 for a wait, and 24 (12 characters at 2 ms)
    // of quiet behind what came.
    const std::tuple<std::string, std::string, std::size_t, double> exchanges[] = {
        {"5:FF 10 06 " + packet + " 00 10", packet, 1, 29}, // behind noise, before noise
        {"5:10 06;1500:" + packet, packet, 1, 1524},
        {"5:10 06 10;300:02 00 08 41 00;900:00 00 02 E6 10;2000:03;3000:CF", packet, 1, 3024},
        {"5:10 15|5:|5:10 06 " + packet, packet, 3, 29 + 200 + 29}, // NAK, silence, ACK
        {"199:10 06 " + packet, packet, 1, 223},                    // in the last moment
        {"5:10 15|5:|5:|5:10 06 " + packet, bad, 3, 29 + 400},      // never acknowledged
        {"5:10 06;7000:" + packet, packet, 1, 7024},                // in the fourth wait
        {"5:10 06 10 02 00 08 41 00 00 00 10 10 03", bad, 1, 8029}, // without an end
        {"5:10 06 10 06 FF " + packet, packet, 1, 29},              // acknowledged again
        {"5:10 06 00;900:" + packet, packet, 1, 924},
        // The tail of a late reply is no acknowledgement, nor does its check hide one.
        {"5:41 10 10 06 10 10 02 10 03 A7|5:10 06 " + packet, packet, 2, 29 + 29},
        {"5:41 02 10 03 10 10 06 " + packet, packet, 1, 29},
        {"5:10 06", bad, 1, 8029}};
    for (const auto& [script, result, sends, ms] : exchanges) {
        rebuild();
        for (const std::string& answer : split(script, '|')) {
            auto& arrivals = port().replies.emplace_back();
            for (const std::string& part : split(answer, ';'))
                arrivals.push_back({std::stod(part), bytes(part.substr(part.find(':') + 1))});
        }
        const double begun = tick.now();
        EXPECT_EQ(TelluraProt::DisplayPacket(prot.Exchange("packet")), result) << script;
        EXPECT_EQ(port().outputs, Texts(sends, "packet")) << script;
        EXPECT_NEAR(tick.now() - begun, ms, 5) << script;
    }
}

TEST_F(TelluraTest, ChecksAndReadsReplies) {
    const std::string head = "10 02 00 08 4";
    const std::tuple<char, std::string, std::string> replies[] = {
        {'b', head + "1 00 00 00 02 E6 10 03 CF", "02 E6"},
        {'b', head + "1 00 00 00 02 E6 10 03 CE", "fails"},
        {'b', head + "1 00 00 00 00 10 10 10 03 A7", "00 10"},
        {'b', head + "8 00 00 00 10 03 B0", ""},
        {'c', head + "1 00 00 00 02 E6 10 03 FB 03", "02 E6"},
        {'c', head + "1 00 00 00 02 E6 10 03 03 FB", "fails"},
        {'b', "10 02 01 02 03 04 10 03 F6", "fails"}}; // fits but is too short
    for (const auto& [check, hex, data] : replies) {
        prot.set_check(check == 'b' ? TelluraCheck::Bcc : TelluraCheck::Crc);
        const std::string reply = bytes(hex);
        const bool valid = prot.CheckReply(reply);
        EXPECT_EQ(valid ? TelluraProt::DisplayPacket(prot.ReadReply(reply).data) : "fails", data)
            << hex;
    }
    EXPECT_EQ(prot.ReadReply(bytes("10 02 00 08 41 50 00 00 10 03 67 00")).status, 0x50U);
}

TEST_F(TelluraTest, WholeIsALinkReplyOrAPacketWithItsCheck) {
    const std::string body = bytes("00 08 41 00 00 00 10 10 06");
    const std::string good =
        bytes("10 02") + body + bytes("10 03") + static_cast<char>(TelluraProt::Bcc(body) & 0xFF);
    for (const std::string& before : {std::string(), bytes("10 06"), bytes("FF")}) {
        for (std::size_t size = 0; size < good.size(); ++size)
            EXPECT_EQ(prot.IsWhole(before + good.substr(0, size)), size == 0 && before.size() == 2)
                << size;
        EXPECT_TRUE(prot.IsWhole(before + good));
        EXPECT_FALSE(prot.IsWhole(before + good + good));
    }
    for (const char* link_reply : {"10 06", "10 15", "10 05", "FF 10 06"})
        EXPECT_TRUE(prot.IsWhole(bytes(link_reply))) << link_reply;
    for (const char* other : {"10", "06", "10 10 06", "10 06 00"})
        EXPECT_FALSE(prot.IsWhole(bytes(other))) << other;
}

TEST_F(TelluraTest, AnyBytesEndInAPacketOrInBad) {
    tick.step_ms = 20;
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

} // namespace pelvan::testing
