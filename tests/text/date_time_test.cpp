#include "text/date_time.h"

#include <gtest/gtest.h>

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

} // namespace
} // namespace pelvan
