#include "logging/trend.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "platform/text_file.h"
#include "support/temp_dir.h"

namespace pelvan {
namespace {

constexpr double kGap = std::numeric_limits<double>::quiet_NaN();

void add(Trend& trend, double time_ms, double value) {
    trend.begin_pass(time_ms);
    trend.record(0, "Address 1 register 100", value);
}

TEST(Trend, KeepsTheNewestPassesOnly) {
    Trend trend(2, 5);
    for (int i = 0; i < 12; ++i) {
        add(trend, i * 1000, i);
        if (i == 9) trend.record(1, "late", 1); // its column begins with gaps
    }
    EXPECT_EQ(trend.rows(), (std::vector<int>{0, 1}));
    EXPECT_EQ(trend.span().from_ms, 7000);
    EXPECT_EQ(trend.span().to_ms, 11000);
    const auto points = trend.points(0, trend.span(), 100);
    ASSERT_EQ(points.size(), 5U);
    for (std::size_t i = 0; i < 5; ++i)
        EXPECT_EQ(points[i].value, 7.0 + static_cast<double>(i));
    EXPECT_EQ(trend.points(1, trend.span(), 100).size(), 1U);
    EXPECT_EQ(trend.nearest(0, 8400).value, 8);
    EXPECT_EQ(trend.nearest(0, 8600).value, 9);
    EXPECT_EQ(trend.nearest(0, -1).value, 7);
    EXPECT_EQ(trend.nearest(0, 1e9).value, 11);
    EXPECT_TRUE(std::isnan(trend.nearest(1, 8000).value));
}

TEST(Trend, ThinningKeepsEverySpike) {
    Trend trend(1, 10000);
    for (int i = 0; i < 10000; ++i)
        add(trend, i, i == 4321 ? 99 : i == 8000 ? -99 : i == 5 ? kGap : 0);
    const auto points = trend.points(0, trend.span(), 50);
    EXPECT_LE(points.size(), 102U);
    const auto [low, high] = std::minmax_element(
        points.begin(), points.end(), [](auto& a, auto& b) { return a.value < b.value; });
    EXPECT_EQ(high->value, 99);
    EXPECT_EQ(high->time_ms, 4321);
    EXPECT_EQ(low->value, -99);
    for (std::size_t i = 1; i < points.size(); ++i)
        EXPECT_LT(points[i - 1].time_ms, points[i].time_ms);
    // Zoomed in, every reading is there, and one beyond each end.
    EXPECT_EQ(trend.points(0, {4310, 4330}, 50).size(), 22U);
}

TEST(Trend, ARowWithoutValueIsAGap) {
    Trend trend(1);
    for (int i = 0; i < 100; ++i)
        add(trend, i, i < 3 || i > 95 || i == 10 || (i >= 40 && i < 60) ? kGap : i);
    const auto gaps = [&](std::size_t buckets) {
        const auto points = trend.points(0, trend.span(), buckets);
        EXPECT_FALSE(std::isnan(points.front().value) || std::isnan(points.back().value));
        return std::count_if(points.begin(), points.end(),
                             [](auto& point) { return std::isnan(point.value); });
    };
    EXPECT_EQ(gaps(100), 2);
    EXPECT_EQ(gaps(20), 1); // a reading stands in every stretch round the short one
}

TEST(Trend, ANewNameBeginsAnew) {
    Trend trend(1);
    add(trend, 0, 1);
    trend.begin_pass(1000);
    trend.record(0, "Address 2 register 7", 5);
    EXPECT_EQ(trend.points(0, trend.span(), 10).size(), 1U);
    EXPECT_EQ(trend.name(0), "Address 2 register 7");
}

TEST(Trend, AForgottenRowIsGoneAndMayComeBack) {
    Trend trend(2);
    add(trend, 0, 1);
    trend.forget(0);
    EXPECT_TRUE(trend.rows().empty());
    EXPECT_TRUE(std::isnan(trend.nearest(0, 0).value));
    add(trend, 1000, 2);
    EXPECT_EQ(trend.points(0, trend.span(), 10).size(), 1U);
}

TEST(Trend, ExportsEveryPass) {
    const testing::TempDir dir;
    Trend trend(3);
    const double start = calendar_milliseconds({2026, 11, 15, 16, 30, 5});
    add(trend, start, 72.5);
    trend.record(2, "Address 1 register 101", -4);
    add(trend, start + 1250, kGap);
    const auto file = trend.export_csv(dir.file("trend.csv"));
    EXPECT_TRUE(file->write_some(1));
    EXPECT_EQ(file->share(), 0.5);
    trend.forget(2);
    add(trend, start + 2000, 1); // came in after the export was begun
    EXPECT_FALSE(file->write_some(5));
    EXPECT_EQ(testing::read_file(dir.file("trend.csv")),
              "Time,Address 1 register 100,Address 1 register 101\r\n"
              "2026-11-15 16:30:05.000,72.5,-4\r\n2026-11-15 16:30:06.250,,\r\n");
}

TEST(Trend, AnExportLeavesOutWhatIsPushedOutAndNoUnfinishedFile) {
    const testing::TempDir dir;
    Trend trend(1, 3);
    for (int i = 0; i < 3; ++i)
        add(trend, i * 1000, i);
    auto file = trend.export_csv(dir.file("trend.csv"));
    EXPECT_TRUE(file->write_some(1));
    for (int i = 3; i < 5; ++i)
        add(trend, i * 1000, i);
    EXPECT_FALSE(file->write_some(5));
    EXPECT_EQ(testing::read_file(dir.file("trend.csv")),
              "Time,Address 1 register 100\r\n1970-01-01 00:00:00.000,0\r\n"
              "1970-01-01 00:00:02.000,2\r\n");
    file = trend.export_csv(dir.file("trend.csv"));
    file.reset();
    EXPECT_FALSE(fileexists(dir.file("trend.csv")));
}

} // namespace
} // namespace pelvan
