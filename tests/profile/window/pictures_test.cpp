// The pictures of curves and runs.
#include "profile/window/curve_picture.h"
#include "profile/window/run_timeline.h"
#include "profile_form_fixture.h"

namespace pelvan::testing {
namespace {

CurvePicture two_pieces() {
    CurvePicture picture;
    picture.pieces = {{0, 100, {0, 50}, {100, 50}}, {100, 300, {100, 50}, {100, 50}}};
    return picture;
}

RunSample sample(double time_s, RunState state, double place_s) {
    RunReading reading;
    reading.state = state;
    return {time_s * 1000, reading, place_s, {}};
}

TEST(RunTimeline, WhatIsProgrammedMovesOnWhileTheRunStands) {
    RunTimeline line;
    line.begin(two_pieces());
    line.add(sample(10, RunState::Running, 0));
    line.add(sample(60, RunState::Running, 50));
    line.add(sample(90, RunState::Held, 50));
    line.add(sample(120, RunState::Held, 50));
    line.add(sample(130, RunState::Running, 60));
    const auto& pieces = line.picture().programmed.pieces;
    EXPECT_NEAR(line.picture().now_s, 120, 1e-9);
    EXPECT_NEAR(pieces.back().to_s, 360, 1e-9);
    ASSERT_EQ(pieces.size(), 4U);
    EXPECT_NEAR(pieces[1].from[0], 50, 1e-9) << "flat where it stood";
    EXPECT_NEAR(pieces[1].to_s - pieces[1].from_s, 60, 1e-9);
    for (std::size_t i = 1; i < pieces.size(); ++i)
        EXPECT_NEAR(pieces[i].from_s, pieces[i - 1].to_s, 1e-9);
}

TEST(RunTimeline, KeepsBoundedPointsAndOneForEachGap) {
    RunTimeline line;
    line.begin(two_pieces());
    line.add(sample(0, RunState::Running, 0));
    for (int i = 1; i <= 5; ++i)
        line.add({i * 1000.0, {}, {}, {}});
    EXPECT_EQ(line.picture().points.size(), 2U);
    EXPECT_NEAR(line.picture().now_s, 5, 1e-9) << "time goes on while nothing is seen";
    for (int i = 6; i < 100'000; ++i)
        line.add(sample(i, RunState::Running, i));
    EXPECT_LE(line.picture().points.size(), RunTimeline::kMostPoints);
    EXPECT_NEAR(line.picture().points.front().time_s, 0, 1e-9);
    EXPECT_NEAR(line.picture().points.back().time_s, 99'999, 1e-9);
}

TEST(CurvePicture, ShowsWhatMovesAndWhereItStops) {
    const ProfileFormat format = load_profile_model(PELVAN_SAMPLES, 742).model->format;
    const auto step = [&](int type, const std::map<int, int>& fields) {
        ProfileStep made = new_step(format.kinds.at(type));
        for (const auto& [number, value] : fields)
            made.fields.at(number) = value;
        return made;
    };
    ProfileSet set;
    set[1] = {1,
              {},
              {step(2, {{4007, 1000}, {4012, 100}}), step(4, {{4013, 1}, {4014, 1}, {4015, 2}}),
               step(3, {{4005, 1}}), step(0, {})}};
    const ProfileCurve curve = unroll(format, set, {1, 1, {0, 0}});
    const CurvePicture picture = curve_picture(format, set, curve);
    EXPECT_EQ(picture.names[0], "set point 1 (degrees)");
    EXPECT_TRUE(std::isnan(picture.pieces[0].to[1])) << "set point 2 is not programmed";
    EXPECT_TRUE(picture.pieces[0].time_moves && picture.pieces[0].value_moves[0]);
    for (std::size_t i = 1; i + 1 < picture.pieces.size(); ++i)
        EXPECT_FALSE(picture.pieces[i].time_moves) << "a later turn of the jump";
    EXPECT_EQ(total_time_text(curve), "0:11:00");
    set[1].steps[1].fields[4013] = 7;
    EXPECT_EQ(curve_picture(format, set, unroll(format, set, {1, 1, {0, 0}})).cut,
              "Stops at a jump to nowhere: profile 1, step 2.");
}

} // namespace
} // namespace pelvan::testing
