// What a window waits for while somebody edits ramp profiles: the curve of a profile of 50 steps, a
// dragged end with its undo entry, the checks of a full controller, and the worst profiles.
//     profile_bench "Download Sequences/742.pds"
#include <chrono>
#include <cstdio>
#include <functional>

#include "profile/profile_check.h"
#include "profile/profile_curve.h"
#include "profile/profile_editor.h"
#include "profile/profile_text.h"

using namespace pelvan;

namespace {

ProfileStep step_of(const ProfileFormat& format, int type, const std::map<int, int>& fields) {
    ProfileStep step = new_step(*format.kind(type));
    for (const auto& [number, value] : fields)
        step.fields[number] = value;
    return step;
}

/// 49 steps of all kinds, a jump back of 3 among them, and the end.
Profile full_profile(const ProfileFormat& format, int number) {
    Profile profile = new_profile(format, number);
    std::vector<ProfileStep> steps;
    for (int i = 0; i < 16; ++i) {
        steps.push_back(step_of(format, 1, {{4005, 30}, {4007, 100 * i}, {4008, 50 * i}}));
        steps.push_back(step_of(format, 2, {{4012, 50}, {4007, 100 * i + 500}}));
        steps.push_back(step_of(format, 3, {{4005, 10}, {4010, 1}}));
    }
    steps.push_back(step_of(format, 4, {{4013, number}, {4014, 2}, {4015, 3}}));
    profile.steps.insert(profile.steps.begin(), steps.begin(), steps.end());
    return profile;
}

void measure(const char* what, int times, const std::function<void()>& action) {
    const auto begin = std::chrono::steady_clock::now();
    for (int i = 0; i < times; ++i)
        action();
    const std::chrono::duration<double, std::milli> taken =
        std::chrono::steady_clock::now() - begin;
    std::printf("%-52s %9.4f ms\n", what, taken.count() / times);
}

} // namespace

int main(int argc, char** argv) {
    const LoadedFormat loaded = ProfileFormat::load(argc > 1 ? argv[1] : "");
    if (!loaded.format) {
        std::puts(loaded.problem.c_str());
        return 1;
    }
    const ProfileFormat& format = *loaded.format;
    ProfileSet all;
    for (int number = 1; number <= format.max_profiles(); ++number)
        all[number] = full_profile(format, number);
    ProfileSet endless{{1, new_profile(format, 1)}};
    for (int i = 0; i < 3; ++i)
        endless[1].steps.insert(endless[1].steps.begin(),
                                step_of(format, 4, {{4013, 1}, {4014, 1}, {4015, 999}}));

    measure("curve of 50 steps, 193 segments", 1000, [&] {
        (void)unroll(format, all, {1, 1, {}});
    });
    measure("curve of a profile without an end", 10, [&] { (void)unroll(format, endless, {}); });
    measure("checks of 40 profiles of 50 steps", 10, [&] { (void)check_profiles(format, all); });
    const auto lines = profile_lines(format, all);
    std::printf("%zu lines\n", lines.size());
    measure("reading them", 10, [&] { (void)read_profiles(format, lines); });
    ProfileEditor editor(format);
    editor.open(all);
    editor.choose(1, 1);
    int seconds = 0;
    measure("dragging an end", 1000, [&] { editor.drag_end({++seconds, {}, 0, 0}); });
    measure("a change of its own", 1000, [&] {
        editor.end_drag();
        editor.drag_end({++seconds, {}, 0, 0});
    });
    measure("asking whether something is unsaved", 100, [&] { (void)editor.dirty(); });
}
