// The whole windowed program on simulated controllers: start-up, a command, its reply.
#include <gtest/gtest.h>

#include <QAbstractItemView>
#include <QApplication>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenuBar>
#include <QRadioButton>
#include <QTabBar>
#include <QTest>

#include "desktop/main_window.h"
#include "support/temp_dir.h"

namespace pelvan::desktop {
namespace {

class MainWindowTest : public ::testing::Test {
  protected:
    MainWindowTest() {
        pelvan::testing::write_file(dir_.file("pelvan7.ini"),
                                    "[COMMS CONTROLS]\r\nDEVICE 0 COMM PORT=1\r\n"
                                    "DEVICE 0 PORT SETTING=19200,N,8,1\r\n"
                                    "DEVICE 1 COMM PORT=2\r\n"
                                    "DEVICE 1 PORT SETTING=19200,N,8,1\r\n"
                                    "[SERIAL DEVICES]\r\nPORT 2=simulated:742\r\n");
        window_.open();
    }
    template <class Widget> Widget* find(const char* name) {
        auto* found = window_.frame().findChild<Widget*>(QLatin1String(name));
        EXPECT_NE(found, nullptr) << name;
        return found;
    }
    QString line(const char* list, int row) {
        auto* model = find<QAbstractItemView>(list)->model();
        return model->index(row, 0).data().toString();
    }

    /// Of the menu bar and of what is visible in the active window.
    QStringList access_keys() {
        QStringList texts;
        for (const QAction* menu : window_.frame().menuBar()->actions())
            texts += menu->text();
        const QWidget* active = window_.frame().findChild<QMdiArea*>()->activeSubWindow();
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

    pelvan::testing::TempDir dir_;
    MainWindow window_{dir_.path()};
};

TEST_F(MainWindowTest, ThreeWindowsStandReady) {
    for (const char* name : {"frm_Pelvan5VB", "frmCommand", "frmResponse"})
        EXPECT_TRUE(find<QMdiSubWindow>(name)->isVisible()) << name;
    EXPECT_TRUE(find<QRadioButton>("opt_Protocol(1)")->isChecked());
    EXPECT_TRUE(find<QLineEdit>("txt_Register")->isVisible());
    EXPECT_EQ(find<QMdiSubWindow>("frmCommand")->y(),
              find<QMdiSubWindow>("frm_Pelvan5VB")->height());
}

TEST_F(MainWindowTest, TypedCommandAndReplyStandInTheSameLine) {
    find<QRadioButton>("opt_DataFormat(2)")->click();
    auto* start = find<QLineEdit>("txt_Register");
    auto* count = find<QLineEdit>("txt_Values");
    start->clear();
    QTest::keyClicks(start, "0");
    count->clear();
    QTest::keyClicks(count, "2");
    QTest::keyClick(count, Qt::Key_Return);
    EXPECT_EQ(line("lst_CommsCommand", 0), "0 2");
    EXPECT_TRUE(line("lst_CommsResponse", 0).startsWith("742 "));
    start->clear();
    QTest::keyClicks(start, "100");
    QTest::keyClick(start, Qt::Key_Return);
    EXPECT_EQ(line("lst_CommsCommand", 1), "100 2");
    // Back to the command before.
    QTest::keyClick(start, Qt::Key_Up);
    EXPECT_EQ(start->text(), "0");
    // A line selected in one list selects its twin.
    auto* responses = find<QAbstractItemView>("lst_CommsResponse");
    responses->setCurrentIndex(responses->model()->index(0, 0));
    EXPECT_EQ(find<QAbstractItemView>("lst_CommsCommand")->currentIndex().row(), 0);
}

TEST_F(MainWindowTest, EveryWindowAnswersItsHelpKeyAndUsesNoAccessKeyTwice) {
    std::string page;
    window_.frame().show_help = [&](const std::string& asked) { page = asked; };
    Application& app = window_.application();
    const auto expect_keys = [&](Form& form) {
        form.Show();
        QCoreApplication::processEvents();
        page.clear();
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_F1);
        EXPECT_EQ(page, form.help_page());
        const QStringList keys = access_keys();
        EXPECT_EQ(QSet<QString>(keys.begin(), keys.end()).size(), keys.size())
            << form.Name() << " " << keys.join(' ').toStdString();
    };
    for (Form* form :
         std::initializer_list<Form*>{&app.history.frmCommand, &app.history.frmResponse,
                                      &app.listen, &app.transfer, &app.logging})
        expect_keys(*form);
    for (int protocol = 0; protocol < 4; ++protocol) {
        app.console.opt_Protocol.set_Value(protocol);
        expect_keys(app.console);
    }
}

TEST_F(MainWindowTest, AClosedHistoryComesBackWithItsLines) {
    QTest::keyClick(find<QLineEdit>("txt_Register"), Qt::Key_Return);
    auto* commands = find<QMdiSubWindow>("frmCommand");
    commands->close();
    EXPECT_FALSE(commands->isVisible());
    window_.application().frame.mnuShowCommand.choose();
    EXPECT_TRUE(commands->isVisible());
    EXPECT_EQ(find<QAbstractItemView>("lst_CommsCommand")->model()->rowCount(), 1);
}

} // namespace
} // namespace pelvan::desktop
