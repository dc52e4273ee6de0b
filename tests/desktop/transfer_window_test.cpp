// The window of the setup transfer on a simulated controller: what a person presses and sees.
#include <QAbstractItemView>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>
#include <filesystem>

#include "app/application.h"
#include "desktop/transfer_window.h"
#include "desktop_fixture.h"
#include "support/fake_dialogs.h"
#include "support/fake_time.h"
#include "support/temp_dir.h"

namespace pelvan::desktop::testing {
namespace {

namespace fakes = pelvan::testing;

class RunningDesktop : public fakes::FakeDesktop {
  public:
    void let_events_run() override {
        FakeDesktop::let_events_run();
        run_events();
    }
};

class TransferWindow : public WindowTest {
  protected:
    TransferWindow() {
        tick.step_ms = 0.5;
        fakes::write_file(dir.file("pelvan7.ini"),
                          "[COMMS CONTROLS]\r\n"
                          "DEVICE 0 COMM PORT=1\r\nDEVICE 0 PORT SETTING=9600,N,8,1\r\n"
                          "DEVICE 1 COMM PORT=2\r\nDEVICE 1 PORT SETTING=9600,N,8,1\r\n"
                          "[SERIAL DEVICES]\r\nPORT 2=simulated:742\r\n");
        std::filesystem::create_directory(dir.file("Reg Downloads"));
        std::filesystem::copy(std::string(PELVAN_SAMPLES) + "/Download Sequences",
                              dir.file("Download Sequences"));
        app.session.config.gIniFile = dir.file("pelvan7.ini");
        app.channels.init_comms();
        auto* layout = new QVBoxLayout(&window_);
        layout->addWidget(make_transfer(context_, app.transfer));
        window_.resize(900, 500);
        show_active();
    }

    fakes::TempDir dir;
    fakes::FakeTick tick;
    fakes::FakeClock clock;
    fakes::FakeDialogs dialogs;
    RunningDesktop desktop;
    Application app{Services{tick, clock, dialogs, desktop, dir.path()}, open_serial_device};
    WidgetsEnd widgets_end_{window_};
};

TEST_F(TransferWindow, ADownloadShowsItsStepsAndEndsWithAFullBar) {
    dialogs.files.push_back(dir.file("setup.txt"));
    auto* bar = find<QProgressBar>("ProgressBar1");
    auto* download = find<QPushButton>("cmdDownload");
    auto* list = find<QAbstractItemView>("List1");
    double shown = 0;
    bool buttons_off = false;
    dialogs.on_message = [&](const std::string&) {
        shown = static_cast<double>(bar->value()) / bar->maximum();
        buttons_off = !download->isEnabled() && !find<QPushButton>("cmdExit")->isEnabled();
    };
    QTest::mouseClick(download, Qt::LeftButton);
    EXPECT_EQ(dialogs.texts().back(), "Downloading Process Complete.");
    EXPECT_EQ(shown, 1);
    EXPECT_TRUE(buttons_off);
    EXPECT_TRUE(download->isEnabled());
    EXPECT_EQ(list->model()->rowCount(), app.transfer.List1.ListCount());
    EXPECT_EQ(list->currentIndex().row(), app.transfer.List1.ListCount() - 1);
}

TEST_F(TransferWindow, EscapeCancelsARunningTransfer) {
    dialogs.files.push_back(dir.file("setup.txt"));
    dialogs.answers = {MessageAnswer::Yes};
    bool pressed = false;
    desktop.on_turn = [&] {
        if (pressed || app.transfer.List1.ListCount() < 5) return;
        pressed = true;
        ASSERT_NE(window_.focusWidget(), nullptr);
        QTest::keyClick(window_.focusWidget(), Qt::Key_Escape);
    };
    QTest::keyClick(find<QPushButton>("cmdDownload"), Qt::Key_Space);
    ASSERT_GE(dialogs.shown.size(), 2U);
    EXPECT_EQ(dialogs.texts()[0], "Do you want to cancel the transfer?");
    EXPECT_EQ(dialogs.texts().back(), "Download was Canceled.");
    EXPECT_TRUE(find<QPushButton>("cmdDownload")->isEnabled());
}

} // namespace
} // namespace pelvan::desktop::testing
