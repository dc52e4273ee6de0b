// Exchanges on channels that are set to complete frames. A frame ends with a full stop here.
#include <gtest/gtest.h>

#include "support/serial_rig.h"

namespace pelvan::testing {

struct FrameExchangeTest : ::testing::Test, SerialRig {
    FrameExchangeTest() { start("9600,N,8,1"); }
    void start(const std::string& settings, const std::string& mode = "1") {
        build({"1;" + settings + ";" + mode});
        exchange_by("COMPLETE");
        port().discards_future = false;
    }
    FakeSerialPort& port() { return *ports[0]; }
    std::string exchange(const std::vector<Arrival>& reply, std::int16_t quiet_chars = 30) {
        port().replies.push_back(reply);
        const double begun = tick.now();
        std::string got = link.transmit(0, "ask", 200, quiet_chars,
                                        [](auto b) { return b.find('.') + 1 == b.size(); });
        taken_ms = tick.now() - begun;
        for (const auto& event : port().events)
            if (event.what.starts_with("output")) asked_at = event.at_ms;
        return got;
    }
    double taken_ms = 0;
    double asked_at = 0; // when the last request went out
};

TEST_F(FrameExchangeTest, EndsWithTheFrameAndTheNextRequestKeepsItsDistance) {
    const std::pair<const char*, double> distances[] = {{"9600,N,8,1", 3.5 * 10 / 9.6},
                                                        {"19200,E,8,1", 3.5 * 11 / 19.2},
                                                        {"38400,N,8,1", 1.75},
                                                        {"1200,N,8,1", 3.5 * 10 / 1.2}};
    for (const auto& [settings, distance] : distances) {
        start(settings);
        EXPECT_EQ(exchange({{30, "a"}, {45, "b."}}), "ab.") << settings;
        EXPECT_NEAR(taken_ms, 45, 0.3) << settings;
        const double heard_at = tick.now();
        EXPECT_EQ(exchange({{30, "c."}}), "c.");
        EXPECT_NEAR(asked_at - heard_at, distance, 0.2) << settings;
        tick.advance(500);
        const double long_after = tick.now();
        exchange({{30, "d."}});
        EXPECT_NEAR(asked_at - long_after, 0, 0.3) << "it has been silent long enough";
        EXPECT_EQ(link.stray_bytes(), 0U);
    }
    EXPECT_TRUE(dialogs.shown.empty());
}

TEST_F(FrameExchangeTest, RtsIsHeldUntilTheBytesAreOutAtAnyRate) {
    const std::pair<const char*, double> holds[] = {{"9600,N,8,1", 3 * 2}, {"38400,N,8,1", 0.78}};
    for (const auto& [settings, hold_ms] : holds) {
        start(settings, "2");
        exchange({{30, "a."}});
        double down_at = 0;
        for (const auto& event : port().events)
            if (event.what == "escape 4") down_at = event.at_ms;
        EXPECT_NEAR(down_at - asked_at, hold_ms, 0.1) << settings;
    }
}

TEST_F(FrameExchangeTest, ANetworkMayKeepThePartsOfAFrameApart) {
    const std::vector<Arrival> parts{{10, "a"}, {190, "b."}};
    EXPECT_EQ(exchange(parts), "a");
    ini_write_string(ini_key::kDevicesSection, ini_key::serial_device(1), "tcp://there:4001",
                     config.gIniFile);
    EXPECT_GT(table.lumps(1).bytes, 0U);
    exchange_by("COMPLETE");
    EXPECT_EQ(table.lumps(1).bytes, 0U) << "another device";
    port().discards_future = false;
    EXPECT_EQ(exchange(parts), "ab.");
}

TEST_F(FrameExchangeTest, WhatNeverCompletesEndsWithThePauseAndNotBefore20Ms) {
    std::vector<Arrival> endless;
    for (int i = 0; i < 400; ++i)
        endless.push_back({i * 2.0, "x"});
    // Settings, quiet characters, what comes, the reply, when it ends.
    const std::tuple<const char*, std::int16_t, std::vector<Arrival>, std::string, double> cases[] =
        {{"38400,N,8,1", 30, {{50, "ab"}, {66, "c"}, {90, "."}}, "abc", 86},
         {"9600,N,8,1", 8, {{50, "ab"}, {66, "c"}, {90, "."}}, "abc", 86},
         {"9600,N,8,1", 30, {{50, "ab"}, {100, "c"}, {165, "."}}, "abc", 160},
         {"9600,N,8,1", 30, {{50, "a.b."}}, "a.b.", 110}, // more than one frame
         {"9600,N,8,1", 30, {}, "", 200},
         {"38400,N,8,1", 30, {{199, "a"}, {210, "."}}, "a.", 210}, // begun in time
         {"38400,N,8,1", 30, endless, std::string(134, 'x'), 200 + 260 / 3.84}};
    for (const auto& [settings, quiet_chars, arrivals, reply, ms] : cases) {
        start(settings);
        EXPECT_EQ(exchange(arrivals, quiet_chars), reply);
        EXPECT_NEAR(taken_ms, ms, 0.5) << reply;
    }
}

TEST_F(FrameExchangeTest, TheRestOfAReplyAsLongAsTheLastIsNotLookedAtByteByByte) {
    const auto paced = [](const std::string& reply) {
        std::vector<Arrival> bytes;
        for (std::size_t i = 0; i < reply.size(); ++i)
            bytes.push_back({30 + static_cast<double>(i) * 10 / 9.6, reply.substr(i, 1)});
        return bytes;
    };
    EXPECT_EQ(exchange(paced("abcdefgh.")), "abcdefgh.");
    EXPECT_EQ(table.lumps(1).bytes, 1U);
    EXPECT_EQ(exchange(paced("ABCDEFGH.")), "ABCDEFGH.");
    EXPECT_NEAR(taken_ms, 3.6 + 30 + 8 * 10 / 9.6, 0.5);
    EXPECT_GE(table.lumps(1).bytes, 4U);
    EXPECT_EQ(exchange(paced("ab.")), "ab.");
    EXPECT_NEAR(taken_ms, 3.6 + 30 + 2 * 10 / 9.6, 5) << "shorter, and not noticed much later";
}

TEST_F(FrameExchangeTest, AReplyThatComesAgainReachesNoOtherRequest) {
    exchange({{30, "a."}});
    // It comes again in the distance to the next request, in two lumps.
    exchange({{30, "b."}, {33, "b"}, {49, "."}});
    const double heard_at = tick.now();
    EXPECT_EQ(exchange({{30, "c."}}), "c.");
    EXPECT_NEAR(asked_at - heard_at, 19 + 20, 0.5);
    EXPECT_EQ(link.stray_bytes(), 2U);
    // It comes again sooner than any reply has come: one that is listened behind.
    exchange({{30, "d."}, {43, "d."}});
    EXPECT_EQ(exchange({{30, "e."}}), "d.e.");
    tick.advance(100);
    EXPECT_EQ(exchange({{10, "f."}}), "f.") << "sooner than ever, and its own";
    EXPECT_NEAR(taken_ms, 60, 2);
    EXPECT_EQ(exchange({{10, "g."}}), "g.");
    EXPECT_NEAR(taken_ms, 10, 1) << "from then on no sooner than ever";
    exchange({{30, "long."}, {31, "~"}});
    exchange({{30, "h."}});
    EXPECT_EQ(link.stray_bytes(), 1U);
}

TEST_F(FrameExchangeTest, ALostLineEndsTheReplyAndErrorsGoTheirWay) {
    port().responder = [this](auto) {
        port().line_lost = true;
        return std::vector<Arrival>{{0, "ab"}};
    };
    EXPECT_EQ(exchange({}), "ab");
    EXPECT_NEAR(taken_ms, 0, 0.5);
    start("9600,N,8,1", "2");
    exchange({{30, "ok."}});
    EXPECT_TRUE(port().history().ends_with("open, escape 3, output 3, escape 4, escape 3"));
    port().fail_next("Output", 57);
    EXPECT_EQ(exchange({}), "");
    EXPECT_TRUE(port().history().ends_with("escape 3, close, open, escape 4, escape 3"));
    port().fail_next("wait", 8020);
    EXPECT_EQ(exchange({{30, "x."}}), "");
    EXPECT_EQ(dialogs.texts().size(), 1U);
}

TEST_F(FrameExchangeTest, OnlyItsOwnWordTurnsItOn) {
    EXPECT_TRUE(exchange_way("COMPLETE", "9600,N,8,1").complete);
    EXPECT_TRUE(exchange_way("QUIET", "9600,N,8,1", "YES").echo);
    for (const char* other :
         {"", "QUIET", "complete", "COMPLETE ", "1", "COMPLETELY", "yes", "Y"}) {
        EXPECT_FALSE(exchange_way(other, "9600,N,8,1", "NO").complete) << other;
        EXPECT_FALSE(exchange_way("COMPLETE", "9600,N,8,1", other).echo) << other;
    }
    EXPECT_FALSE(exchange_way("COMPLETE", "0,N,8,1", "YES").complete);
    exchange_by("no way");
    exchange({{30, "a."}});
    EXPECT_NEAR(taken_ms, 30 + 60, 1);
}

} // namespace pelvan::testing
