// What a line costs that is added to the history: in an empty list and behind 9,000 others, model
// and view, without and with the repaint.
#include <QApplication>
#include <chrono>
#include <cstdio>

#include "desktop/bind.h"
#include "desktop/line_view.h"

namespace {

using namespace pelvan;

constexpr int kLines = 500;

double per_line_us(ListBox& list, bool repaint) {
    const auto begun = std::chrono::steady_clock::now();
    for (int i = 0; i < kLines; ++i) {
        list.AddItem("1 3 10 742 7421 1518 17 203 179 94");
        list.set_ListIndex(list.ListCount() - 1);
        if (repaint) QApplication::processEvents();
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
    for (const bool repaint : {false, true}) {
        list.Clear();
        const double first = per_line_us(list, repaint);
        while (list.ListCount() < 9000)
            list.AddItem("1 3 10 742 7421 1518 17 203 179 94");
        std::printf("%s: %.2f us a line in an empty list, %.2f us behind 9,000 lines\n",
                    repaint ? "with repaint" : "without repaint", first,
                    per_line_us(list, repaint));
    }
}
