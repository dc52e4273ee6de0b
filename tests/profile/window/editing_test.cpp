// Profiles without a controller: the table, the files, and what is asked.
#include "profile_form_fixture.h"

namespace pelvan::testing {
namespace {

class ProfileEditing : public ProfileForm {
  protected:
    ProfileEditing() { open(); }
};

TEST_F(ProfileEditing, OnlyWhatAKindHasIsEditedAndWhatIsWrongIsToldInASentence) {
    EXPECT_EQ(form->Caption(), "Series 742 Profile Logic");
    make_profile();
    EXPECT_TRUE(cell(0, "set point 1").editable);
    EXPECT_TRUE(cell(1, "set point 1").absent);
    EXPECT_FALSE(cell(2, "Kind").editable) << "the end stays the end";
    EXPECT_FALSE(steps().column_used(column("how many"))) << "there is no jump";
    EXPECT_EQ(cell(0, "wait for").choices,
              (std::vector<std::string>{"nothing", "input 1", "input 2"}));
    for (const char* text :
         {"", "abc", "1e9", "-3000", "99999999999999999999", "10.05", "\xff", "1 2"}) {
        EXPECT_TRUE(type(0, "set point 1", text).ends_with(".")) << text;
        EXPECT_EQ(cell(0, "set point 1").text, "100.0");
    }
    EXPECT_NE(type(0, "Kind", "end"), "");
    EXPECT_NE(type(1, "set point 1", "5"), "");
    EXPECT_EQ(type(0, "wait for", "INPUT 2"), "");
    EXPECT_EQ(cell(0, "wait for").text, "input 2");
    EXPECT_EQ(type(1, "Kind", "ramp at a rate"), "");
    EXPECT_TRUE(cell(1, "h").absent);
    EXPECT_EQ(form->profile_sheet().problem(0, 1, "A NAME THAT IS TOO LONG").empty(), false);
    form->profile_sheet().enter(0, 1, "FIRE");
    EXPECT_EQ(form->profile_sheet().cell(0, 1).text, "FIRE");
    while (form->menu.mnuUndo.Enabled())
        form->menu.mnuUndo.choose();
    EXPECT_EQ(form->profile_sheet().rows(), 0);
    while (form->menu.mnuRedo.Enabled())
        form->menu.mnuRedo.choose();
    EXPECT_EQ(form->profile_sheet().cell(0, 1).text, "FIRE");
    EXPECT_EQ(cell(0, "wait for").text, "input 2");
}

TEST_F(ProfileEditing, TheWindowAsksBeforeWhatIsUnsavedGoes) {
    make_profile();
    EXPECT_EQ(form->Caption(), "Series 742 Profile Logic *");
    EXPECT_FALSE(form->Unload()) << "No is what Enter presses";
    rig->dialogs.files = {rig->dir.file("mine")};
    form->menu.mnuSave.choose();
    EXPECT_EQ(form->Caption(), "Series 742 Profile Logic - mine.txt");
    const std::string saved = read_file(rig->dir.file("mine.txt"));
    EXPECT_EQ(saved.substr(0, 29), "4000 1\r\n4002 1\r\n4002 3\r\n4002 ");
    rig->dialogs.shown.clear();
    EXPECT_TRUE(form->Unload());
    EXPECT_TRUE(rig->dialogs.shown.empty());
    form->Show();
    EXPECT_EQ(form->profile_sheet().rows(), 0);
    rig->dialogs.files = {rig->dir.file("mine.txt")};
    form->menu.mnuOpen.choose();
    EXPECT_EQ(cell(0, "set point 1").text, "100.0");
    form->menu.mnuSave.choose();
    EXPECT_EQ(read_file(rig->dir.file("mine.txt")), saved);
    write_file(rig->dir.file("cut.txt"), saved.substr(0, saved.size() / 2) + "\r\n4003");
    write_file(rig->dir.file("binary.txt"), std::string("4000 1\0\xfe\xff", 9));
    for (const char* name : {"cut.txt", "binary.txt", "missing.txt"}) {
        rig->dialogs.files = {rig->dir.file(name)};
        rig->dialogs.shown.clear();
        form->menu.mnuOpen.choose();
        EXPECT_EQ(rig->dialogs.shown.size(), 1U) << name;
        EXPECT_EQ(cell(0, "set point 1").text, "100.0");
    }
}

TEST_F(ProfileEditing, ASetupOfAModelWithoutProfilesChangesNothing) {
    make_profile();
    write_file(rig->dir.file("730.txt"),
               "***\r\n   Model #:  730\r\n\r\n\r\n\r\n\r\n\r\n300 5\r\n25 0\r\n");
    rig->dialogs.files = {rig->dir.file("730.txt")};
    answer({MessageAnswer::Yes});
    form->menu.mnuOpen.choose();
    EXPECT_EQ(rig->dialogs.texts().back(), "Model 730 has no ramp profiles.");
    EXPECT_EQ(form->profile_sheet().rows(), 1);
}

TEST_F(ProfileEditing, FindingsLeadToTheirStep) {
    make_profile();
    type(1, "Kind", "jump");
    type(1, "step to go", "40");
    ASSERT_GE(form->finding_sheet().rows(), 1);
    steps().choose(0);
    form->finding_sheet().choose(0);
    EXPECT_EQ(steps().chosen(), 1);
    type(1, "Kind", "soak");
    EXPECT_EQ(form->finding_sheet().rows(), 0);
    form->txt_Steepest.set_Text("1.5");
    ASSERT_EQ(form->finding_sheet().rows(), 1) << "75 degrees in half an hour";
    form->txt_Steepest.set_Text("any");
    EXPECT_EQ(form->finding_sheet().rows(), 0);
}

TEST_F(ProfileEditing, ADragIsOneEditAndStaysWithinWhatTheStepCanHold) {
    make_profile();
    CurveDesk& curve = form->curve_desk();
    ASSERT_EQ(curve.picture().pieces.size(), 2U);
    curve.begin_drag(0);
    for (int i = 1; i <= 10; ++i)
        curve.drag_to(0, 1800 + 60.0 * i, 100 + i);
    curve.drag_to(0, 2700, 5000);
    curve.end_drag();
    EXPECT_EQ(cell(0, "min").text, "45");
    EXPECT_EQ(cell(0, "set point 1").text, "999.9");
    curve.begin_drag(1);
    curve.drag_to(0, -100, 7);
    curve.end_drag();
    EXPECT_EQ(cell(1, "h").text, "0") << "a step does not end before it begins";
    form->menu.mnuUndo.choose();
    form->menu.mnuUndo.choose();
    EXPECT_EQ(cell(0, "min").text, "30");
    EXPECT_EQ(cell(0, "set point 1").text, "100.0");
}

TEST(ProfilePermissions, SayWhyACommandCannotBeGiven) {
    ProfileSituation now{.format = true,
                         .runs = true,
                         .profile = true,
                         .number = 3,
                         .steps = 4,
                         .step = 2,
                         .max_steps = 50,
                         .any_profiles = true};
    ProfilePermissions can = profile_permissions(now);
    for (const std::string* allowed :
         {&can.edit, &can.insert, &can.start, &can.hold, &can.write, &can.resume, &can.end})
        EXPECT_EQ(*allowed, "");
    now.state = RunState::Running;
    now.running_profile = 3;
    can = profile_permissions(now);
    for (const std::string* refused : {&can.edit, &can.insert, &can.erase, &can.start, &can.resume})
        EXPECT_NE(*refused, "");
    EXPECT_EQ(can.hold + can.next + can.end, "");
    now.running_profile = 4;
    EXPECT_EQ(profile_permissions(now).edit, "") << "another one may be edited";
    now.not_known = true;
    can = profile_permissions(now);
    for (const std::string* refused : {&can.hold, &can.next, &can.end})
        EXPECT_NE(*refused, "");
    now.not_known = false;
    now.working = true;
    can = profile_permissions(now);
    EXPECT_EQ(can.hold + can.end, "") << "also while profiles are written";
    EXPECT_NE(can.next, "");
    now.working = false;
    now.runs = false;
    can = profile_permissions(now);
    EXPECT_NE(can.start, "");
    EXPECT_NE(can.hold, "");
    EXPECT_EQ(can.edit + can.write, "");
}

} // namespace
} // namespace pelvan::testing
