// The whole windowed program on a simulated controller: a command, its reply, the histories, the
// keys and the port settings.
#include "desktop_fixture.h"

namespace pelvan::desktop {
namespace {

class MainWindowTest : public testing::ProgramTest {
  protected:
    MainWindowTest() { open({"", "simulated:742"}); }
    static void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        QTest::keyClick(QApplication::focusWidget(), key, modifiers);
        testing::run_events();
    }
    QString line(const char* list, int row) {
        return find<QAbstractItemView>(list)->model()->index(row, 0).data().toString();
    }
    /// Where the help stands, which is closed then.
    std::string taken_help_page() {
        for (QWidget* window : QApplication::topLevelWidgets()) {
            if (window->objectName() != "help_window" || !window->close()) continue;
            auto* page = window->findChild<QTextBrowser*>("help_page");
            const QString text = page->toPlainText();
            page->clear();
            main_->frame().activateWindow();
            testing::run_events();
            return text.section(u'"', 1, 1).section(u'.', 0, 0).toStdString();
        }
        return "no help";
    }
    /// Of the menu bar and of what is visible in the active window.
    QStringList access_keys() {
        QStringList texts;
        for (const QAction* menu : main_->frame().menuBar()->actions())
            texts += menu->text();
        const QWidget* active = main_->frame().findChild<QMdiArea*>()->activeSubWindow();
        for (const QWidget* widget : active->findChildren<QWidget*>()) {
            if (!widget->isVisibleTo(active)) continue;
            const auto* label = qobject_cast<const QLabel*>(widget);
            if (qobject_cast<const QAbstractButton*>(widget) || (label && label->buddy()))
                texts += widget->property("text").toString();
            texts += widget->property("title").toString();
            if (const auto* tabs = qobject_cast<const QTabBar*>(widget))
                for (int i = 0; i < tabs->count(); ++i)
                    texts += tabs->tabText(i);
        }
        QStringList keys;
        for (const QString& text : texts)
            keys += QKeySequence::mnemonic(text).toString();
        keys.removeAll(QString());
        return keys;
    }
};

TEST_F(MainWindowTest, TypedCommandAndReplyStandInTheSameLine) {
    EXPECT_FALSE(find("Fram_CommsCommand")->isVisible()) << "another protocol's";
    find<QRadioButton>("opt_DataFormat(2)")->click();
    auto* start = find<QLineEdit>("txt_Register");
    for (const char* text : {"0", "100"}) {
        start->clear();
        QTest::keyClicks(start, text);
        QTest::keyClick(start, Qt::Key_Return);
        testing::run_events();
    }
    EXPECT_EQ(line("lst_CommsCommand", 0), "0 1");
    EXPECT_EQ(line("lst_CommsResponse", 0), "742");
    EXPECT_EQ(line("lst_CommsCommand", 1), "100 1");
    QTest::keyClick(start, Qt::Key_Up); // back to the command before
    EXPECT_EQ(start->text(), "0");
    // A line selected in one list selects its twin.
    auto* responses = find<QAbstractItemView>("lst_CommsResponse");
    responses->setCurrentIndex(responses->model()->index(0, 0));
    testing::run_events();
    EXPECT_EQ(find<QAbstractItemView>("lst_CommsCommand")->currentIndex().row(), 0);

    find("frmCommand")->close();
    EXPECT_FALSE(find("frmCommand")->isVisible());
    app().frame.mnuShowCommand.choose();
    EXPECT_TRUE(find("frmCommand")->isVisible());
    EXPECT_EQ(line("lst_CommsCommand", 1), "100 1");
}

TEST_F(MainWindowTest, TimesStayBesideTheirLines) {
    History& history = app().history;
    const auto top = [this](const char* list) {
        return find<QAbstractItemView>(list)->indexAt(QPoint(2, 2)).row();
    };
    for (int i = 0; i < 1000; ++i)
        history.add({"", "command", "", std::string(300, 'r') + std::to_string(i)});
    testing::run_events();
    auto* responses = find<QListView>("lst_CommsResponse");
    history.frmResponse.hscrl_List.set_Value(-20000);
    EXPECT_EQ(responses->visualRect(responses->currentIndex()).right() + 1,
              responses->viewport()->width());
    EXPECT_FALSE(find("lst_CommsResponseTimes")->isVisible());
    EXPECT_GT(top("lst_CommsResponse"), 900);
    history.frmCommand.mnuTimes.choose();
    testing::run_events();
    EXPECT_EQ(top("lst_CommsResponseTimes"), top("lst_CommsResponse"));

    history.frmCommand.mnuTimes.choose(); // hidden, the times take no part
    history.frmResponse.list.set_ListIndex(500);
    EXPECT_EQ(top("lst_CommsResponse"), 500);
    history.frmCommand.mnuTimes.choose();
    testing::run_events();
    EXPECT_EQ(top("lst_CommsResponse"), 500);
    EXPECT_EQ(top("lst_CommsResponseTimes"), 500);
    find<QAbstractItemView>("lst_CommsResponseTimes")->scrollToTop();
    EXPECT_EQ(top("lst_CommsResponse"), 0);
}

TEST_F(MainWindowTest, EveryWindowAnswersItsHelpKeyAndUsesNoAccessKeyTwice) {
    const auto expect_keys = [&](Form& form) {
        form.Show();
        testing::run_events();
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_F1);
        EXPECT_EQ(taken_help_page(), form.help_page());
        const QStringList keys = access_keys();
        EXPECT_EQ(QSet<QString>(keys.begin(), keys.end()).size(), keys.size())
            << form.Name() << " " << keys.join(' ').toStdString();
    };
    for (Form* form :
         std::initializer_list<Form*>{&app().history.frmCommand, &app().history.frmResponse,
                                      &app().listen, &app().transfer, &app().logging})
        expect_keys(*form);
    for (int protocol = 0; protocol < 4; ++protocol) {
        app().console.opt_Protocol.set_Value(protocol);
        expect_keys(app().console);
    }
}

