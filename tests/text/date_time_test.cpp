#include "text/date_time.h"

#include <gtest/gtest.h>

#include "text/duration.h"

namespace pelvan {
namespace {

TEST(DateTime, TextsOfEveryUse) {
    const LocalTime time{2026, 3, 5, 6, 7, 8, 9};
    EXPECT_EQ(date_text(time), "03-05-2026");
    EXPECT_EQ(iso_date_text(time), "2026-03-05");
    EXPECT_EQ(slash_date_text(time), "3/5/2026");
    EXPECT_EQ(time_text(time), "06:07:08");
    EXPECT_EQ(time_ms_text(time), "06:07:08.009");
}

TEST(DateTime, CalendarMillisecondsGoThereAndBack) {
    // The numbers are those of `date -u -d ... +%s`.
    EXPECT_EQ(calendar_milliseconds({1970, 1, 1, 0, 0, 0, 0}), 0);
    EXPECT_EQ(calendar_milliseconds({2024, 2, 29, 23, 59, 59, 999}), 1709251199999.0);
    for (const double ms : {1709251199999.0, 951782400000.0, -1.0}) {
        const LocalTime time = calendar_time(ms);
        EXPECT_EQ(calendar_milliseconds(time), ms) << iso_date_text(time) << time_ms_text(time);
    }
}

TEST(Duration, HasTwoUnitsAtMost) {
    for (const auto& [ms, text] : {std::pair{0.0, "0.0 s"},
                                   {-5, "0.0 s"},
                                   {999.9, "0.9 s"},
                                   {1000, "1 s"},
                                   {59999, "59 s"},
                                   {60000, "1 min"},
                                   {125000, "2 min 5 s"},
                                   {3605000, "1 h"},
                                   {5400000, "1 h 30 min"},
                                   {90000000, "1 d 1 h"},
                                   {86405000, "1 d"}})
        EXPECT_EQ(time_span_text(ms), text);
}

} // namespace
} // namespace pelvan
