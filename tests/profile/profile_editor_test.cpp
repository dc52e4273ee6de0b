#include "profile/profile_editor.h"

#include "profile/profile_rig.h"

namespace pelvan::testing {
namespace {

ProfileEditor editor_of(const std::vector<Profile>& profiles, int step = 1) {
    ProfileEditor editor(sample_format());
    editor.open(set_of(profiles));
    editor.choose(1, step);
    return editor;
}

/// The types of the chosen profile's steps, jumps as "4>profile.step", and the chosen step.
std::string steps(const ProfileEditor& editor) {
    std::string text;
    for (const ProfileStep& step : editor.profile()->steps) {
        text += (text.empty() ? "" : " ") + std::to_string(step.type);
        if (step.type == 4)
            text += ">" + std::to_string(step.fields.at(4013)) + "." +
                    std::to_string(step.fields.at(4014));
    }
    return text + " @" + std::to_string(editor.place().step);
}

const std::vector<Profile> kTwo{profile_of(1, {rate_ramp(50, 1200), soak(5), jump(1, 2, 3)}),
                                profile_of(2, {jump(1, 2, 1)})};

TEST(ProfileEditor, StepsChangeTheirPlacesAndJumpsFollow) {
    using Edit = std::function<std::string(ProfileEditor&)>;
    const auto insert = [](int type) {
        return [type](ProfileEditor& e) { return e.insert_step(type); };
    };
    const auto move = [](int places) {
        return [places](ProfileEditor& e) { return e.move_step(places); };
    };
    const Edit remove = [](ProfileEditor& e) { return e.delete_step(); };
    const Edit paste = [](ProfileEditor& e) {
        EXPECT_EQ(e.copy_step(), "");
        return e.paste_step();
    };
    // Chosen step, edit, the steps then, where the jump of profile 2 leads then.
    const std::tuple<int, Edit, std::string, int> cases[] = {
        {1, insert(1), "1 2 3 4>1.3 0 @1", 3}, {3, insert(3), "2 3 3 4>1.2 0 @3", 2},
        {4, insert(3), "2 3 4>1.2 3 0 @4", 2}, {1, remove, "3 4>1.1 0 @1", 1},
        {2, remove, "2 4>1.2 0 @2", 2},        {1, move(1), "3 2 4>1.1 0 @2", 1},
        {3, move(-9), "4>1.3 2 3 0 @1", 3},    {1, move(9), "3 4>1.1 2 0 @3", 1},
        {3, paste, "2 3 4>1.2 4>1.2 0 @3", 2}, {1, paste, "2 2 3 4>1.3 0 @1", 3}};
    for (const auto& [chosen, edit, expected, target] : cases) {
        ProfileEditor editor = editor_of(kTwo, chosen);
        const ProfileSet before = editor.profiles();
        EXPECT_EQ(edit(editor), "");
        EXPECT_EQ(steps(editor), expected);
        EXPECT_EQ(editor.profiles().at(2).steps[0].fields.at(4014), target) << expected;
        const ProfileSet after = editor.profiles();
        editor.undo();
        EXPECT_TRUE(editor.profiles() == before) << expected;
        EXPECT_EQ(editor.place().step, chosen);
        editor.redo();
        EXPECT_TRUE(editor.profiles() == after) << expected;
    }
}

TEST(ProfileEditor, RefusesAndChangesNothing) {
    ProfileEditor editor = editor_of(kTwo, 4);
    const ProfileSet before = editor.profiles();
    for (const std::string& problem :
         {editor.delete_step(), editor.copy_step(), editor.paste_step(), editor.move_step(-1),
          editor.change_kind(3), editor.change_kind(9), editor.insert_step(0),
          editor.insert_step(9), editor.set_field(4016, "explode"), editor.set_field(4004, "1"),
          editor.set_own(4050, "7"), editor.set_own(1, "7"), editor.set_name("eleven char"),
          editor.add_profile(2), editor.add_profile(41), editor.erase_profile(3),
          editor.copy_profile(1, 2), editor.copy_profile(1, 1), editor.copy_profile(3, 4)})
        EXPECT_NE(problem, "");
    editor.choose(1, 1);
    EXPECT_NE(editor.change_kind(0), "");
    EXPECT_TRUE(editor.profiles() == before);
    EXPECT_EQ(editor.undo_text(), "open a file");

    ProfileEditor empty(sample_format());
    EXPECT_EQ(empty.insert_step(3), "No profile is chosen.");
    EXPECT_EQ(empty.drag_end({}), "No profile is chosen.");
    ProfileEditor full = editor_of({profile_of(1, std::vector<ProfileStep>(49, soak(1)))});
    EXPECT_EQ(full.insert_step(3), "A profile has at most 50 steps.");
    Profile no_end = profile_of(1, {soak(1)});
    no_end.steps.pop_back();
    ProfileEditor mended = editor_of({no_end});
    EXPECT_EQ(mended.insert_step(0), "");
    EXPECT_EQ(steps(mended), "3 0 @2");
}

TEST(ProfileEditor, KeepsWhatBothKindsHaveAndCarriesSetPointsOn) {
    std::vector<ProfileStep> list{ramp(90, 500, 300)};
    list[0].fields[4009] = 4;
    ProfileEditor editor = editor_of({profile_of(1, list)});
    EXPECT_EQ(editor.change_kind(2), "");
    EXPECT_EQ(editor.step()->fields,
              (std::map<int, int>{{4007, 500}, {4009, 4}, {4011, 0}, {4012, 1}}));
    editor.undo();
    editor.choose(1, 2);
    EXPECT_EQ(editor.insert_step(2), "");
    EXPECT_EQ(editor.step()->fields.at(4007), 500);
    EXPECT_EQ(editor.step()->fields.at(4009), 4);
}

TEST(ProfileEditor, DraggingAnEnd) {
    const auto dragged = [](const ProfileStep& step, const StepEnd& end) {
        ProfileEditor editor = editor_of({profile_of(1, {step})});
        EXPECT_EQ(editor.drag_end(end), "");
        return editor.profile()->steps[0];
    };
    EXPECT_TRUE(dragged(ramp(1, 500, 300), {3659.6, 61.04, 0, 20}) ==
                step_of(1, {{4004, 1}, {4005, 1}, {4007, 610}, {4008, 300}}));
    EXPECT_TRUE(dragged(ramp(1, 500), {{}, -999.0, 1, 20}) == ramp(1, 500, -2000));
    EXPECT_TRUE(dragged(soak(1), {1e9, 70, 0, 20}) ==
                step_of(3, {{4004, 99}, {4005, 59}, {4006, 59}}));
    EXPECT_TRUE(dragged(soak(1), {-5, {}, 0, 20}) == soak(0));
    // 100 degrees in 20 minutes.
    EXPECT_TRUE(dragged(rate_ramp(1, 0), {1200, 120, 0, 20}) == rate_ramp(50, 1200));
    EXPECT_TRUE(dragged(rate_ramp(7, 0), {1200, 20, 0, 20}) == rate_ramp(7, 200));
    EXPECT_TRUE(dragged(jump(1, 1, 1), {1200, 120, 0, 20}) == jump(1, 1, 1));

    ProfileEditor editor = editor_of({profile_of(1, {soak(1)})});
    for (const double seconds : {70, 80, 90})
        EXPECT_EQ(editor.drag_end({seconds, {}, 0, 0}), "");
    editor.end_drag();
    EXPECT_EQ(editor.drag_end({100, {}, 0, 0}), "");
    const std::pair<int, int> seconds_back[] = {{1, 30}, {1, 0}};
    for (const auto& [minutes, seconds] : seconds_back) {
        editor.undo();
        EXPECT_TRUE(editor.profile()->steps[0] == soak(minutes, seconds)) << seconds;
    }
}

TEST(ProfileEditor, WholeProfilesAndWhatIsUnsaved) {
    ProfileEditor editor(sample_format());
    EXPECT_FALSE(editor.dirty());
    EXPECT_EQ(editor.add_profile(editor.free_number()), "");
    EXPECT_EQ(editor.set_name("dry"), "");
    EXPECT_EQ(editor.insert_step(4), "");
    EXPECT_TRUE(editor.dirty());
    EXPECT_EQ(editor.copy_profile(1, 3), "");
    EXPECT_EQ(editor.place(), (ProfilePlace{3, 1}));
    EXPECT_EQ(profile_name(editor.format(), *editor.profile()), "dry");
    EXPECT_EQ(steps(editor), "4>3.1 0 @1"); // to itself, as the one that it is a copy of
    EXPECT_EQ(editor.free_number(), 2);
    editor.mark_saved();
    EXPECT_FALSE(editor.dirty());

    const ProfileSet saved = editor.profiles();
    editor.read(set_of({profile_of(1, {soak(1)})}));
    EXPECT_FALSE(editor.dirty()); // the controller has it
    EXPECT_TRUE(editor.differs_from_file());
    EXPECT_EQ(editor.add_profile(2), "");
    EXPECT_TRUE(editor.dirty());
    EXPECT_EQ(editor.changed_profiles(), std::vector<int>{2});
    EXPECT_EQ(editor.erase_profile(1), "");
    EXPECT_EQ(editor.place().profile, 2);
    EXPECT_EQ(editor.changed_profiles(), (std::vector<int>{1, 2}));
    editor.mark_in_controller(editor.profiles());
    EXPECT_FALSE(editor.dirty());
    for (int i = 0; i < 3; ++i)
        editor.undo();
    EXPECT_TRUE(editor.profiles() == saved); // from before the read
    EXPECT_FALSE(editor.differs_from_file());
    EXPECT_EQ(editor.redo_text(), "read from the controller");
    EXPECT_EQ(editor.set_field(4015, "5"), "");
    EXPECT_FALSE(editor.can_redo());
    editor.undo();
    EXPECT_TRUE(editor.profiles() == saved);
    EXPECT_EQ(editor.undo_text(), "copy profile 1 to 3");
}

} // namespace
} // namespace pelvan::testing
