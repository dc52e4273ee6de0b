// The listen window of the whole program, on a pseudo-terminal: bytes reach it through the event
// loop.
#include <gtest/gtest.h>

#include <QClipboard>
#include <QContextMenuEvent>
#include <QGuiApplication>
#include <QMenu>
#include <QRadioButton>
#include <QTabWidget>
#include <QTableWidget>
#include <QTest>

#include "desktop/line_view.h"
#include "desktop/main_window.h"
#include "desktop/qt_text.h"
#include "desktop/traffic_view.h"
#include "support/pty_pair.h"
#include "support/temp_dir.h"

namespace pelvan::desktop {
namespace {

using pelvan::testing::PtyPair;

constexpr int kPatienceMs = 10000;
const std::string kRequest{"\1\3\0\144\0\2\205\324", 8};
const std::string kReply{"\1\3\4\2\325\377\377\353\303", 9};

class ListenWindowTest : public ::testing::Test {
  protected:
    ListenWindowTest() {
        pelvan::testing::write_file(dir_.file("pelvan7.ini"),
                                    "[COMMS CONTROLS]\r\nDEFAULT PROTOCOL=1\r\n"
                                    "DEVICE 0 COMM PORT=1\r\nDEVICE 0 PORT SETTING=9600,N,8,1\r\n"
                                    "DEVICE 1 COMM PORT=2\r\nDEVICE 1 PORT SETTING=9600,N,8,1\r\n"
                                    "DEVICE 1 RTS Mode=1\r\n[SERIAL DEVICES]\r\nPORT 2=" +
                                        line_.path() + "\r\n");
        main_ = std::make_unique<MainWindow>(dir_.path());
        main_->open();
        app().frame.mnuListen.choose();
    }
    Application& app() { return main_->application(); }
    frm_Listen& form() { return app().listen; }
    template <class Widget> Widget* find(const char* name) {
        // The console has controls of the same names: this window's own come first.
        const auto* window = main_->frame().findChild<QWidget*>(QStringLiteral("frm_Listen"));
        auto* own = window->findChild<Widget*>(QLatin1String(name));
        return own ? own : main_->frame().findChild<Widget*>(QLatin1String(name));
    }
    void hear(const std::string& burst) {
        const int before = form().lst_CommsCommand.ListCount();
        line_.send(burst);
        EXPECT_TRUE(QTest::qWaitFor([&] { return form().lst_CommsCommand.ListCount() > before; },
                                    kPatienceMs));
    }

    pelvan::testing::TempDir dir_;
    PtyPair line_{PtyPair::Slave::KeepOpen};
    std::unique_ptr<MainWindow> main_;
};

TEST_F(ListenWindowTest, ShowsWhatArrivesWithTimesAndTraffic) {
    ASSERT_TRUE(find<QWidget>("frm_Listen")->isVisible());
    auto* lines = find<LineView>("lst_CommsCommand");
    auto* times = find<LineView>("lst_Times");
    EXPECT_FALSE(times->isVisible());
    find<QAction>("mnuStartListen")->trigger();
    hear(kRequest);
    find<QRadioButton>("opt_DataFormat(2)")->click();
    EXPECT_FALSE(find<QRadioButton>("opt_DataDirection(1)")->isEnabled());
    hear(kReply);
    EXPECT_EQ(lines->model()->index(0, 0).data().toString(), QStringLiteral("1 3 100 2 133 212 "));
    EXPECT_EQ(lines->currentIndex().data().toString(),
              QStringLiteral("1 3 4 2 213 255 255 235 195"));
    find<QAction>("mnuShowTimes")->trigger();
    EXPECT_TRUE(times->isVisible());
    EXPECT_TRUE(
        times->model()->index(1, 0).data().toString().contains(QStringLiteral("reply after ")));

    find<QTabWidget>("tabs")->setCurrentIndex(1);
    auto* traffic = find<QTableWidget>("traffic");
    ASSERT_EQ(traffic->rowCount(), 4); // all, address 1, function 3, no Modbus frame
    EXPECT_EQ(traffic->item(2, 0)->text(), QStringLiteral("Function 3"));
    EXPECT_EQ(traffic->item(2, 2)->text(), QStringLiteral("1"));
    EXPECT_TRUE(find<HistogramView>("histogram")
                    ->accessibleDescription()
                    .endsWith(QStringLiteral("ms: 1")));
}

TEST_F(ListenWindowTest, CopiesLogsAndSaysWhyItStopped) {
    find<QAction>("mnuStartListen")->trigger();
    hear("abc");
    auto* lines = find<LineView>("lst_CommsCommand");
    lines->setFocus();
    QTest::keyClick(lines, Qt::Key_C, Qt::ControlModifier);
    EXPECT_TRUE(QTest::qWaitFor(
        [] { return QGuiApplication::clipboard()->text() == QStringLiteral("abc\r\n"); }, 2000));
    QContextMenuEvent right_button(QContextMenuEvent::Mouse, QPoint(5, 5), QPoint(50, 50));
    QCoreApplication::sendEvent(lines->viewport(), &right_button);
    auto* menu = find<QMenu>("HiddenMenu_menu");
    ASSERT_TRUE(menu->isVisible());
    menu->actions().at(0)->trigger();
    menu->close();
    EXPECT_TRUE(form().Loglistenlist.Checked());
    app().console.opt_Protocol.set_Value(0);
    EXPECT_TRUE(find<QWidget>("lbl_Status") != nullptr);
    EXPECT_EQ(form().lbl_Status.Caption(), "Listening stopped: the ports were set up anew.");
    EXPECT_FALSE(app().session.listen.gListening);
    find<QWidget>("frm_Listen")->close();
    EXPECT_FALSE(form().loaded());
}

} // namespace
} // namespace pelvan::desktop
