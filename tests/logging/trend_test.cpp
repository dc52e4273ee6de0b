#include "logging/trend.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "platform/text_file.h"
#include "support/temp_dir.h"
#include "text/numbers.h"

namespace pelvan {
namespace {

constexpr double kGap = std::numeric_limits<double>::quiet_NaN();

void add(Trend& trend, double time_ms, double value) {
    trend.begin_pass(time_ms);
    trend.record(0, "address 1, register 100", value);
}

/// "time:value" of each point, the value left out at a gap.
std::string curve(const Trend& trend, int row, std::size_t buckets = 100) {
    std::string out;
    for (const TrendPoint& point : trend.points(row, trend.span(), buckets))
        out += (out.empty() ? "" : " ") + plain_number(point.time_ms) + ":" +
               (std::isnan(point.value) ? "" : plain_number(point.value));
    return out;
}

TEST(Trend, KeepsTheNewestPassesOnly) {
    Trend trend(2, 5);
    for (int i = 0; i < 12; ++i) {
        add(trend, i * 1000, i);
        if (i == 9) trend.record(1, "late", 1); // its column begins with gaps
    }
    EXPECT_EQ(trend.rows(), (std::vector<int>{0, 1}));
    EXPECT_EQ(curve(trend, 0), "7000:7 8000:8 9000:9 10000:10 11000:11");
    EXPECT_EQ(curve(trend, 1), "9000:1");
    for (const auto& [at, value] : {std::pair{8400.0, 8}, {8600.0, 9}, {-1.0, 7}, {1e9, 11}})
        EXPECT_EQ(trend.nearest(0, at).value, value);
    EXPECT_TRUE(std::isnan(trend.nearest(1, 8000).value));
}

TEST(Trend, ThinningKeepsEverySpike) {
    Trend trend(1, 10000);
    for (int i = 0; i < 10000; ++i)
        add(trend, i, i == 4321 ? 99 : i == 8000 ? -99 : i == 5 ? kGap : 0);
    const auto points = trend.points(0, trend.span(), 50);
    EXPECT_LE(points.size(), 102U);
    EXPECT_EQ(std::ranges::max(points, {}, &TrendPoint::value).time_ms, 4321);
    EXPECT_EQ(std::ranges::min(points, {}, &TrendPoint::value).time_ms, 8000);
    EXPECT_EQ(std::ranges::adjacent_find(points, std::greater_equal{}, &TrendPoint::time_ms),
              points.end());
    // Zoomed in, every reading is there, and one beyond each end.
    EXPECT_EQ(trend.points(0, {4310, 4330}, 50).size(), 22U);
    EXPECT_TRUE(trend.points(0, {4330, 4310}, 50).empty());
}

TEST(Trend, ARowWithoutValueIsAGap) {
    Trend trend(1);
    for (int i = 0; i < 12; ++i)
        add(trend, i, i < 1 || i > 10 || i == 3 || (i >= 5 && i < 9) ? kGap : i);
    EXPECT_EQ(curve(trend, 0), "1:1 2:2 2: 4:4 4: 9:9 10:10");
    EXPECT_EQ(curve(trend, 0, 3), "1:1 2:2 4:4 4: 9:9 10:10"); // the short one is not seen
}

TEST(Trend, AnotherSourceBeginsAnewAndSoDoesAForgottenRowButNoOtherName) {
    Trend trend(2);
    add(trend, 0, 1);
    trend.begin_pass(1000);
    trend.describe(0, {"Oven", "%"});
    EXPECT_EQ(curve(trend, 0), "0:1");
    trend.record(0, "address 2, register 7", 5);
    EXPECT_EQ(curve(trend, 0), "1000:5");
    EXPECT_EQ(trend.label(0), (TrendLabel{"Oven", "%"}));
    trend.forget(0);
    EXPECT_TRUE(trend.rows().empty());
    EXPECT_TRUE(std::isnan(trend.nearest(0, 0).value));
    add(trend, 2000, 2);
    EXPECT_EQ(curve(trend, 0), "2000:2");
}

TEST(Trend, ExportsWhatWasThereWhenItBeganAndIsNotPushedOut) {
    const testing::TempDir dir;
    const std::string path = dir.file("trend.csv");
    Trend trend(3, 3);
    const double start = calendar_milliseconds({2026, 11, 15, 16, 30, 5});
    add(trend, start, 72.5);
    trend.record(2, "address 1, register 101", -4);
    trend.describe(0, {"Oven 1", "\u00B0C"});
    trend.describe(2, {"a \"b\", c", ""});
    add(trend, start + 1250, 7);
    add(trend, start + 2000, kGap);
    auto file = trend.export_csv(path);
    EXPECT_TRUE(file->write_some(1));
    EXPECT_NEAR(file->share(), 1.0 / 3, 0.01);
    trend.forget(2);
    add(trend, start + 3000, 1);
    add(trend, start + 4000, 1); // the second pass is gone now
    EXPECT_FALSE(file->write_some(5));
    EXPECT_EQ(testing::read_file(path),
              "Time,Oven 1 [\u00B0C],\"a \"\"b\"\", c\"\r\n"
              "2026-11-15 16:30:05.000,72.5,-4\r\n2026-11-15 16:30:07.000,,\r\n");
    file = trend.export_csv(path);
    file.reset(); // unfinished
    EXPECT_FALSE(fileexists(path));
}

} // namespace
} // namespace pelvan
