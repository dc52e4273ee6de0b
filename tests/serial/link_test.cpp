#include <gtest/gtest.h>

#include "support/serial_rig.h"

namespace pelvan {
namespace {

using testing::Arrival;
using testing::FakeSerialPort;
using testing::SerialRig;
using Texts = std::vector<std::string>;

/// Channel 0 on port 1: settle time 2 ms, mode as given.
class LinkTest : public ::testing::Test {
  protected:
    LinkTest() { start("1"); }
    void start(const std::string& mode) { rig.build({"1;9600,N,8,1;" + mode}); }
    FakeSerialPort& port() { return *rig.ports[0]; }
    std::string exchange(const std::vector<Arrival>& reply) {
        port().replies.push_back(reply);
        begun_ms = rig.tick.now();
        return rig.link.transmit(0, "ask", 200, 8);
    }
    [[nodiscard]] double taken_ms() const { return rig.tick.now() - begun_ms; }

    SerialRig rig;
    double begun_ms = 0;
};

TEST_F(LinkTest, SilenceEndsWithTheTimeOut) {
    EXPECT_EQ(exchange({}), "");
    EXPECT_NEAR(taken_ms(), 200, 2);
    EXPECT_EQ(port().outputs, Texts{"ask"});
    EXPECT_TRUE(rig.dialogs.shown.empty());
}

TEST_F(LinkTest, CollectsPiecesUntilTheQuietPause) {
    EXPECT_EQ(exchange({{50, "ab"}, {60, "c"}, {75, std::string(1, '\0')}}),
              std::string("abc\0", 4));
    EXPECT_LT(taken_ms(), 100);
}

TEST_F(LinkTest, RestAfterALongGapIsDiscardedByTheNextExchange) {
    EXPECT_EQ(exchange({{10, "first"}, {60, "rest"}}), "first");
    rig.tick.advance(100);
    port().discards_future = false;
    EXPECT_EQ(exchange({{5, "second"}}), "second");
}

TEST_F(LinkTest, EndlessReplyIsCutByTheTimeOut) {
    std::vector<Arrival> endless;
    for (int i = 0; i < 100; ++i)
        endless.push_back({i * 10.0, "x"});
    const std::string reply = exchange(endless);
    EXPECT_NEAR(static_cast<double>(reply.size()), 20, 3);
    EXPECT_LT(taken_ms(), 200 + 2 * 16 + 2);
}

TEST_F(LinkTest, RtsIsHeldForTheBytesAndRaisedAgain) {
    start("2");
    exchange({{30, "ok"}});
    EXPECT_EQ(port().history(), "DTREnable 1, RTSEnable 0, Handshaking 0, open, discard, discard, "
                                "escape 3, output 3, escape 4, escape 3");
    const auto& events = port().events;
    EXPECT_NEAR(events[8].at_ms - events[7].at_ms, 3 * 2, 1);
}

TEST_F(LinkTest, SharedPortKeepsTheChannelsOwnFlag) {
    rig.build({"1;9600,N,8,1;1", "1;9600,N,8,1;2"});
    rig.ports[0]->set_PortOpen(true);
    rig.ports[0]->replies.push_back({{1, "shared"}});
    EXPECT_EQ(rig.link.transmit(1, "ask", 200, 8), "shared");
    EXPECT_TRUE(rig.ports[0]->history().ends_with("escape 3, output 3, escape 4, escape 3"));
}

TEST_F(LinkTest, LetsTheLineFallSilentSoThatALateReplyIsNotTakenForTheNext) {
    struct Case {
        std::vector<Arrival> late; // after the time-out, from its end on
        double waited_ms;
        bool silent;
    };
    std::vector<Arrival> endless;
    for (int i = 0; i < 20; ++i)
        endless.push_back({200 + i * 100.0, "x"});
    const std::vector<Case> cases{{{}, 250, true},
                                  {{{300, "late"}}, 350, true},
                                  {{{440, "late"}, {680, "later"}}, 730, true},
                                  {{{460, "later than that"}}, 250, true},
                                  {endless, 1000, false}};
    port().discards_future = false;
    for (const auto& [late, waited_ms, silent] : cases) {
        EXPECT_EQ(exchange(late), "");
        begun_ms = rig.tick.now();
        EXPECT_EQ(rig.link.let_fall_silent(), silent);
        EXPECT_NEAR(taken_ms(), waited_ms, silent ? 2 : 110);
        rig.tick.advance(2000);
    }
    port().fail_next("InBufferCount", 8020);
    EXPECT_TRUE(rig.link.let_fall_silent());
    EXPECT_TRUE(rig.log_text().ends_with("transmit, ERROR #,  8020 \r\n"));
    rig.rebuild();
    EXPECT_TRUE(rig.link.let_fall_silent()) << "nothing is open";
    EXPECT_TRUE(rig.dialogs.shown.empty()) << "the next exchange meets and shows it";
    EXPECT_LE(rig.state.gTimerInUse.size(), 3U);
}

TEST_F(LinkTest, PortThatCannotBeReopenedIsShownAndLeavesNormally) {
    exchange({});
    port().fail_next("Output", 57);
    port().fail_next("PortOpen", 8002);
    EXPECT_EQ(exchange({}), "");
    // The reopening's own error, then the collection on the closed port.
    EXPECT_EQ(rig.dialogs.texts(), (Texts{"COMM ERROR NUMBER: 8002.  CHECK PORT/SETTINGS",
                                          "COMM ERROR NUMBER: 8018.  CHECK PORT/SETTINGS"}));
}

TEST_F(LinkTest, WhatFollowsAWriteErrorByItsNumber) {
    const std::string comm_error = "COMM ERROR NUMBER: 8020.  CHECK PORT/SETTINGS";
    const std::vector<std::tuple<int, Texts, std::string>> cases{
        {57, {}, ", close, open"}, // reopened
        {69, {}, ", close, open"},
        {68, {}, ", output 3"}, // the statement is retried
        {8010, {}, ""},         // the next statement follows in silence
        {8020, {comm_error}, ""},
        {5, {"ILLEGAL FUNCTION CALL ERROR"}, ""},
    };
    for (const auto& [number, messages, events] : cases) {
        start("1");
        rig.dialogs.shown.clear();
        port().fail_next("Output", number);
        EXPECT_EQ(exchange({}), "");
        EXPECT_EQ(rig.dialogs.texts(), messages) << number;
        EXPECT_TRUE(port().history().ends_with("open, discard, discard" + events)) << number;
        EXPECT_TRUE(
            rig.log_text().ends_with("transmit, ERROR #,  " + std::to_string(number) + " \r\n"));
    }
}

TEST_F(LinkTest, ReadErrorGivesAnEmptyReplyAndNoLostCountdown) {
    for (int i = 0; i < 5; ++i) {
        port().fail_next("InBufferCount", 8020);
        EXPECT_EQ(exchange({{0, "x"}}), "");
    }
    EXPECT_LE(rig.state.gTimerInUse.size(), 2U);
    EXPECT_EQ(rig.dialogs.shown.size(), 5U);
}

TEST_F(LinkTest, UnwritableLogIsShownInPlaceOfTheEntry) {
    ErrorLog nowhere(rig.clock, rig.dir.file("missing/errors"));
    Link link(rig.table, rig.countdowns, rig.dialogs, nowhere);
    port().fail_next("Output", 8010);
    EXPECT_EQ(link.transmit(0, "ask", 20, 8), "");
    EXPECT_EQ(rig.dialogs.texts(), Texts{"PATH NOT FOUND ERROR"});
}

TEST(Countdown, PoolReusesTheLowestSlotAndGrowsByOne) {
    SerialState state;
    testing::FakeTick tick;
    CountdownPool pool(state, tick);
    for (int slot = 0; slot < 3; ++slot)
        EXPECT_EQ(pool.start_countdown(10), slot);
    pool.stop_countdown(1);
    pool.stop_countdown(0);
    EXPECT_EQ(pool.start_countdown(5), 0);
    EXPECT_EQ(pool.start_countdown(5), 1);
    EXPECT_EQ(state.gTimerInUse.size(), 3U);
    EXPECT_FALSE(pool.countdown_expired(0));
    tick.advance(6);
    EXPECT_TRUE(pool.countdown_expired(0));
    EXPECT_FALSE(state.gTimerInUse[0]);
}

TEST(Countdown, EndsAtTheRightTimeAcrossTheWrap) {
    SerialState state;
    testing::FakeTick tick(4294967296.0 - 100);
    tick.step_ms = 1;
    CountdownPool pool(state, tick);
    const double begun = tick.now();
    pool.wait(500);
    EXPECT_NEAR(tick.now() - begun, 500, 4);
    EXPECT_LT(state.gLastTick, 1000U);
}

} // namespace
} // namespace pelvan
