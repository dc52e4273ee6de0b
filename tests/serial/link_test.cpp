// Exchanges on one channel, who may use the lines, and what happens to ports that somebody wants to
// rebuild meanwhile.
#include <gtest/gtest.h>

#include "support/serial_rig.h"

namespace pelvan::testing {

/// Channel 0 on port 1: settle time 2 ms, mode as given. Channel 1 on port 2.
struct LinkTest : ::testing::Test, SerialRig {
    LinkTest() {
        start("1");
        dialogs.on_message = [this](const std::string&) {
            if (const auto action = std::exchange(in_next_box, {})) action();
        };
    }
    void start(const std::string& mode) { build({"1;9600,N,8,1;" + mode, "2;9600,N,8,1;1"}); }
    FakeSerialPort& port() { return *ports[0]; }
    std::string exchange(const std::vector<Arrival>& reply, Link* by = nullptr) {
        port().replies.push_back(reply);
        begun_ms = tick.now();
        return (by ? *by : link).transmit(0, "ask", 200, 8);
    }
    [[nodiscard]] double taken_ms() const { return tick.now() - begun_ms; }

    double begun_ms = 0;
    std::function<void()> in_next_box; // happens while it stands
};

TEST_F(LinkTest, AReplyEndsWithTheQuietPauseOrTheTimeOutAndTheRestIsDiscarded) {
    std::vector<Arrival> endless;
    for (int i = 0; i < 100; ++i)
        endless.push_back({i * 10.0, "x"});
    const std::string zero(1, '\0');
    // What comes, how much of it is the reply, when that ends.
    const std::tuple<std::vector<Arrival>, std::string, double> replies[] = {
        {{}, "", 200},
        {{{50, "ab"}, {60, "c"}, {75, zero}, {160, "rest"}}, "abc" + zero, 98},
        {{{5, "second"}}, "second", 21},
        {endless, std::string(20, 'x'), 208}};
    port().discards_future = false;
    for (const auto& [arrivals, reply, ms] : replies) {
        EXPECT_EQ(exchange(arrivals), reply);
        EXPECT_NEAR(taken_ms(), ms, 2) << reply;
        tick.advance(100);
    }
    EXPECT_EQ(port().outputs, Texts(4, "ask"));
    EXPECT_TRUE(dialogs.shown.empty());
}

TEST_F(LinkTest, RtsIsHeldForTheBytesAndRaisedAgainByTheChannelsOwnFlag) {
    start("2");
    exchange({{30, "ok"}});
    const auto& events = port().events;
    EXPECT_TRUE(port().history().ends_with(
        "open, discard, discard, escape 3, output 3, escape 4, escape 3"));
    EXPECT_NEAR(events[8].at_ms - events[7].at_ms, 3 * 2, 1);
    build({"1;9600,N,8,1;1", "1;9600,N,8,1;2"}); // one port for two
    port().set_PortOpen(true);
    port().replies.push_back({{1, "shared"}});
    EXPECT_EQ(link.transmit(1, "ask", 200, 8), "shared");
    EXPECT_TRUE(port().history().ends_with("escape 3, output 3, escape 4, escape 3"));
}

TEST_F(LinkTest, LetsTheLineFallSilentSoThatALateReplyIsNotTakenForTheNext) {
    std::vector<Arrival> endless;
    for (int i = 0; i < 20; ++i)
        endless.push_back({230 + i * 100.0, "x"});
    // What comes late, after the time-out at 200; the wait from there on; whether silence ended it;
    // the bytes that came meanwhile.
    const std::tuple<std::vector<Arrival>, double, bool, std::size_t> late_replies[] = {
        {{}, 250, true, 0},
        {{{300, "late"}}, 350, true, 4},
        {{{440, "late"}, {680, "later"}}, 730, true, 9},
        {{{460, "later than that"}}, 250, true, 0},
        {endless, 1030, false, 11}};
    port().discards_future = false;
    for (const auto& [late, waited_ms, silent, discarded] : late_replies) {
        EXPECT_EQ(exchange(late), "");
        begun_ms = tick.now();
        const Silence silence = link.let_fall_silent();
        EXPECT_EQ(silence.silent, silent);
        EXPECT_EQ(silence.discarded, discarded);
        EXPECT_NEAR(taken_ms(), waited_ms, silent ? 2 : 110);
        tick.advance(2000);
    }
    port().fail_next("InBufferCount", 8020);
    EXPECT_TRUE(link.let_fall_silent().silent);
    EXPECT_TRUE(log_text().ends_with("transmit, ERROR #,  8020 \r\n"));
    rebuild();
    EXPECT_TRUE(link.let_fall_silent().silent) << "nothing is open";
    EXPECT_TRUE(dialogs.shown.empty()) << "the next exchange meets and shows it";
    EXPECT_LE(state.gTimerInUse.size(), 3U);
}

TEST_F(LinkTest, PortThatCannotBeReopenedIsShownAndLeavesNormally) {
    exchange({});
    port().fail_next("Output", 57);
    port().fail_next("PortOpen", 8002);
    EXPECT_EQ(exchange({}), "");
    // The reopening's own error, then the collection on the closed port.
    EXPECT_EQ(dialogs.texts(), (Texts{"COMM ERROR NUMBER: 8002.  CHECK PORT/SETTINGS",
                                      "COMM ERROR NUMBER: 8018.  CHECK PORT/SETTINGS"}));
}

TEST_F(LinkTest, WhatFollowsAnErrorByItsNumber) {
    const std::tuple<const char*, int, Texts, std::string> errors[] = {
        {"Input", 8020, {"COMM ERROR NUMBER: 8020.  CHECK PORT/SETTINGS"}, ", output 3"},
        {"Output", 57, {}, ", close, open"}, // reopened
        {"Output", 69, {}, ", close, open"},
        {"Output", 68, {}, ", output 3"}, // the statement is retried
        {"Output", 8010, {}, ""},         // the next statement follows in silence
        {"Output", 8020, {"COMM ERROR NUMBER: 8020.  CHECK PORT/SETTINGS"}, ""},
        {"Output", 5, {"ILLEGAL FUNCTION CALL ERROR"}, ""}};
    for (const auto& [operation, number, messages, events] : errors) {
        start("1");
        dialogs.shown.clear();
        port().fail_next(operation, number);
        EXPECT_EQ(exchange({{0, "reply"}}), number == 68 ? "reply" : "") << number;
        EXPECT_EQ(dialogs.texts(), messages) << number;
        EXPECT_TRUE(port().history().ends_with("open, discard, discard" + events)) << number;
        EXPECT_TRUE(
            log_text().ends_with("transmit, ERROR #,  " + std::to_string(number) + " \r\n"));
    }
    EXPECT_LE(state.gTimerInUse.size(), 2U) << "a countdown was lost";
}

TEST_F(LinkTest, UnwritableLogIsShownInPlaceOfTheEntry) {
    ErrorLog nowhere(clock, dir.file("missing/errors"));
    Link unlogged(table, countdowns, dialogs, nowhere);
    port().fail_next("Output", 8010);
    EXPECT_EQ(exchange({}, &unlogged), "");
    EXPECT_EQ(dialogs.texts(), Texts{"The error log " + dir.file("missing/errors") +
                                     " cannot be written: PATH NOT FOUND ERROR."});
}

TEST_F(LinkTest, AClaimEndsWithItsLastHandle) {
    LineUse use;
    const LineUser setup{"Save/Restore Setup"}, scripts{"Command scripts"};
    std::string changes;
    const Subscription watching =
        use.changed.subscribe([&] { changes += use.refusal(nullptr).empty() ? "-" : "+"; });
    {
        LineClaim outer = use.claim(setup);
        const LineClaim inner = use.claim(setup);
        LineClaim refused = use.claim(scripts);
        EXPECT_TRUE(outer && inner && !refused);
        EXPECT_EQ(use.refusal(&setup), "");
        LineClaim moved = std::move(outer);
        moved = std::move(refused); // releases what it held
        EXPECT_FALSE(moved);
        EXPECT_EQ(use.refusal(&scripts), "The line is in use by Save/Restore Setup.");
    }
    EXPECT_TRUE(use.claim(scripts));
    EXPECT_EQ(changes, "+-+-");
}

TEST_F(LinkTest, WhileClaimedOnlyTheHolderTransmitsAndNobodyRebuilds) {
    Link setup(table, countdowns, dialogs, log, "Save/Restore Setup");
    auto* const before = ports[0];
    {
        const LineClaim claim = setup.claim();
        EXPECT_FALSE(link.claim());
        EXPECT_EQ(exchange({{1, "reply"}}, &setup), "reply");
        EXPECT_EQ(exchange({{1, "reply"}}), "");
        EXPECT_EQ(port().outputs.size(), 1U) << "the line was not touched";
        EXPECT_FALSE(table.init_comms());
        EXPECT_EQ(ports[0], before);
        EXPECT_EQ(dialogs.texts(), Texts(2, "The line is in use by Save/Restore Setup."));
    }
    EXPECT_EQ(exchange({}), "reply");
    EXPECT_TRUE(table.init_comms());
}

TEST_F(LinkTest, ARebuildAskedForInABoxFollowsTheExchangeOrOpeningOrRebuilding) {
    exchange({});
    port().fail_next("Output", error_number::kCannotReadDevice);
    in_next_box = [&] {
        EXPECT_TRUE(table.init_comms());
        EXPECT_EQ(ports.size(), 2U) << "nothing is rebuilt under the exchange";
    };
    EXPECT_EQ(exchange({{1, "reply"}}), "");
    EXPECT_EQ(ports.size(), 4U) << "rebuilt when the exchange had ended";
    ports = {ports[2], ports[3]};
    in_next_box = [&] { table.init_comms(); };
    port().fail_next("PortOpen", 8005);
    EXPECT_EQ(open_port(0), 0);
    EXPECT_EQ(ports.size(), 4U);
    ini_write_string("COMMS CONTROLS", "DEVICE 1 PORT SETTING ", "short", config.gIniFile);
    in_next_box = [&] { table.init_comms(); };
    rebuild();
    EXPECT_EQ(state.gCommDevice.size(), 2U);
    EXPECT_EQ(ports.size(), 4U) << "once, and once again";
    ports = {ports[2], ports[3]};
    EXPECT_EQ(exchange({{1, "reply"}}), "reply");
}

TEST_F(LinkTest, AnExchangeOnAnEmptyTableIsLoggedAndReturnsNothing) {
    ini_write_string("COMMS CONTROLS", "DEVICE 0 COMM PORT ", "99", config.gIniFile);
    std::string reply = "none yet";
    in_next_box = [&] { // about the bad port number
        reply = link.transmit(0, "ask", 50, 8);
        ini_write_string("COMMS CONTROLS", "DEVICE 0 COMM PORT ", "1", config.gIniFile);
    };
    rebuild();
    EXPECT_EQ(reply, "");
    EXPECT_TRUE(log_text().ends_with("open_port, ERROR #,  9 \r\n")) << log_text();
    EXPECT_EQ(state.gCommDevice.size(), 2U);
}

TEST_F(LinkTest, CountdownsReuseTheLowestSlotAndEndAtTheRightTimeAcrossTheWrap) {
    for (int slot = 0; slot < 3; ++slot)
        EXPECT_EQ(countdowns.start_countdown(10), slot);
    countdowns.stop_countdown(1);
    countdowns.stop_countdown(0);
    EXPECT_EQ(countdowns.start_countdown(5), 0);
    EXPECT_EQ(countdowns.start_countdown(5), 1);
    EXPECT_EQ(state.gTimerInUse.size(), 3U);
    EXPECT_FALSE(countdowns.countdown_expired(0));
    tick.advance(6);
    EXPECT_TRUE(countdowns.countdown_expired(0));
    EXPECT_FALSE(state.gTimerInUse[0]);
    tick.step_ms = 1;
    tick.advance(4294967296.0 - 100 - tick.now());
    begun_ms = tick.now();
    countdowns.wait(500);
    EXPECT_NEAR(taken_ms(), 500, 4);
    EXPECT_LT(state.gLastTick, 1000U);
}

} // namespace pelvan::testing
