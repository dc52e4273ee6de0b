// The readings that are kept for curves, round numbers on the axes, and which curves share a scale.
#include "logging/trend.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "logging/trend_scales.h"
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

std::string range_text(const ValueRange& range) {
    return plain_number(range.low) + " to " + plain_number(range.high);
}

std::string ticks_text(const std::vector<AxisTick>& ticks) {
    std::string out;
    for (const AxisTick& tick : ticks)
        out += (out.empty() ? "" : " ") + (tick.date.empty() ? "" : tick.date + "/") + tick.text;
    return out;
}

TEST(AxisTicks, RangesReachFromRoundNumberToRoundNumber) {
    const std::vector<std::tuple<double, double, std::string>> cases{
        {74.03, 74.42, "74 to 74.5"},
        {0, 100, "0 to 100"},
        {-3, 97, "-25 to 100"},
        {1, 99, "0 to 100"},
        {100000, 100000, "90000 to 115000"}, // stands still
        {0, 0, "-1 to 1.5"},
        {-0.004, 0.007, "-0.005 to 0.0075"},
        {-1e305, 1e305, "-1e300"},
    };
    for (const auto& [low, high, text] : cases) {
        const ValueRange range = round_range(low, high, 5);
        EXPECT_TRUE(range.low <= std::max(low, -1e300) && range.high >= std::min(high, 1e300))
            << low;
        if (std::abs(low) < 1e300) {
            EXPECT_EQ(range_text(range), text);
        }
        const auto ticks = value_ticks(range, 5);
        EXPECT_EQ(ticks.size(), 6U) << text;
        EXPECT_TRUE(std::ranges::is_sorted(ticks, {}, &AxisTick::at));
    }
}

TEST(AxisTicks, TextsHaveTheDecimalsOfTheirStep) {
    EXPECT_EQ(ticks_text(value_ticks({74, 74.5}, 5)), "74.0 74.1 74.2 74.3 74.4 74.5");
    EXPECT_EQ(ticks_text(value_ticks({-0.3, 0.3}, 3)), "-0.2 0.0 0.2");
    EXPECT_EQ(ticks_text(value_ticks({99000, 101500}, 5)),
              "99000 99500 100000 100500 101000 101500");
    EXPECT_EQ(ticks_text(value_ticks({0, 4e9}, 2)), "0 2e+09 4e+09");
    EXPECT_TRUE(value_ticks({5, 5}, 5).empty());
}

TEST(AxisTicks, TimesStandAtFullUnitsWithADateWhereItChanges) {
    const double noon = calendar_milliseconds({2026, 11, 15, 12, 0, 0});
    const auto ticks = [&](double from_s, double to_s, int most) {
        return ticks_text(time_ticks({noon + from_s * 1000, noon + to_s * 1000}, most));
    };
    EXPECT_EQ(ticks(0.5, 9, 5), "2026-11-15/12:00:02 12:00:04 12:00:06 12:00:08");
    EXPECT_EQ(ticks(-700, 500, 3), "2026-11-15/11:50 12:00");
    EXPECT_EQ(ticks(0, 86400, 2), "2026-11-15/12:00 2026-11-16/00:00 12:00");
    EXPECT_EQ(ticks(0, 5 * 86400.0, 3), "2026-11-17/00:00 2026-11-19/00:00");
    EXPECT_EQ(ticks(0, 0, 5), "");
}

class TrendScalesTest : public ::testing::Test {
  protected:
    void add(int row, double low, double high, const std::string& unit = {}) {
        curves.push_back({row, unit, {low, high}, {low, high}});
    }
    /// Rows and range of each scale.
    std::string seen() {
        scales.update(curves, 5);
        std::string out;
        for (const TrendScale& scale : scales.scales()) {
            out += out.empty() ? "" : "; ";
            for (const int row : scale.rows)
                out += std::to_string(row) + " ";
            out += range_text(scale.range) + scale.unit;
        }
        return out;
    }

    std::vector<CurveRange> curves;
    TrendScales scales;
};

TEST_F(TrendScalesTest, CurvesThatCannotBeReadBesideOneAnotherHaveScalesOfTheirOwn) {
    add(0, 74.2, 74.6, "F");
    add(1, 75, 75, "F");
    add(3, 0, 42, "%");
    add(4, 100000, 100000);
    add(6, 0, 0); // can be read anywhere
    EXPECT_EQ(seen(), "0 1 74.2 to 75.2F; 3 0 to 50%; 4 6 0 to 100000");
    curves[4].visible = {3, 4}; // what is in sight moves nobody to another scale
    EXPECT_EQ(scales.scale_of(6).rows, (std::vector<int>{4, 6}));
    scales.set_mode(ScaleMode::Shared);
    EXPECT_EQ(seen(), "0 1 3 4 6 0 to 100000");
    scales.set_mode(ScaleMode::Own);
    EXPECT_EQ(seen(), "0 74.2 to 74.7F; 1 65 to 90F; 3 0 to 50%; 4 90000 to 115000; 6 3 to 4");
    EXPECT_EQ(scales.shown(6, 3), (std::vector<std::size_t>{0, 1, 4}));
    EXPECT_EQ(scales.shown(-1, 9).size(), 5U);
    curves.clear();
    EXPECT_EQ(seen(), "");
    scales.set_mode(ScaleMode::Automatic); // of which there are few
    for (int row = 0; row < 9; ++row)
        add(row, 0, std::pow(100, row));
    scales.update(curves, 5);
    EXPECT_EQ(scales.scales().size(), TrendScales::kMaxAutomatic);
}

TEST_F(TrendScalesTest, WhatWasZoomedStaysUntilItFitsAgain) {
    add(0, 0, 100);
    add(1, 0, 1e5);
    seen();
    scales.zoom(0.5, 0); // every scale, about its lower end
    EXPECT_EQ(seen(), "0 0 to 50; 1 0 to 50000");
    scales.pan(0.5);
    curves[0].visible = {0, 900};
    EXPECT_EQ(seen(), "0 25 to 75; 1 25000 to 75000");
    EXPECT_EQ(scales.scale_of(0).share_of(50), 0.5);
    scales.fit();
    EXPECT_EQ(seen(), "0 0 to 1000; 1 0 to 100000");
    for (int i = 0; i < 5000; ++i) // a key that is held
        scales.zoom(i < 2500 ? 0.8 : 1.25, 0.3);
    EXPECT_GT(scales.scale_of(0).range.width(), 0);
    EXPECT_LT(value_ticks(scales.scale_of(1).range, 5).size(), 7U);
}

} // namespace
} // namespace pelvan