TEST_F(MainWindowTest, SettingsHoldTheOtherWindowsUntilEscapeOrEnter) {
    EXPECT_EQ(find("frm_CommsSettings"), nullptr) << "made when it is first shown";
    auto* line = find<QToolButton>("cmd_Line"); // in the status bar
    EXPECT_EQ(line->text(), "Modbus | Port 2 | simulated:742 | 9600,N,8,1 | closed");
    for (const Qt::Key key : {Qt::Key_Escape, Qt::Key_Return}) {
        if (key == Qt::Key_Escape)
            press(Qt::Key_F9);
        else
            QTest::mouseClick(line, Qt::LeftButton);
        testing::run_events();
        EXPECT_TRUE(find("frm_CommsSettings")->isVisible());
        EXPECT_FALSE(find("frmResponse")->isEnabled());
        if (key == Qt::Key_Return)
            QTest::keyClicks(QApplication::focusWidget(), "12"); // over the selected 2
        press(key);
        EXPECT_FALSE(find("frm_CommsSettings")->isVisible());
        EXPECT_TRUE(find("frmResponse")->isEnabled());
        main_->frame().activateWindow();
        testing::run_events();
        EXPECT_EQ(QApplication::focusWidget(), find("txt_Register"));
    }
    EXPECT_EQ(app().session.serial.gCommDevice[1]->CommPort(), 12);
}

/// Without a configuration file and by the keyboard alone.
TEST(FirstStart, IsAtAReplyAfterFourActions) {
    pelvan::testing::TempDir dir;
    MainWindow window(dir.path());
    window.open();
    testing::run_events();
    const auto type = [](const char* text) {
        QTest::keyClicks(QApplication::focusWidget(), QLatin1String(text));
        testing::run_events();
    };
    const auto press = [](Qt::Key key) {
        QTest::keyClick(QApplication::focusWidget(), key);
        testing::run_events();
    };
    press(Qt::Key_F9);
    type("simulated:742");
    press(Qt::Key_Return);
    window.frame().activateWindow();
    testing::run_events();
    press(Qt::Key_Return);
    const ListBox& responses = window.application().history.frmResponse.list;
    ASSERT_EQ(responses.ListCount(), 1);
    EXPECT_TRUE(responses.List(0).starts_with("1 3 2 742 ")) << responses.List(0);
}

} // namespace
} // namespace pelvan::desktop
