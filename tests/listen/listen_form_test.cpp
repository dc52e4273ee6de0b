#include "listen/listen_form.h"

#include <gtest/gtest.h>

#include "listen_rig.h"
#include "support/error_of.h"
#include "support/fake_dialogs.h"

namespace pelvan {
namespace {

class ListenFormTest : public ::testing::Test, public testing::ListenRig {
  protected:
    ListenFormTest() { form.Load(); }

    testing::FakeDesktop desktop;
    Services services{tick, clock, dialogs, desktop, dir.path()};
    std::int16_t channel = 1;
    frm_Listen form{services, monitor, [this] { return channel; }};
};

TEST_F(ListenFormTest, OptionsReachTheMonitor) {
    EXPECT_EQ(listen.gListenTimeout, 500);
    form.opt_CharacterDelay.set_Value(1);
    EXPECT_EQ(listen.gListenTimeout, 2000);
    form.opt_DataDirection.set_Value(1);
    EXPECT_EQ(monitor.options.direction, ListenDirection::FromDevice);
    for (const int format : {2, 1}) {
        form.opt_DataFormat.set_Value(format);
        EXPECT_EQ(static_cast<int>(monitor.options.format), format);
        for (const int direction : {0, 1})
            EXPECT_EQ(form.opt_DataDirection.option(direction).enabled, format != 2);
        EXPECT_EQ(form.fram_DataDirection.Enabled(), format != 2);
    }
}

TEST_F(ListenFormTest, ShowsWhatArrivesAndBeginsAgainWhenOpenedAgain) {
    form.mnuShowTimes.choose();
    form.mnuStartListen.choose();
    EXPECT_EQ(form.lbl_Status.Caption(), "Listening on channel 1, port 2, 9600,N,8,1.");
    burst_at(2000, testing::frame("01 03 00 64 00 02"));
    burst_at(2250, "x");
    EXPECT_EQ(form.lst_Times.List(1), "16:30:05.250  +250 ms  no Modbus frame");
    EXPECT_EQ(form.lst_Times.ListIndex(), 1);
    EXPECT_EQ(form.lst_CommsCommand.ListIndex(), 1);
    EXPECT_EQ(form.lbl_BurstHitRate.Caption() + form.txt_BurstHitRate.Text(), "Burst Hit Rate240");
    EXPECT_EQ(form.lbl_HitCount.Caption() + form.txt_HitCount.Text(), "Hits2");
    EXPECT_FALSE(form.lst_CommsCommand_KeyDown(true, 'x') ||
                 form.lst_CommsCommand_KeyDown(false, 'c'));
    EXPECT_TRUE(form.lst_CommsCommand_KeyDown(true, 'C'));
    EXPECT_EQ(desktop.clipboard, "1 3 100 2 133 212 \r\nx\r\n");
    // The lists are emptied when they hold more than ten thousand lines.
    for (int i = 2; i <= 10001; ++i) {
        EXPECT_EQ(form.lst_CommsCommand.ListCount(), i);
        monitor.line_added.raise("y", {});
    }
    EXPECT_EQ(form.lst_CommsCommand.ListCount() + form.lst_Times.ListCount(), 2);
    // And when they hold more text than can be meant to be read.
    for (int i = 0; i < 100; ++i)
        monitor.line_added.raise(std::string(1 << 20, 'z'), {});
    EXPECT_LE(form.lst_CommsCommand.ListCount(), 34);
    form.mnuClearScreen.choose();
    form.mnuExitListen.choose();
    EXPECT_FALSE(monitor.listening());
    monitor.line_added.raise("of another front end", {});
    EXPECT_EQ(form.lst_CommsCommand.ListCount(), 0);
    form.Load();
    EXPECT_EQ(form.lst_CommsCommand.ListCount() + form.lst_Times.ListCount(), 0);
    EXPECT_TRUE(form.traffic().bursts().empty());
    EXPECT_EQ(form.txt_HitCount.Text() + form.txt_BurstHitRate.Text(), "");
    EXPECT_FALSE(form.mnuShowTimes.Checked() || form.lst_Times.Visible());
    EXPECT_EQ(form.lbl_Status.Caption(), "Not listening.");
}

TEST_F(ListenFormTest, TheRightButtonsMenuLogsUntilTheLogFails) {
    const Subscription chooses =
        form.pop_up.subscribe([](MenuEntry& menu) { menu.children.at(0)->choose(); });
    form.Form_MouseUp(1);
    EXPECT_FALSE(monitor.options.log_to_file);
    form.Form_MouseUp(2);
    EXPECT_TRUE(monitor.options.log_to_file && form.Loglistenlist.Checked());
    form.mnuStartListen.choose();
    std::filesystem::create_directory(dir.file(ListenMonitor::kLogFileName));
    EXPECT_NE(testing::error_of([&] { burst_at(2000, "x"); }), 0);
    EXPECT_FALSE(form.Loglistenlist.Checked());
}

} // namespace
} // namespace pelvan
