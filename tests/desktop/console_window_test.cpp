// The console as a technician sees it: Enter sends, and the fields fit the flat window.
#include "desktop_fixture.h"

namespace pelvan::desktop {
namespace {

class ConsoleWindowTest : public testing::ProgramTest {
  protected:
    ConsoleWindowTest() { open(std::vector<std::string>(4, "simulated:742"), 0); }
    void choose_protocol(int number) {
        app().console.opt_Protocol.set_Value(number);
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
};

TEST_F(ConsoleWindowTest, ShowsTheFieldsOfTheChosenProtocolAlone) {
    const std::vector<std::vector<const char*>> fields{
        {"Fram_CommsCommand", "txt_DeviceAddress", "txt_CommsCommand"},
        {"Fram_Modbus", "txt_Values", "fram_DataFormat"},
        {"Fram_CommsCommand", "txt_CommsCommand"},
        {"Fram_Tellura", "TxtParameterAddress", "TxtNoBytes", "TxtData", "OptReadWrite(1)",
         "OptErrorChecking(1)"}};
    for (int number = 0; number < 4; ++number) {
        choose_protocol(number);
        for (const char* name : fields[static_cast<std::size_t>(number)])
            EXPECT_TRUE(fits(name)) << number << " " << name;
        EXPECT_TRUE(fits("cmd_SendCommand") && fits("lbl_Status"));
        EXPECT_EQ(find("txt_DeviceAddress")->isVisible(), number == 0);
        EXPECT_EQ(find("Fram_CommsCommand")->isVisible(), number % 2 == 0);
        EXPECT_EQ(find("Fram_Modbus")->isVisible(), number == 1);
    }
}

TEST_F(ConsoleWindowTest, EnterSendsFromEveryControlOfACommand) {
    EXPECT_TRUE(find("txt_CommsCommand")->hasFocus());
    choose_protocol(1);
    const ListBox& replies = app().history.frmResponse.list;
    for (const char* name : {"txt_Register", "cmb_CommandType", "opt_DataFormat(2)"}) {
        const int before = replies.ListCount();
        QTest::keyClick(find(name), Qt::Key_Enter, Qt::KeypadModifier);
        EXPECT_EQ(replies.ListCount(), before + 1) << name;
    }
}

} // namespace
} // namespace pelvan::desktop
