#include "profile/profile_check.h"

#include "profile/profile_rig.h"

namespace pelvan::testing {
namespace {

/// The findings' sentences without the profile, which is 1, one a line.
std::string findings(const std::vector<Profile>& profiles, const CheckOptions& options = {}) {
    std::string text;
    for (const ProfileFinding& one : check_profile(sample_format(), set_of(profiles), 1, options)) {
        EXPECT_EQ(one.profile, 1);
        EXPECT_NE(one.sentence.find(one.step == 0 ? "Profile 1: "
                                                  : "step " + std::to_string(one.step) + ": "),
                  std::string::npos);
        text += (text.empty() ? "" : "\n") + one.sentence.substr(std::string("Profile 1").size());
    }
    return text;
}

TEST(ProfileCheck, StepsThatAControllerWouldRefuse) {
    Profile values = profile_of(1, {ramp(60, 20000), soak(60), jump(1, 1, 1)});
    values.steps[0].fields[4010] = 3;
    values.steps[1].fields[4099] = 1;
    values.steps[3].fields[4017] = -500; // an idle set point that the end does not use
    values.own[4050] = 7;
    Profile no_end = profile_of(1, {soak(1)});
    no_end.steps.pop_back();
    Profile unknown = profile_of(1, {soak(1)});
    unknown.steps[0].type = 9;
    Profile early = profile_of(1, {soak(1)});
    early.steps.insert(early.steps.begin(), early.steps.back());
    const std::pair<Profile, std::string> cases[] = {
        {profile_of(1, {}), ""},
        {values, ": name, character 1 is from 32 to 126, not 7.\n"
                 ", step 1: set point 1 is from -200.0 to 999.9 degrees, not 2000.0.\n"
                 ", step 1: wait for is one of: nothing, input 1, input 2, not 3.\n"
                 ", step 1: it waits for input 3, and nothing before it gives set point 3.\n"
                 ", step 2: minutes is from 0 to 59, not 60.\n"
                 ", step 2: it has no register 4099."},
        {no_end, ": the last step is no end."},
        {{1, {}, {}}, ": the last step is no end."},
        {unknown, ", step 1: the model has no steps of type 9."},
        {early, ", step 1: an end stands before other steps."},
        {profile_of(1, std::vector<ProfileStep>(50, soak(1))),
         ": it has 51 steps, at most 50 fit."},
        {profile_of(1, std::vector<ProfileStep>(49, soak(1))), ""},
        {profile_of(1, {jump(2, 1, 1), jump(1, 4, 1)}),
         ", step 1: it jumps to profile 2, which is not there.\n"
         ", step 2: it jumps to step 4 of profile 1, which is not there."},
        {profile_of(1, {soak(2), jump(1, 1, 999), jump(1, 1, 999)}),
         ", step 3: the profile runs longer than 10000 hours."},
        {profile_of(1, {jump(1, 1, 999), jump(1, 1, 999), jump(1, 1, 999)}),
         ", step 3: the jumps do not come to an end within a million steps."},
        {profile_of(1, {rate_ramp(0, 900)}),
         ", step 1: rate is from 0.1 to 999.9 degrees a minute, "
         "not 0.0.\n, step 1: with this rate it never arrives."}};
    for (const auto& [profile, expected] : cases)
        EXPECT_EQ(findings({profile}), expected);
    EXPECT_EQ(check_profile(sample_format(), {}, 3),
              (std::vector<ProfileFinding>{{3, 0, "Profile 3: it is not there."}}));
}

TEST(ProfileCheck, AWaitForALoopThatNothingGivesASetPoint) {
    const std::string never =
        ", step 1: it waits for input 1, and nothing before it gives set point 1.";
    EXPECT_EQ(findings({profile_of(1, {soak(1, 0, 1)})}), never);
    EXPECT_EQ(findings({profile_of(1, {ramp(1, 500, 0, 1)})}), "");
    EXPECT_EQ(findings({profile_of(1, {rate_ramp(10, 500), soak(1, 0, 1)})}), "");
    EXPECT_EQ(findings({profile_of(1, {rate_ramp(10, 500), soak(1, 0, 2)})}),
              ", step 2: it waits for input 2, and nothing before it gives set point 2.");
    // It is reached from another profile that gives one.
    EXPECT_EQ(findings({profile_of(1, {soak(1, 0, 1)}),
                        profile_of(2, {rate_ramp(10, 500), jump(1, 1, 1)})}),
              "");
}

TEST(ProfileCheck, SteepRamps) {
    const std::vector<Profile> steep{
        profile_of(1, {ramp(10, 700), rate_ramp(51, 0), rate_ramp(50, 900), ramp(0, 100)})};
    const std::string known = ", step 2: set point 1 goes 5.1 a minute, more than 5 a minute.\n"
                              ", step 4: set point 1 leaps from 90 to 10, more than 5 a minute.";
    EXPECT_EQ(findings(steep, {5, {}}), known);
    EXPECT_EQ(findings(steep, {5, {{20, 0}}}), known);
    EXPECT_EQ(findings(steep, {5, {{19, 0}}}),
              ", step 1: set point 1 goes 5.1 a minute, more than 5 a minute.\n" + known);
    EXPECT_EQ(findings(steep), "");
    EXPECT_EQ(check_profiles(sample_format(), set_of(steep), {5, {}}).size(), 2U);
}

} // namespace
} // namespace pelvan::testing
