// How long the trend window holds the program: opening it, drawing everything, zooming, panning,
// moving the cursor and a new pass, with 1,000,000 readings and with a full day of 100 rows.
#include <QApplication>
#include <QKeyEvent>
#include <QWidget>
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <functional>
#include <string>
#include <vector>

#include "desktop/charts/trend_library.h"

namespace {

using namespace pelvan;
using SteadyClock = std::chrono::steady_clock;

constexpr int kRows = 100;
constexpr double kStart = 1.8e12;

double ms_of(const std::function<void()>& action) {
    const auto begun = SteadyClock::now();
    action();
    return std::chrono::duration<double, std::milli>(SteadyClock::now() - begun).count();
}

void add_pass(Trend& trend, int pass) {
    trend.begin_pass(kStart + pass * 1000.0);
    for (int row = 0; row < kRows; ++row) {
        const double noise = (pass * 7919 + row * 104729) % 101 / 10.0;
        // One reading of a hundred is missing, as on a poor line.
        const bool lost = (pass * 31 + row * 17) % 100 == 0;
        trend.record(row, "Address 1 register " + std::to_string(row),
                     lost ? std::nan("") : 10.0 * row + 5 * std::sin(pass / 500.0) + noise);
    }
}

/// Median and longest of `times` runs of the action, with the painting that follows each.
void measure(const char* what, std::size_t times, const std::function<void()>& action) {
    std::vector<double> runs;
    for (std::size_t i = 0; i < times; ++i)
        runs.push_back(ms_of([&] {
            action();
            QApplication::processEvents();
        }));
    std::sort(runs.begin(), runs.end());
    std::printf("  %s: median %.1f ms, longest %.1f ms\n", what, runs[times / 2], runs.back());
}

void press(QWidget* chart, int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
    QKeyEvent event(QEvent::KeyPress, key, modifiers);
    QApplication::sendEvent(chart, &event);
}

int show_trend(int passes) {
    Trend trend(kRows);
    for (int pass = 0; pass < passes; ++pass)
        add_pass(trend, pass);
    std::printf("%d readings:\n", passes * kRows);
    desktop::TrendWindow made;
    measure("open", 1, [&] {
        made = desktop::make_trend_window(
            QCoreApplication::applicationDirPath() + QStringLiteral("/../pelvan7"), trend, nullptr);
        if (made.window) made.window->show();
    });
    if (!made.window) {
        std::fprintf(stderr, "%s\n", qPrintable(made.error));
        return 1;
    }
    auto* chart = made.window->findChild<QWidget*>("trend_chart");
    measure("everything", 5, [&] { press(chart, Qt::Key_Home); });
    measure("zoom", 20, [&] { press(chart, Qt::Key_Plus); });
    measure("pan", 20, [&] { press(chart, Qt::Key_Left, Qt::ShiftModifier); });
    measure("cursor", 20, [&] { press(chart, Qt::Key_Left); });
    press(chart, Qt::Key_Home);
    int pass = passes;
    measure("a pass more", 5, [&] {
        add_pass(trend, pass++);
        press(chart, Qt::Key_Home); // as the window's timer does
    });
    delete made.window;
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    return show_trend(10000) + show_trend(static_cast<int>(Trend::kDay));
}
