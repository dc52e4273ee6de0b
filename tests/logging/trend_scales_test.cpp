// Round numbers on the trend's axes, and which curves share a scale.
#include "logging/trend_scales.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "text/numbers.h"

namespace pelvan {
namespace {

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
}

TEST_F(TrendScalesTest, AutomaticScalesAreFew) {
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
