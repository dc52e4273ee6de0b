// The window of the setup transfer on a simulated controller: what a person presses and sees.
#include "desktop/windows/transfer_window.h"
#include "desktop_fixture.h"
#include "support/simulated_program.h"

namespace pelvan::desktop::testing {
namespace {

class TransferWindow : public WindowTest, protected pelvan::testing::SimulatedProgram {
  protected:
    TransferWindow() : SimulatedProgram({"simulated:742", "simulated:742"}, 1) {
        tick.step_ms = 0.5;
        desktop.on_turn = run_events;
        std::filesystem::create_directory(dir.file("Reg Downloads"));
        std::filesystem::copy(std::string(PELVAN_SAMPLES) + "/Download Sequences",
                              dir.file("Download Sequences"));
        dialogs.files.push_back(dir.file("setup.txt"));
        (new QVBoxLayout(&window_))->addWidget(make_transfer(context_, app.transfer));
        show_active();
    }

    WidgetsEnd widgets_end_{window_};
};

TEST_F(TransferWindow, EscapeCancelsARunningTransfer) {
    dialogs.answers = {MessageAnswer::Yes};
    desktop.on_turn = [&] {
        run_events();
        if (app.transfer.List1.ListCount() != 5) return;
        EXPECT_GT(find<QProgressBar>("ProgressBar1")->value(), 0);
        EXPECT_EQ(find<QAbstractItemView>("List1")->currentIndex().row(), 4);
        QTest::keyClick(window_.focusWidget(), Qt::Key_Escape);
    };
    QTest::keyClick(find<QPushButton>("cmdDownload"), Qt::Key_Space);
    EXPECT_EQ(dialogs.texts(), (std::vector<std::string>{"Do you want to cancel the transfer?",
                                                         "Download was Canceled."}));
    EXPECT_TRUE(find<QPushButton>("cmdDownload")->isEnabled());
}

} // namespace
} // namespace pelvan::desktop::testing
