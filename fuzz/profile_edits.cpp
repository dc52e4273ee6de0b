// The editor of ramp profiles under any edits: what is undone and done again comes back, the end
// stays last, and jumps lead to steps that are there.
#include "profile/profile_check.h"
#include "profile/profile_editor.h"
#include "profile/profile_text.h"
#include "profile_format_742.h"

namespace pelvan::fuzz {
namespace {

/// One edit; what is wrong with it, empty when it was made.
std::string edit(ProfileEditor& editor, Input& input) {
    const int a = static_cast<int>(input.below(48)) - 4;
    const int b = input.byte();
    const std::string text(b % 3 == 0 ? std::string(input.piece()) : std::to_string(b * a));
    switch (input.below(16)) {
    case 0:
        return editor.add_profile(b % 4 == 0 ? a : editor.free_number());
    case 1:
        return editor.erase_profile(a);
    case 2:
        return editor.copy_profile(a, b % 44, input.flag());
    case 3:
        return editor.set_name(text);
    case 4:
        return editor.set_own(4045 + a, text);
    case 5:
    case 6:
        return editor.insert_step(a % 6);
    case 7:
        return editor.delete_step();
    case 8:
        return editor.copy_step();
    case 9:
        return editor.paste_step();
    case 10:
        return editor.move_step(a % 5);
    case 11:
        return editor.change_kind(a % 6);
    case 12:
    case 13:
        return editor.set_field(4000 + a, text);
    case 14: {
        StepEnd end;
        if (input.flag()) end.seconds = (b - 20) * 100.0;
        if (input.flag()) end.value = (b - 128) * 10.0;
        end.loop = input.below(2);
        end.from = a;
        const std::string problem = editor.drag_end(end);
        if (input.flag()) editor.end_drag();
        return problem;
    }
    default:
        editor.choose(a, b % 60);
        return {};
    }
}

void check(const ProfileEditor& editor) {
    const ProfileFormat& format = editor.format();
    for (const auto& [number, profile] : editor.profiles()) {
        require(number >= 1 && number <= format.max_profiles() && profile.number == number,
                "profiles have numbers of the model");
        require(!profile.steps.empty() &&
                    profile.steps.size() <= static_cast<std::size_t>(format.max_steps()),
                "profiles have steps, and no more than the model");
        for (std::size_t i = 0; i < profile.steps.size(); ++i) {
            const bool is_end = format.kind(profile.steps[i].type) == format.end_kind();
            require(is_end == (i + 1 == profile.steps.size()), "the end is the last step");
        }
    }
    const ProfilePlace place = editor.place();
    require((editor.profile() != nullptr) == (place.profile != 0), "what is chosen is there");
    if (editor.profile())
        require(editor.step() && place.step >= 1, "a chosen profile has its chosen step");
}

void run(Input& input) {
    ProfileEditor editor(format_742());
    while (!input.empty()) {
        const ProfileSet before = editor.profiles();
        const std::string problem = edit(editor, input);
        require(problem.empty() || editor.profiles() == before, "a refused edit changes nothing");
        check(editor);
    }
    const ProfileSet edited = editor.profiles();
    const ReadProfiles read =
        read_profiles(editor.format(), profile_lines(editor.format(), edited));
    require(read.problem.empty() && read.profiles == edited, "edits are kept in a file");
    while (editor.can_undo()) {
        editor.undo();
        check(editor);
    }
    require(editor.profiles().empty(), "everything can be undone");
    while (editor.can_redo())
        editor.redo();
    require(editor.profiles() == edited, "everything can be done again");
}

const Target target("profile_edits", run);

} // namespace
} // namespace pelvan::fuzz
