#include "platform/tick.h"

#include <gtest/gtest.h>

namespace pelvan::testing {

TEST(Tick, SpansAndMomentsGoOnAcrossTheWrap) {
    EXPECT_EQ(tick_span(1000, 1250), 250);
    EXPECT_EQ(tick_span(4294967295.0, 0), 1);
    SteadyTime time;
    EXPECT_FALSE(time.started());
    time.start(4294967000.0, 5000);
    EXPECT_EQ(time.at(4294967200.0), 5200);
    EXPECT_EQ(time.at(104), 5400);
}

TEST(Tick, LocalTimeGoesThereAndBackToTheMillisecond) {
    for (const double ms : {1763224205250.0, 0.0, 1784100000001.0})
        EXPECT_EQ(epoch_milliseconds(local_time(ms)), ms);
}

// With the machine's uptime instead, single-precision ticks would be rounded to 8 ms after a day.
TEST(SystemTickTest, BeginsWithTheProgram) {
    constexpr std::uint32_t kMaxRunMs = 10 * 60 * 1000;
    const auto tick = make_system_tick();
    const std::uint32_t first = tick->timeGetTime();
    EXPECT_LT(first, kMaxRunMs);
    EXPECT_GE(make_system_tick()->timeGetTime(), first) << "one tick for the whole program";
}

} // namespace pelvan::testing
