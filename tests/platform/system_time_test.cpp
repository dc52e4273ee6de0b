#include <gtest/gtest.h>

#include "platform/tick.h"

namespace pelvan {
namespace {

// With the machine's uptime instead, single-precision ticks would be rounded to 8 ms after a day.
TEST(SystemTickTest, BeginsWithTheProgram) {
    constexpr std::uint32_t kMaxRunMs = 10 * 60 * 1000;
    const auto tick = make_system_tick();
    const std::uint32_t first = tick->timeGetTime();
    EXPECT_LT(first, kMaxRunMs);
    EXPECT_GE(make_system_tick()->timeGetTime(), first) << "one tick for the whole program";
}

} // namespace
} // namespace pelvan
