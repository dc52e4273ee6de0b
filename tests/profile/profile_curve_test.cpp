#include "profile/profile_curve.h"

#include <cmath>

#include "profile/profile_rig.h"
#include "support/temp_dir.h"

namespace pelvan::testing {
namespace {

ProfileCurve curve_of(const std::vector<Profile>& profiles, double from = 20) {
    return unroll(sample_format(), set_of(profiles), {1, 1, {from, from}});
}

/// "profile.step seconds" of every segment.
std::string course(const ProfileCurve& curve) {
    std::string text;
    for (const CurveSegment& one : curve.segments)
        text += (text.empty() ? "" : ", ") + std::to_string(one.profile) + "." +
                std::to_string(one.step) + " " + std::to_string(std::lround(one.end - one.begin));
    return text;
}

TEST(ProfileCurve, RampsAndSoaksFromWhereTheCurveStands) {
    // 20 -> 120 at 5 a minute: 20 minutes; a soak; both to their set points; a leap down.
    std::vector<ProfileStep> steps{rate_ramp(50, 1200), soak(10, 30), ramp(60, 2200, 500),
                                   ramp(0, 0, 0)};
    steps[0].fields[4011] = 5;
    steps[3].fields[4011] = 2;
    const ProfileCurve curve = curve_of({profile_of(1, steps)});
    EXPECT_EQ(course(curve), "1.1 1200, 1.2 630, 1.3 3600, 1.4 0");
    EXPECT_EQ(curve.how, CurveEnd::Ended);
    EXPECT_EQ(curve.last_step, 5);
    EXPECT_DOUBLE_EQ(curve.seconds, 5430);
    const std::tuple<double, double, double, int> moments[] = {
        {-1, 20, 20, 1},    {600, 70, 20, 1}, {1200, 120, 20, 2}, {1830, 120, 20, 3},
        {3630, 170, 35, 3}, {5430, 0, 0, 4},  {1e9, 0, 0, 4}};
    for (const auto& [time, first, second, step] : moments) {
        const CurvePoint point = curve.at(time);
        EXPECT_DOUBLE_EQ(point.set_points[0], first) << time;
        EXPECT_DOUBLE_EQ(point.set_points[1], second) << time;
        EXPECT_EQ(point.step, step) << time;
    }
    EXPECT_EQ(curve.at(0).events, 5);
    EXPECT_EQ(curve.at(6000).events, 2);
    EXPECT_DOUBLE_EQ(curve.deviation(600, 0, 68.5), -1.5);
    // Started in the middle, from elsewhere.
    EXPECT_EQ(course(unroll(sample_format(), set_of({profile_of(1, steps)}), {1, 2, {0, 0}})),
              "1.2 630, 1.3 3600, 1.4 0");
}

TEST(ProfileCurve, JumpsAreTakenAsOftenAsTheySayAndCountAnew) {
    const std::pair<std::vector<Profile>, std::string> cases[] = {
        {{profile_of(1, {soak(1), jump(1, 1, 0)})}, "1.1 60"},
        {{profile_of(1, {soak(1), jump(1, 1, 3)})}, "1.1 60, 1.1 60, 1.1 60, 1.1 60"},
        {{profile_of(1, {soak(1), soak(0, 1), jump(1, 2, 1), jump(1, 1, 1)})},
         "1.1 60, 1.2 1, 1.2 1, 1.1 60, 1.2 1, 1.2 1"},
        // Into the second step of another profile, which does not return.
        {{profile_of(1, {soak(1), jump(2, 2, 1), soak(9)}), profile_of(2, {soak(8), soak(2)})},
         "1.1 60, 2.2 120"}};
    for (const auto& [profiles, expected] : cases) {
        const ProfileCurve curve = curve_of(profiles);
        EXPECT_EQ(course(curve), expected);
        EXPECT_EQ(curve.how, CurveEnd::Ended);
    }
}

TEST(ProfileCurve, WhereItStops) {
    Profile no_end = profile_of(1, {soak(1)});
    no_end.steps.pop_back();
    Profile unknown = profile_of(1, {soak(1)});
    unknown.steps[0].type = 9;
    const std::tuple<Profile, CurveEnd, int> cases[] = {
        {profile_of(2, {}), CurveEnd::NoProfile, 1},
        {no_end, CurveEnd::PastLast, 1},
        {unknown, CurveEnd::UnknownType, 1},
        {profile_of(1, {soak(1), jump(1, 9, 1)}), CurveEnd::JumpOutside, 2},
        {profile_of(1, {rate_ramp(0, 900)}), CurveEnd::NoRate, 1},
        {profile_of(1, {soak(0), jump(1, 1, 999), jump(1, 1, 999)}), CurveEnd::Endless, 2},
        {profile_of(1, {soak(59), jump(1, 1, 999), jump(1, 1, 999)}), CurveEnd::TooLong, 1}};
    for (const auto& [profile, how, step] : cases) {
        const ProfileCurve curve = curve_of({profile});
        EXPECT_EQ(curve.how, how) << static_cast<int>(how);
        EXPECT_EQ(curve.last_step, step) << static_cast<int>(how);
    }
    // The time goes on where segments are no longer kept.
    const ProfileCurve cut =
        curve_of({profile_of(1, {soak(0, 1), jump(1, 1, 99), jump(1, 1, 199)})});
    EXPECT_TRUE(cut.cut);
    EXPECT_EQ(cut.segments.size(), ProfileCurve::kMaxSegments);
    EXPECT_DOUBLE_EQ(cut.seconds, 20'000);
}

TEST(ProfileCurve, LoopsWithRatesOfTheirOwnAndAnHour) {
    const TempDir dir;
    write_file(dir.file("9.pds"), "4000\n4001\n4002\n4003\n4040\n4041\nTYPE 0\nTYPE 1\n"
                                  "10 {set point 1}\n11 {set point 2}\n12 {rate 1; K an hour}\n"
                                  "13 {rate 2; K a second}\n");
    const LoadedFormat loaded = ProfileFormat::load(dir.file("9.pds"));
    ASSERT_TRUE(loaded.format) << loaded.problem;
    const Profile profile{1, {}, {{1, {{10, 100}, {11, 50}, {12, 100}, {13, 1}}}, {0, {}}}};
    const ProfileCurve curve = unroll(*loaded.format, set_of({profile}), {1, 1, {0, 0}});
    EXPECT_EQ(course(curve), "1.1 50, 1.1 3550");
    EXPECT_DOUBLE_EQ(curve.value_at(1800, 0), 50);
    EXPECT_DOUBLE_EQ(curve.value_at(25, 1), 25);
    EXPECT_DOUBLE_EQ(curve.value_at(51, 1), 50);
}

} // namespace
} // namespace pelvan::testing
