// The port settings as a technician sees them: the dialog holds the frame, its keys work, and its
// window is made when it is first shown.
#include <gtest/gtest.h>

#include <QGroupBox>
#include <QLineEdit>
#include <QMdiSubWindow>

#include "desktop/main_window.h"
#include "desktop_fixture.h"
#include "support/temp_dir.h"

namespace pelvan::desktop {
namespace {

class SettingsWindowTest : public ::testing::Test {
  protected:
    SettingsWindowTest() {
        pelvan::testing::write_file(
            dir_.file("pelvan7.ini"),
            "[COMMS CONTROLS]\r\nDEVICE 0 COMM PORT =3\r\n"
            "DEVICE 0 PORT SETTING =9600,N,8,1\r\n"
            "DEVICE 1 COMM PORT =4\r\nDEVICE 1 PORT SETTING =300,E,7,2\r\n");
        window_ = std::make_unique<MainWindow>(dir_.path());
        window_->open();
        testing::run_events();
    }
    template <class Object = QWidget> Object* find(const char* name) {
        return window_->frame().findChild<Object*>(QLatin1String(name));
    }
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        QTest::keyClick(QApplication::focusWidget(), key, modifiers);
        testing::run_events();
    }

    pelvan::testing::TempDir dir_;
    std::unique_ptr<MainWindow> window_;
};

TEST_F(SettingsWindowTest, OpensByKeyHoldsTheWindowsAndGivesThemBackAtEscape) {
    EXPECT_EQ(find("frm_CommsSettings"), nullptr);
    press(Qt::Key_F9);
    ASSERT_NE(find("frm_CommsSettings"), nullptr);
    EXPECT_TRUE(find("frm_CommsSettings")->isVisible());
    EXPECT_FALSE(find("frmResponse")->isEnabled());
    EXPECT_TRUE(find("fram_Protocol(1)")->isVisible());
    EXPECT_FALSE(find("fram_Protocol(0)")->isVisible());
    EXPECT_EQ(find<QLineEdit>("txt_Baud(1)")->text(), "300");
    EXPECT_EQ(find<QLineEdit>("txt_Port(1)")->selectedText(), "4");

    press(Qt::Key_L, Qt::ControlModifier);
    EXPECT_FALSE(find("txt_StopBits(1)")->isEnabled());
    press(Qt::Key_Escape);
    EXPECT_FALSE(find("frm_CommsSettings")->isVisible());
    EXPECT_TRUE(find("frmResponse")->isEnabled());
    window_->frame().activateWindow();
    testing::run_events();
    EXPECT_EQ(QApplication::focusWidget(), find("txt_Register"));
}

TEST_F(SettingsWindowTest, EnterSavesWhatWasTyped) {
    press(Qt::Key_F9);
    QTest::keyClicks(QApplication::focusWidget(), "12"); // over the selected 4
    press(Qt::Key_Return);
    EXPECT_FALSE(find("frm_CommsSettings")->isVisible());
    EXPECT_EQ(window_->application().session.serial.gCommDevice[1]->CommPort(), 12);
}

} // namespace
} // namespace pelvan::desktop
