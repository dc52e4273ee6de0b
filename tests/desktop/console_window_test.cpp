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

TEST_F(ConsoleWindowTest, AWindowHasTheFocusItHadWheneverOneComesBack) {
    choose_protocol(1);
    const auto show = [this](const char* entry) {
        for (MenuEntry* each : app().frame.mnuWindow.children)
            if (each != nullptr && each->Name() == entry) each->choose();
        testing::run_events();
    };
    auto* values = find<QLineEdit>("txt_Values");
    values->setFocus(Qt::TabFocusReason);
    testing::run_events();
    for (const bool maximized : {false, true}) {
        if (maximized) app().history.frmResponse.set_State(WindowState::Maximized);
        show("mnuShowResponse");
        EXPECT_TRUE(find("lst_CommsResponse")->hasFocus());
        show(maximized ? "mnuArrange" : "mnuShowConsole");
        EXPECT_TRUE(values->hasFocus()) << maximized;
    }
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Up);
    EXPECT_EQ(app().console.opt_Protocol.Value(), 1);
    EXPECT_TRUE(values->hasFocus());
    find("opt_Protocol(0)")->setFocus(Qt::ShortcutFocusReason);
    testing::run_events();
    EXPECT_TRUE(find("opt_Protocol(1)")->hasFocus()) << "the one that is chosen";
}

TEST_F(ConsoleWindowTest, TabStopsOnceInAGroupAtWhatIsChosen) {
    choose_protocol(1);
    app().console.modbus.opt_DataFormat.set_Value(2);
    QStringList stops;
    for (QWidget* at = find("txt_Values"); stops.size() < 40; at = at->nextInFocusChain())
        if (qobject_cast<QRadioButton*>(at) != nullptr && at->isVisible() &&
            (at->focusPolicy() & Qt::TabFocus) != 0 && !stops.contains(at->objectName()))
            stops << at->objectName();
        else if (at->nextInFocusChain() == find("txt_Values"))
            break;
    stops.sort();
    EXPECT_EQ(stops.join(u' ').toStdString(),
              "opt_DataFormat(2) opt_NumberBase(0) opt_Protocol(1)");
    EXPECT_NE(find("opt_DataFormat(0)")->accessibleName(),
              find("opt_NumberBase(0)")->accessibleName());
}

TEST_F(ConsoleWindowTest, TheBarOfAHistoryAndItsListAgreeBothWays) {
    HistoryForm& form = app().history.frmResponse;
    auto* view = find<QListView>("lst_CommsResponse");
    EXPECT_FALSE(form.hscrl_List.Enabled());
    app().history.add({"", "ask", "", std::string(1900, 'W')});
    testing::run_events();
    QScrollBar* own = view->horizontalScrollBar();
    auto* bar =
        view->window()->findChild<QWidget*>("frmResponse")->findChild<QScrollBar*>("hscrl_List");
    ASSERT_GT(own->maximum(), 10000);
    EXPECT_EQ(bar->maximum(), 20000);
    bar->setValue(20000);
    EXPECT_EQ(own->value(), own->maximum());
    QTest::keyClick(view, Qt::Key_Left);
    EXPECT_LT(own->value(), own->maximum());
    EXPECT_LT(bar->value(), 20000);
    own->setValue(0);
    EXPECT_EQ(form.hscrl_List.Value(), 0);
    own->setValue(own->maximum());
    app().history.add({"", "ask", "", std::string(1900, 'W') + "WW"});
    testing::run_events();
    EXPECT_LT(own->value(), own->maximum());
    EXPECT_EQ(form.scrolled_pixels(own->maximum()), own->value()) << "the reach has grown";
}

} // namespace
} // namespace pelvan::desktop
