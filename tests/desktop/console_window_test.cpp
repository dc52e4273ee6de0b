// The console as a technician sees it: the chosen protocol's fields alone, Enter sends, and all of
// it fits the flat window.
#include <gtest/gtest.h>

#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>

#include "desktop/main_window.h"
#include "desktop_fixture.h"
#include "support/temp_dir.h"

namespace pelvan::desktop {
namespace {

class ConsoleWindowTest : public ::testing::Test {
  protected:
    ConsoleWindowTest() {
        std::string text = "[COMMS CONTROLS]\r\nDEFAULT PROTOCOL=0\r\n";
        for (const char* n : {"0", "1", "2", "3"})
            text += std::string("DEVICE ") + n + " COMM PORT =" + (*n == '3' ? "2" : "1") +
                    "\r\nDEVICE " + n + " PORT SETTING =9600,N,8,1\r\n";
        text += "[SERIAL DEVICES]\r\nPORT 1=simulated:742\r\nPORT 2=simulated:loopback\r\n";
        pelvan::testing::write_file(dir_.file("pelvan7.ini"), text);
        window_ = std::make_unique<MainWindow>(dir_.path());
        window_->open();
        testing::run_events();
    }
    template <class Object = QWidget> Object* find(const char* name) {
        return window_->frame().findChild<Object*>(QLatin1String(name));
    }
    void choose_protocol(int number) {
        window_->application().console.opt_Protocol.set_Value(number);
        testing::run_events();
    }
    /// Whether a widget is shown whole inside the console.
    bool fits(const char* name) {
        const QWidget* widget = find(name);
        const QWidget* console = find("frm_Pelvan5VB");
        return widget->isVisible() &&
               console->rect().contains(QRect(widget->mapTo(console, QPoint()), widget->size())
                                            .adjusted(0, 0, -1, -1)) &&
               widget->height() >= widget->minimumSizeHint().height();
    }
    [[nodiscard]] std::string last_response() {
        ListBox& list = window_->application().history.frmResponse.list;
        return list.ListCount() > 0 ? list.List(list.ListCount() - 1) : "";
    }

    pelvan::testing::TempDir dir_;
    std::unique_ptr<MainWindow> window_;
};

TEST_F(ConsoleWindowTest, ShowsTheFieldsOfTheChosenProtocolAlone) {
    const std::vector<std::vector<const char*>> fields{
        {"Fram_CommsCommand", "txt_DeviceAddress", "txt_CommsCommand"},
        {"Fram_Modbus", "txt_Values", "fram_DataFormat"},
        {"Fram_CommsCommand", "txt_CommsCommand"},
        {"Fram_Tellura", "TxtParameterAddress", "TxtNoBytes", "TxtData", "OptReadWrite(1)",
         "OptErrorChecking(1)"}};
    const std::vector<const char*> frames{"Fram_CommsCommand", "Fram_Modbus", "Fram_Tellura"};
    for (int number = 0; number < 4; ++number) {
        choose_protocol(number);
        for (const char* name : fields[static_cast<std::size_t>(number)])
            EXPECT_TRUE(fits(name)) << number << " " << name;
        for (const char* name : frames)
            EXPECT_EQ(find(name)->isVisible(),
                      name == std::string(fields[static_cast<std::size_t>(number)][0]))
                << number << " " << name;
        EXPECT_TRUE(fits("cmd_SendCommand") && fits("lbl_Status"));
        EXPECT_FALSE(find("cmd_CancelSetup")->isVisible());
    }
    choose_protocol(2);
    EXPECT_FALSE(find("txt_DeviceAddress")->isVisible());
}

TEST_F(ConsoleWindowTest, EnterSendsAndTheArrowKeysRecall) {
    auto* command = find<QLineEdit>("txt_CommsCommand");
    EXPECT_EQ(command->text(), "? C1");
    EXPECT_TRUE(command->hasFocus());
    command->setText({});
    QTest::keyClicks(command, "? MODEL");
    QTest::keyClick(command, Qt::Key_Return);
    EXPECT_EQ(last_response(), "742");
    command->clear();
    QTest::keyClick(command, Qt::Key_Up);
    EXPECT_EQ(command->text(), "? MODEL");
    choose_protocol(1);
    const ListBox& replies = window_->application().history.frmResponse.list;
    for (const char* name : {"cmb_CommandType", "opt_DataFormat(2)"}) {
        const int before = replies.ListCount();
        QTest::keyClick(find(name), Qt::Key_Enter, Qt::KeypadModifier);
        EXPECT_EQ(replies.ListCount(), before + 1) << name;
    }
}

TEST_F(ConsoleWindowTest, TheLoopBackTestBreaksItsLinesAndEnds) {
    choose_protocol(3);
    std::vector<QString> texts;
    QTimer answering;
    QObject::connect(&answering, &QTimer::timeout, [&] {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        if (!box) return;
        texts.push_back(box->text());
        box->button(QMessageBox::Ok)->click();
    });
    answering.start(5);
    window_->application().console.mnuJumperIn.choose(); // spares the wait for silence
    window_->application().console.mnuverifyport.choose();
    ASSERT_EQ(texts.size(), 3U);
    EXPECT_EQ(texts[0].count(u'\n'), 5);
    EXPECT_FALSE(texts[0].contains(u'\r'));
    EXPECT_EQ(texts[2],
              "Test failed. Check the wiring and verify the comm port and it's settings.");
}

} // namespace
} // namespace pelvan::desktop
