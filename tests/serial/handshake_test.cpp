// XON/XOFF by the program, on a scripted port at 9600 baud: a character takes 1.04 ms.
#include <gtest/gtest.h>

#include "support/serial_rig.h"

namespace pelvan::testing {

const std::string kXon = "\x11";
const std::string kXoff = "\x13";

struct HandshakeTest : ::testing::TestWithParam<const char*>, SerialRig {
    HandshakeTest() { start("4"); }
    void start(const std::string& mode) {
        build({"1;9600,N,8,1;" + mode});
        exchange_by(GetParam());
        set_channels(ini_key::xon_xoff, "PROGRAM");
        ports[0]->discards_future = false;
        ports[0]->responder = [this](const std::string&) {
            out_ms.push_back(tick.now() - begun);
            const auto found = script.find(out_ms.size());
            return found == script.end() ? std::vector<Arrival>{} : found->second;
        };
    }
    std::string send(const std::string& command) {
        begun = tick.now();
        out_ms.clear();
        ports[0]->outputs.clear();
        std::string reply =
            link.transmit(0, command, 200, 1, [](auto b) { return b.ends_with("\r"); });
        taken_ms = tick.now() - begun;
        return reply;
    }
    double begun = 0;
    double taken_ms = 0;
    std::vector<double> out_ms;                         // when each character went out
    std::map<std::size_t, std::vector<Arrival>> script; // by the number of characters that are out
};

INSTANTIATE_TEST_SUITE_P(, HandshakeTest, ::testing::Values("QUIET", "COMPLETE"));

TEST_P(HandshakeTest, StopsWithinOneCharacterAndGoesOn) {
    EXPECT_EQ(ports[0]->Handshaking(), 0) << "the driver would take the characters away";
    for (const char* mode : {"4", "5"}) { // 5 toggles RTS
        start(mode);
        // While the third character is on the line; the reply comes in pieces round another pair.
        script = {{3, {{0.5, kXoff}, {100, kXon}}}, {6, {{5, "O" + kXoff}, {5.2, kXon + "K\r"}}}};
        EXPECT_EQ(send("= SP1\r"), "OK\r");
        EXPECT_EQ(ports[0]->sent(), "= SP1\r");
        ASSERT_EQ(out_ms.size(), 6U);
        EXPECT_NEAR(out_ms[2], 2 * 1.042, 0.1);
        EXPECT_NEAR(out_ms[3], out_ms[2] + 100, 0.1);
        EXPECT_NEAR(out_ms[5], out_ms[3] + 2 * 1.042, 0.1);
    }
    EXPECT_EQ(link.take_remark(), "");
}

TEST_P(HandshakeTest, AStopEndsWithTheLineThatItCameOver) {
    script = {{6, {{5, "OK\r" + kXoff}}}};
    send("= SP1\r");
    script.clear();
    ports[0]->line_lost = true;
    send("= SP1\r");
    EXPECT_EQ(ports[0]->sent(), "= SP1\r");
    EXPECT_NEAR(out_ms.at(0), 0, 25);
}

TEST_P(HandshakeTest, AStopThatIsNeverLiftedEndsAtTheTimeOutAndIsForgotten) {
    script = {{2, {{0.5, kXoff}}}};
    EXPECT_EQ(send("? C1\r"), "");
    EXPECT_EQ(ports[0]->sent(), "? ");
    EXPECT_NEAR(taken_ms, 200 + 2 * 1.042, 2);
    EXPECT_EQ(link.take_remark(), "The device has stopped the sending (XOFF) and not let it go on "
                                  "within 0.2 s: 2 of 5 bytes were sent.");
    script = {{5, {{5, "1\r"}}}};
    EXPECT_EQ(send("? C1\r"), "1\r");
    // It stops before, and lets go in between.
    ports[0]->arrive({0, kXoff});
    ports[0]->arrive({50, kXon});
    EXPECT_EQ(send("? C1\r"), "1\r");
    EXPECT_NEAR(out_ms[0], 50, 1);
    // Several stops have one time-out together.
    script = {{1, {{0.5, kXoff}, {150, kXon}}}, {2, {{0.5, kXoff}, {150, kXon}}}};
    EXPECT_EQ(send("? C1\r"), "");
    EXPECT_EQ(ports[0]->sent(), "? ");
    EXPECT_TRUE(dialogs.shown.empty());
}

TEST_P(HandshakeTest, WithoutHandshakingOrItsWordNothingChanges) {
    for (const auto& [mode, value, handshaking] :
         {std::tuple("1", "PROGRAM", 0), {"4", "program", 1}, {"4", "DRIVER", 1}, {"4", "", 1}}) {
        start(mode);
        set_channels(ini_key::xon_xoff, value);
        EXPECT_EQ(ports[0]->Handshaking(), handshaking);
        ports[0]->replies = {{{5, "a" + kXon + "\r"}}};
        EXPECT_EQ(link.transmit(0, "? C1\r", 200, 1), "a" + kXon + "\r");
        EXPECT_EQ(ports[0]->outputs.size(), 1U);
    }
}

} // namespace pelvan::testing
