// How long the window of ramp profiles holds the program: opening it, drawing a profile of 50
// steps, a step's end that is dragged (with table, list, checks and painting), and a poll of a long
// run.
#include <QAbstractScrollArea>
#include <QApplication>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>

#include "desktop/windows/profile_window.h"
#include "support/simulated_program.h"

namespace {

using namespace pelvan;
using SteadyClock = std::chrono::steady_clock;

constexpr int kSteps = 50;
constexpr std::size_t kRuns = 200;

double ms_of(const std::function<void()>& action) {
    const auto begun = SteadyClock::now();
    action();
    return std::chrono::duration<double, std::milli>(SteadyClock::now() - begun).count();
}

void measure(const char* what, const std::function<void(std::size_t)>& action) {
    std::vector<double> runs;
    for (std::size_t i = 0; i < kRuns; ++i)
        runs.push_back(ms_of([&] { action(i); }));
    std::sort(runs.begin(), runs.end());
    std::printf("  %s: median %.2f ms, longest %.2f ms\n", what, runs[kRuns / 2], runs.back());
}

void make_profile(frm_ProfileLogic& form) {
    form.menu.mnuNew.choose();
    for (int step = 1; step < kSteps; ++step) {
        form.menu.mnuInsert.choose();
        Sheet& steps = form.step_sheet();
        const auto enter = [&](int column, const std::string& text) {
            if (steps.problem(0, column, text).empty()) steps.enter(0, column, text);
        };
        enter(1, step % 2 == 0 ? "ramp in a time" : "soak");
        for (int column = 2; column < steps.columns(); ++column)
            if (steps.heading(column) == "min")
                enter(column, "10");
            else if (steps.heading(column).starts_with("set point"))
                enter(column, std::to_string(step * 37 % 900));
    }
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::printf("usage: %s PROGRAM_DIRECTORY SAMPLES_DIRECTORY\n", argv[0]);
        return 2;
    }
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    testing::SimulatedProgram program({"simulated:742", "simulated:742"}, 1);
    std::filesystem::copy(std::string(argv[2]) + "/Download Sequences",
                          program.dir.file("Download Sequences"));
    frm_ProfileLogic& form = program.app.profile_logic;
    const desktop::BindContext context{[](const std::function<void()>& handler) { handler(); }};
    PersonalSettings personal;
    WindowPlaces places(personal);
    desktop::MdiFrame frame(context, program.app.frame, program.desktop, places);
    frame.resize(1366, 768);
    frame.show();
    std::printf("  first opening: %.0f ms\n", ms_of([&] {
                    form.Show();
                    desktop::add_profile_window(argv[1], form, program.dialogs, frame);
                    QApplication::processEvents();
                }));
    make_profile(form);
    QApplication::processEvents();
    auto* curve = frame.findChild<QAbstractScrollArea*>("profile_curve");
    QWidget* canvas = curve->viewport();
    measure("painting the curve of 50 steps", [&](std::size_t) { canvas->repaint(); });
    CurveDesk& desk = form.curve_desk();
    desk.begin_drag(20);
    measure("a drag, all that follows from it and the painting", [&](std::size_t run) {
        desk.drag_to(0, 12600.0 + 10.0 * static_cast<double>(run), 200 + static_cast<double>(run));
        QApplication::processEvents();
    });
    desk.end_drag();
    return 0;
}
