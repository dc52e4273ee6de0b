// What a line costs that is added to the history, in an empty list and behind 9,000 others: as the
// program does it, five times a second, and with each line brought to the screen by itself.
#include <QApplication>
#include <QTimer>
#include <chrono>
#include <cstdio>

#include "desktop/bindings/bind.h"
#include "desktop/bindings/line_view.h"

namespace {

using namespace pelvan;

constexpr int kLines = 500;

double per_line_us(ListBox& list) {
    const auto begun = std::chrono::steady_clock::now();
    for (int i = 0; i < kLines; ++i) {
        list.AddItem("1 3 10 742 7421 1518 17 203 179 94");
        list.set_ListIndex(list.ListCount() - 1);
        QApplication::processEvents();
        QApplication::processEvents(); // what the first turn has put off
    }
    const std::chrono::duration<double, std::micro> taken =
        std::chrono::steady_clock::now() - begun;
    return taken.count() / kLines;
}

} // namespace

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    desktop::LineView view;
    ListBox list("lst_CommsCommand");
    desktop::bind({[](const std::function<void()>& handler) { handler(); }}, list, &view);
    view.resize(900, 700);
    view.show();
    QApplication::processEvents();
    auto* pacer = view.findChild<QTimer*>("pacer");
    for (const int pause_ms : {pacer->interval(), 0}) {
        pacer->setInterval(pause_ms);
        list.Clear();
        // A full screen, so that both have as much to paint.
        while (list.ListCount() < 100)
            list.AddItem("1 3 10 742 7421 1518 17 203 179 94");
        QApplication::processEvents();
        const double first = per_line_us(list);
        while (list.ListCount() < 9000)
            list.AddItem("1 3 10 742 7421 1518 17 203 179 94");
        QApplication::processEvents();
        std::printf("shown every %d ms: %.2f us a line behind 100 lines, %.2f us behind 9,000\n",
                    pause_ms, first, per_line_us(list));
    }
}
