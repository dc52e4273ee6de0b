// The listen window of the whole program, on a pseudo-terminal: bytes reach it through the event
// loop.
#include "desktop/windows/traffic_view.h"
#include "desktop_fixture.h"
#include "support/pty_pair.h"

namespace pelvan::desktop {
namespace {

class ListenWindowTest : public testing::ProgramTest {
  protected:
    ListenWindowTest() {
        open({"", line_.path()});
        app().frame.mnuListen.choose();
        find<QAction>("mnuStartListen")->trigger();
    }
    frm_Listen& form() { return app().listen; }
    /// The console has controls of the same names.
    template <class Widget> Widget* own(const char* name) {
        return find("frm_Listen")->findChild<Widget*>(QLatin1String(name));
    }
    void hear(const std::string& burst) {
        const int before = form().lst_CommsCommand.ListCount();
        line_.send(burst);
        EXPECT_TRUE(
            QTest::qWaitFor([&] { return form().lst_CommsCommand.ListCount() > before; }, 10000));
    }

    pelvan::testing::PtyPair line_{pelvan::testing::PtyPair::Slave::KeepOpen};
};

TEST_F(ListenWindowTest, ShowsCopiesAndLogsWhatArrivesAndSaysWhyItStopped) {
    hear({"\1\3\0\144\0\2\205\324", 8});
    hear({"\1\3\4\2\325\377\377\353\303", 9});
    auto* lines = own<QListView>("lst_CommsCommand");
    auto* times = own<QListView>("lst_Times");
    EXPECT_FALSE(times->isVisible());
    find<QAction>("mnuShowTimes")->trigger();
    testing::run_events();
    EXPECT_TRUE(times->isVisible());
    EXPECT_TRUE(times->model()->index(1, 0).data().toString().contains("reply after "));
    lines->setFocus();
    QTest::keyClick(lines, Qt::Key_Home);
    QTest::keyClick(lines, Qt::Key_C, Qt::ControlModifier);
    EXPECT_TRUE(QTest::qWaitFor(
        [] { return QApplication::clipboard()->text().startsWith("1 3 100 2 133 212 \r\n"); },
        2000));

    own<QTabWidget>("tabs")->setCurrentIndex(2);
    auto* traffic = own<QTableWidget>("traffic");
    ASSERT_EQ(traffic->rowCount(), 4); // all, address 1, function 3, no Modbus frame
    EXPECT_EQ(traffic->item(2, 0)->text(), "Function 3");
    EXPECT_EQ(traffic->item(2, 3)->text(), "1");
    EXPECT_TRUE(own<HistogramView>("histogram")->accessibleDescription().endsWith("ms: 1"));

    QContextMenuEvent right_button(QContextMenuEvent::Mouse, QPoint(5, 5), QPoint(50, 50));
    QCoreApplication::sendEvent(lines->viewport(), &right_button);
    find<QMenu>("HiddenMenu_menu")->actions().at(0)->trigger();
    EXPECT_TRUE(form().Loglistenlist.Checked());
    app().console.opt_Protocol.set_Value(0);
    EXPECT_EQ(form().lbl_Status.Caption(), "Listening stopped: the ports were set up anew.");
    find("frm_Listen")->close();
    EXPECT_FALSE(form().loaded());
}

TEST_F(ListenWindowTest, FramesAreFilteredAndCopiedAndStandStillWhenPausedOrScrolledUp) {
    const std::string request("\1\3\0\144\0\2\205\324", 8);
    const std::string reply("\1\3\4\2\325\377\377\353\303", 9);
    own<QTabWidget>("tabs")->setCurrentIndex(1);
    auto* table = own<QTableView>("frames");
    const auto rows = [&](int count) {
        return QTest::qWaitFor([&] { return table->model()->rowCount() == count; }, 10000);
    };
    for (int i = 0; i < 40; ++i) {
        const std::string pair = request + reply;
        hear(pair.substr(0, 11)); // the reply in two pieces
        hear(pair.substr(11));
    }
    ASSERT_TRUE(rows(80));
    QScrollBar* bar = table->verticalScrollBar();
    EXPECT_EQ(bar->value(), bar->maximum());
    bar->setValue(3);
    hear(request);
    ASSERT_TRUE(rows(81));
    EXPECT_EQ(bar->value(), 3);
    own<QCheckBox>("chk_Pause")->click();
    hear(reply);
    EXPECT_TRUE(QTest::qWaitFor(
        [&] { return form().frames.lbl_Frames.Caption().starts_with("Paused: 1 frame came"); },
        10000));
    EXPECT_EQ(table->model()->rowCount(), 81);
    own<QCheckBox>("chk_Pause")->click();
    ASSERT_TRUE(rows(82));
    own<QLineEdit>("txt_FrameFunction")->setText("6");
    EXPECT_EQ(table->model()->rowCount(), 0);
    own<QLineEdit>("txt_FrameFunction")->clear();
    table->selectRow(81);
    table->setFocus();
    QTest::keyClick(table, Qt::Key_C, Qt::ControlModifier);
    EXPECT_TRUE(QTest::qWaitFor(
        [] {
            return QApplication::clipboard()->text().endsWith("100 = 725, 101 = -1\tCRC ok\r\n");
        },
        2000));
    // The list of lines is held in the same way.
    own<QTabWidget>("tabs")->setCurrentIndex(0);
    auto* lines = own<QListView>("lst_CommsCommand");
    testing::run_events();
    lines->verticalScrollBar()->setValue(5);
    hear(request);
    testing::run_events();
    EXPECT_EQ(lines->verticalScrollBar()->value(), 5);
    lines->scrollToBottom();
    hear(request);
    testing::run_events();
    EXPECT_EQ(lines->verticalScrollBar()->value(), lines->verticalScrollBar()->maximum());
    own<QPushButton>("cmd_Stop")->click();
    EXPECT_FALSE(own<QPushButton>("cmd_Stop")->isEnabled());
    EXPECT_TRUE(own<QPushButton>("cmd_Start")->isEnabled());
}

} // namespace
} // namespace pelvan::desktop
