// What a line costs (processor time) that is added to the history, in an empty list and behind
// 9,000 others: as the program does it, five times a second, and with each line brought to the
// screen by itself.
#include <QApplication>
#include <QListView>
#include <QTimer>
#include <cstdio>
#include <ctime>

#include "desktop/bindings/bind.h"

namespace {

using namespace pelvan;

constexpr int kLines = 500;

double per_line_us(ListBox& list) {
    const std::clock_t begun = std::clock();
    for (int i = 0; i < kLines; ++i) {
        list.AddItem("1 3 10 742 7421 1518 17 203 179 94");
        list.set_ListIndex(list.ListCount() - 1);
        QApplication::processEvents();
        QApplication::processEvents(); // what the first turn has put off
    }
    return 1e6 * static_cast<double>(std::clock() - begun) / CLOCKS_PER_SEC / kLines;
}

} // namespace

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    QListView view;
    ListBox list("lst_CommsCommand");
    desktop::bind({[](const std::function<void()>& handler) { handler(); }}, list, &view);
    view.resize(900, 700);
    view.show();
    QApplication::processEvents();
    auto* throttle = view.findChild<QTimer*>("update_throttle");
    for (const int pause_ms : {throttle->interval(), 0}) {
        throttle->setInterval(pause_ms);
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
