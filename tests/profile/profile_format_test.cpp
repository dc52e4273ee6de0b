#include "profile/profile_format.h"

#include <gtest/gtest.h>

#include "profile/profile.h"
#include "support/temp_dir.h"

namespace pelvan::testing {
namespace {

constexpr char kSample[] = PELVAN_SAMPLES "/Download Sequences/742.pds";

LoadedFormat load(const std::string& sections) {
    const TempDir dir;
    write_file(dir.file("9.pds"), "4000\n4001\n4002\n4003\n4040\n4041\n" + sections);
    return ProfileFormat::load(dir.file("9.pds"));
}

TEST(ProfileFormat, OfTheSample) {
    const auto [format, problem] = ProfileFormat::load(kSample);
    ASSERT_TRUE(format) << problem;
    EXPECT_EQ(format->max_profiles(), 40);
    EXPECT_EQ(format->max_steps(), 50);
    const StepShape shapes[] = {StepShape::End, StepShape::RampTime, StepShape::RampRate,
                                StepShape::Soak, StepShape::Jump};
    for (int type = 0; type < 5; ++type)
        EXPECT_EQ(format->kind(type)->shape, shapes[type]) << type;
    EXPECT_EQ(format->kind(2)->name, "ramp at a rate");
    EXPECT_EQ(format->kind(2)->fields[0].unit, "degrees a minute");
    EXPECT_EQ(format->state(3), RunState::Waiting);
    EXPECT_EQ(format->command(RunCommand::End), 5);
    EXPECT_EQ(format->run_field(RegisterRole::WaitBand)->number, 4120);

    Profile profile = new_profile(*format, 7);
    EXPECT_EQ(set_profile_name(*format, profile, "dry ~ load"), "");
    EXPECT_EQ(profile_name(*format, profile), "dry ~ load");
    for (const char* name : {"eleven char", "t\xC3\xA4", "a\nb"})
        EXPECT_NE(set_profile_name(*format, profile, name), "") << name;
    EXPECT_EQ(profile_name(*format, profile), "dry ~ load");
    EXPECT_EQ(set_profile_name(*format, profile, ""), "");
    EXPECT_TRUE(profile == new_profile(*format, 7));
}

TEST(ProfileFormat, WithoutRolesItCanOnlyBeEdited) {
    const LoadedFormat loaded = load("TYPE 0\nTYPE 3 soak\n4004 hours\n4005\n");
    ASSERT_TRUE(loaded.format) << loaded.problem;
    EXPECT_FALSE(loaded.format->runs());
    EXPECT_EQ(loaded.format->end_kind()->type, 0);
    EXPECT_EQ(loaded.format->kind(3)->fields[1].name, "register 4005");
}

TEST(ProfileFormat, RefusesWithTheLine) {
    const std::pair<const char*, const char*> cases[] = {
        {"TYPE 1\n1 x {state}\n", "9.pds: Line 8: \"state\" does not belong into this section; a "
                                  "unit of this name is written \"unit state\"."},
        {"TYPE 1\n1 {hours}\n2 {hours}\n",
         "9.pds: Line 9: \"hours\" is there twice in its section."},
        {"TYPE 1\n1\n1\n", "9.pds: Line 9: the register is there twice in its section."},
        {"TYPE 1\n65536\n", "9.pds: Line 8: there are no registers above 65535."},
        {"TYPE 1\n1 {0 to 1; 2 = a}\n", "9.pds: Line 8: a choice lies outside the limits."},
        {"TYPE 1\n1 {end}\nTYPE 2\n1 {end}\n",
         "9.pds: Line 9: there is more than one kind of end."},
        {"RUN\n1 {command; 1 = start}\n",
         "9.pds: Line 8: the section RUN has no register \"state\"."},
        {"RUN\n1 {state; 0 = of}\n",
         "9.pds: Line 8: in the section RUN, \"of\" of register 1 is none "
         "of: off, running, held, waiting, ended."},
        {"TYPE 1\n1 x {5 x}\n",
         "9.pds: Line 8 is missing or not understood. \"5 x\" is not understood."}};
    for (const auto& [sections, problem] : cases) {
        const LoadedFormat loaded = load(sections);
        EXPECT_FALSE(loaded.format) << sections;
        EXPECT_EQ(loaded.problem, problem);
    }
    EXPECT_EQ(ProfileFormat::load("/none/1.pds").problem, "Can not find the file /none/1.pds.");
}

TEST(ProfileFormat, ValuesAsPeopleReadAndTypeThem) {
    const ProfileField degrees{1, "set point 1", RegisterRole::SetPoint1, -2000, 9999, 1, "degrees",
                               {}};
    const ProfileField wait{
        2, "wait for", RegisterRole::Wait, 0, 2, 0, "", {{0, "nothing"}, {2, "input 2"}}};
    for (const int raw : {-2000, -5, 0, 7, 9999}) {
        EXPECT_EQ(ProfileFormat::parse_value(degrees, ProfileFormat::unit_text(degrees, raw)).raw,
                  raw);
        EXPECT_EQ(degrees.nearest(degrees.value(raw)), raw);
    }
    EXPECT_EQ(ProfileFormat::unit_text(degrees, -5), "-0.5 degrees");
    EXPECT_EQ(ProfileFormat::value_text(wait, 1), "1"); // read from a controller, no choice
    const std::tuple<ProfileField, const char*, std::optional<int>> cases[] = {
        {degrees, " 12 ", 120}, {degrees, "+.5", 5},     {degrees, "12.500", 125},
        {degrees, "12.55", {}}, {degrees, "1e2", {}},    {degrees, "", {}},
        {degrees, ".", {}},     {degrees, "-200.1", {}}, {degrees, "99999999999999", {}},
        {degrees, "1.2.3", {}}, {degrees, "12\x80", {}}, {wait, "Input 2", 2},
        {wait, "2", 2},         {wait, "1", {}}};
    for (const auto& [field, text, raw] : cases) {
        const ParsedValue parsed = ProfileFormat::parse_value(field, text);
        EXPECT_EQ(parsed.raw, raw) << text;
        EXPECT_NE(parsed.problem.empty(), !raw) << text;
    }
    EXPECT_EQ(ProfileFormat::parse_value(degrees, "2000").problem,
              "set point 1 is from -200.0 to 999.9 degrees; not \"2000\".");
    EXPECT_EQ(ProfileFormat::parse_value(wait, "3").problem,
              "wait for is one of: nothing, input 2; not \"3\".");
}

} // namespace
} // namespace pelvan::testing
