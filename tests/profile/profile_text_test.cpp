#include "profile/profile_text.h"

#include "profile/profile_rig.h"
#include "support/temp_dir.h"

namespace pelvan::testing {
namespace {

using Lines = std::vector<std::string>;

constexpr char kSoak[] = "4000 2\n4002 1\n4002 3\n4001 1\n4003 3\n4004 0\n4005 1\n4006 0\n4009 1\n"
                         "4010 0\n4011 0\n4001 2\n4003 0\n4016 0\n4017 -5\n";

ReadProfiles load_text(const std::string& text) {
    const TempDir dir;
    write_file(dir.file("a.txt"), text);
    return load_profiles(sample_format(), dir.file("a.txt"));
}

TEST(ProfileText, WrittenAsInASetupFileAndReadBack) {
    Profile second = profile_of(2, {soak(1)});
    second.steps[1].fields[4017] = -5;
    const Lines lines = profile_lines(sample_format(), set_of({second}));
    EXPECT_EQ(Lines(lines.begin(), lines.begin() + 4),
              (Lines{"4000 2", "4002 1", "4002 3", "4050 32"}));
    EXPECT_EQ(Lines(lines.begin() + 13, lines.end()),
              (Lines{"4001 1", "4003 3", "4004 0", "4005 1", "4006 0", "4009 1", "4010 0", "4011 0",
                     "4001 2", "4003 0", "4016 0", "4017 -5"}));

    const ProfileSet set = set_of({second, profile_of(7, {ramp(90, 500), jump(2, 1, 3)})});
    const TempDir dir;
    EXPECT_EQ(save_profiles(sample_format(), set, dir.file("a.txt")), "");
    const ReadProfiles read = load_profiles(sample_format(), dir.file("a.txt"));
    EXPECT_EQ(read.problem, "");
    EXPECT_TRUE(read.profiles == set);
    EXPECT_TRUE(read.notes.empty());
    EXPECT_NE(save_profiles(sample_format(), set, dir.file("none/a.txt")), "");
}

TEST(ProfileText, ASetupFileAndALaterInsertion) {
    // The second insertion happens in front of the chosen step 1, as in a controller.
    const ReadProfiles read = load_text(
        "****\r\n   Model #:  742\r\n300 ERROR\r\n" + std::string(kSoak) +
        "4000 9\r\n4002 1\r\n4001 1\r\n4003 0\r\n4016 0\r\n4002 3\r\n4003 4\r\n4013 2\r\n\r\n"
        "1060 32\r\n25 0\r\n");
    EXPECT_EQ(read.problem, "");
    ASSERT_EQ(read.profiles.size(), 2U);
    EXPECT_EQ(read.profiles.at(2).steps[1].fields.at(4017), -5);
    const Profile& ninth = read.profiles.at(9);
    ASSERT_EQ(ninth.steps.size(), 2U);
    EXPECT_EQ(ninth.steps[0].type, 4);
    EXPECT_EQ(read.notes, (Lines{"Step 1 of profile 9 is without: step to go to, how many times.",
                                 "Step 2 of profile 9 is without: idle set point."}));
}

TEST(ProfileText, WhatIsWrongIsSaidWithItsLine) {
    const std::string soak(kSoak);
    const std::pair<std::string, std::string> cases[] = {
        {"", "holds no profiles."},
        {"300 1\n25 0\n", "holds no profiles."},
        {std::string("\x7F"
                     "ELF\x01\0\0",
                     7),
         "Line 1: this is no text."},
        {"4001 1\n", "Line 1: a profile must be chosen first."},
        {"4000 41\n", "Line 1: profiles have numbers from 1 to 40, not 41."},
        {"4000 99999\n", "Line 1: register 4000 has no value: \"99999\"."},
        {"4000\n", "Line 1: register 4000 has no value."},
        {"4000 2\n4001 1\n", "Line 2: profile 2 must be created first."},
        {"4000 2\n4002 3\n", "Line 2: profile 2 must be created first."},
        {"4000 2\n4002 2\n", "Line 2: action 2 is none that a file of profiles has."},
        {"4000 2\n4002 1\n4002 1\n", "Line 3: profile 2 is created twice."},
        {"4000 2\n", "Line 2: profile 2 is chosen, and nothing follows."},
        {"4000 2\n4002 1\n4001 2\n", "Line 3: profile 2 has no step 2."},
        {"4000 2\n4002 1\n4016 0\n", "Line 3: the type of step 1 must come first."},
        {"4000 2\n4002 1\n4003 5\n", "Line 3: the model has no steps of type 5."},
        {"4000 2\n4002 1\n4003 0\n4004 0\n",
         "Line 4: a step of the kind \"end\" has no register 4004."},
        {"4000 2\n4002 1\n4003 0\nfoo\n", "Line 4: \"foo\" is no register and its value."},
        {soak + "4001 1\n4004 5\n",
         "Line 17: register 4004 of step 1 of profile 2 has the value 0 already, not 5."},
        {soak + "4050 1\n4050 1\n4050 2\n",
         "Line 18: register 4050 of profile 2 has the value 1 already, not 2."},
        {soak + "4003 3\n", "Line 16: step 2 of profile 2 has type 0 already, not 3."},
        {soak + soak, "Line 16: profile 2 is there twice."},
        {soak.substr(0, soak.find("4001 2")),
         "Line 12: step 2 of profile 2 is missing: the file may be cut."},
        {std::string(4'000'001, '\n'), "is too large for profiles."}};
    for (const auto& [text, problem] : cases) {
        const ReadProfiles read = load_text(text);
        EXPECT_TRUE(read.problem.ends_with(" " + problem)) << read.problem;
        EXPECT_TRUE(read.profiles.empty());
    }
    EXPECT_EQ(load_text("\xEF\xBB\xBF" + soak + "4001 1\n4003 3\n4004 0\n").profiles.size(), 1U);
    EXPECT_EQ(load_text(soak.substr(0, soak.size() - 1)).notes,
              Lines{"The last line has no end: the file may be cut."});
}

} // namespace
} // namespace pelvan::testing
