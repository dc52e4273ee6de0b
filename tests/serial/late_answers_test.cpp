// Exchanges with controllers that answer late, twice, or for somebody else.
#include <gtest/gtest.h>

#include "serial/careful_exchange.h"
#include "support/serial_rig.h"

namespace pelvan::testing {

struct LateAnswersTest : ::testing::Test, SerialRig {
    LateAnswersTest() {
        build({"1;9600,N,8,1;1"});
        ports[0]->discards_future = false;
    }
    /// One request; what comes so many milliseconds after it, each byte that fits is 'a'.
    CarefulReply ask(const std::vector<Arrival>& reply, int address = 1, bool read = true) {
        CarefulRequest request{{0, address}, read, true, {}, {}};
        ports[0]->replies.push_back(reply);
        request.exchange = [this] { return link.transmit(0, "ask", 200, 8); };
        request.fit = [](const std::string& text) {
            return text == "a" ? Fit::Answers : text == "d" ? Fit::Damaged : Fit::Missing;
        };
        const double begun = tick.now();
        CarefulReply result = exchange_carefully(link, request);
        taken_ms = tick.now() - begun;
        return result;
    }
    [[nodiscard]] std::size_t sent() const { return ports[0]->outputs.size(); }

    double taken_ms = 0;
};

constexpr double kCleanMs = 10 + 16; // the reply comes, and the quiet pause passes
constexpr double kSilenceMs = 250;

TEST_F(LateAnswersTest, CleanExchangesAndOtherAddressesPayNothing) {
    link.transmit(0, "ask", 200, 8);
    const std::string bare = ports[0]->history();
    rebuild();
    ports[0]->discards_future = false;
    ask({});
    EXPECT_EQ(ports[0]->history(), bare);
    EXPECT_NEAR(taken_ms, 200 + kSilenceMs, 2);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(ask({{10, "a"}}, 2).reply, "a");
        EXPECT_NEAR(taken_ms, kCleanMs, 2);
    }
    ask({{10, "d"}}, 2);
    EXPECT_NEAR(taken_ms, kCleanMs + kSilenceMs, 2);
    ask({{10, "a"}}, 2);
    EXPECT_NEAR(taken_ms, kCleanMs, 2) << "a damaged answer was the answer";
    EXPECT_EQ(sent(), 6U);
}

TEST_F(LateAnswersTest, TheDoubtfulOneIsListenedToForTenSeconds) {
    for (const Arrival& failure : {Arrival{10, "x"}, Arrival{999, ""}}) {
        ask({failure});
        tick.advance(9000);
        EXPECT_FALSE(ask({{10, "a"}}).unclear);
        EXPECT_NEAR(taken_ms, kCleanMs + kSilenceMs, 2);
        tick.advance(1000);
        ask({{10, "a"}});
        EXPECT_NEAR(taken_ms, kCleanMs, 2);
    }
}

TEST_F(LateAnswersTest, ALateAnswerIsFollowedByASecondReadAndNeverByASecondWrite) {
    ask({});
    ports[0]->replies.push_back({{10, "a"}, {90, "a"}}); // the late one, then its own
    const CarefulReply read = ask({{10, "a"}});
    EXPECT_EQ(read.reply, "a");
    EXPECT_FALSE(read.unclear);
    EXPECT_EQ(sent(), 3U);
    ports[0]->replies.clear();
    EXPECT_TRUE(ask({{10, "a"}, {90, "a"}}, 1, false).unclear);
    EXPECT_EQ(sent(), 4U);
    ports[0]->replies.push_back({{10, "a"}, {90, "a"}});
    EXPECT_TRUE(ask({{10, "a"}, {90, "a"}}).unclear) << "it goes on";
    EXPECT_EQ(sent(), 6U) << "once more, and no oftener";
}

TEST_F(LateAnswersTest, BytesThatNobodyAskedForMakeBothAskedOnesDoubtful) {
    ask({{10, "a"}, {90, "a"}});
    tick.advance(500);
    const CarefulReply after = ask({{10, "a"}}, 2);
    EXPECT_TRUE(after.after_strays);
    EXPECT_NEAR(taken_ms, kCleanMs + kSilenceMs, 2);
    EXPECT_FALSE(ask({{10, "a"}}, 1).after_strays);
    EXPECT_NEAR(taken_ms, kCleanMs + kSilenceMs, 2);
}

TEST_F(LateAnswersTest, TheEndOfAProcessWaitsOnlyWhileSomebodyIsDoubtful) {
    const auto waited_ms = [this] {
        const double begun = tick.now();
        await_late_answer(link);
        return tick.now() - begun;
    };
    ask({{10, "a"}});
    EXPECT_NEAR(waited_ms(), 0, 1);
    ask({});
    EXPECT_NEAR(waited_ms(), 2000, 10);
    ask({{700, "late"}});
    EXPECT_NEAR(waited_ms(), 500, 10) << "it came";
}

} // namespace pelvan::testing
