// The whole windowed program on a simulated controller: start-up, a command, its reply, and the
// port settings.
#include "desktop_fixture.h"

namespace pelvan::desktop {
namespace {

class MainWindowTest : public testing::ProgramTest {
  protected:
    MainWindowTest() { open("simulated:742"); }
    static void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        QTest::keyClick(QApplication::focusWidget(), key, modifiers);
        testing::run_events();
    }
    QString line(const char* list, int row) {
        return find<QAbstractItemView>(list)->model()->index(row, 0).data().toString();
    }
    /// Of the menu bar and of what is visible in the active window.
    QStringList access_keys() {
        QStringList texts;
        for (const QAction* menu : main_->frame().menuBar()->actions())
            texts += menu->text();
        const QWidget* active = main_->frame().findChild<QMdiArea*>()->activeSubWindow();
        for (const QWidget* widget : active->findChildren<QWidget*>()) {
            if (!widget->isVisibleTo(active)) continue;
            if (const auto* label = qobject_cast<const QLabel*>(widget); label && label->buddy())
                texts += label->text();
            if (const auto* button = qobject_cast<const QAbstractButton*>(widget))
                texts += button->text();
            if (const auto* box = qobject_cast<const QGroupBox*>(widget)) texts += box->title();
            if (const auto* tabs = qobject_cast<const QTabBar*>(widget))
                for (int i = 0; i < tabs->count(); ++i)
                    texts += tabs->tabText(i);
        }
        QStringList keys;
        for (const QString& text : texts)
            if (const QKeySequence key = QKeySequence::mnemonic(text); !key.isEmpty())
                keys += key.toString();
        return keys;
    }
};

TEST_F(MainWindowTest, TypedCommandAndReplyStandInTheSameLine) {
    for (const char* name : {"frm_Pelvan5VB", "frmCommand", "frmResponse"})
        EXPECT_TRUE(find(name)->isVisible()) << name;
    find<QRadioButton>("opt_DataFormat(2)")->click();
    auto* start = find<QLineEdit>("txt_Register");
    auto* count = find<QLineEdit>("txt_Values");
    const auto send = [](QLineEdit* edit, const char* text) {
        edit->clear();
        QTest::keyClicks(edit, text);
        QTest::keyClick(edit, Qt::Key_Return);
        testing::run_events();
    };
    start->setText("0");
    send(count, "2");
    EXPECT_EQ(line("lst_CommsCommand", 0), "0 2");
    EXPECT_TRUE(line("lst_CommsResponse", 0).startsWith("742 "));
    send(start, "100");
    EXPECT_EQ(line("lst_CommsCommand", 1), "100 2");
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
    EXPECT_EQ(line("lst_CommsCommand", 1), "100 2");
}

TEST_F(MainWindowTest, EveryWindowAnswersItsHelpKeyAndUsesNoAccessKeyTwice) {
    std::string page;
    main_->frame().show_help = [&](const std::string& asked) { page = asked; };
    const auto expect_keys = [&](Form& form) {
        form.Show();
        testing::run_events();
        page.clear();
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_F1);
        EXPECT_EQ(page, form.help_page());
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

TEST_F(MainWindowTest, SettingsHoldTheOtherWindowsUntilEscape) {
    EXPECT_EQ(find("frm_CommsSettings"), nullptr) << "made when it is first shown";
    press(Qt::Key_F9);
    EXPECT_TRUE(find("frm_CommsSettings")->isVisible());
    EXPECT_FALSE(find("frmResponse")->isEnabled());
    EXPECT_EQ(find<QLineEdit>("txt_Baud(1)")->text(), "9600");
    press(Qt::Key_Escape);
    EXPECT_FALSE(find("frm_CommsSettings")->isVisible());
    EXPECT_TRUE(find("frmResponse")->isEnabled());
    main_->frame().activateWindow();
    testing::run_events();
    EXPECT_EQ(QApplication::focusWidget(), find("txt_Register"));
}

TEST_F(MainWindowTest, EnterSavesTheSettings) {
    press(Qt::Key_F9);
    QTest::keyClicks(QApplication::focusWidget(), "12"); // over the selected 2
    press(Qt::Key_Return);
    EXPECT_FALSE(find("frm_CommsSettings")->isVisible());
    EXPECT_EQ(app().session.serial.gCommDevice[1]->CommPort(), 12);
}

} // namespace
} // namespace pelvan::desktop
