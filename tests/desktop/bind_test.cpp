// Both directions of every binding, on a small form; widgets are found by their object names.
#include <gtest/gtest.h>

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QMenu>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollBar>
#include <QSpinBox>
#include <QTableView>
#include <QTimer>
#include <optional>

#include "desktop/bind.h"
#include "desktop/qt_text.h"
#include "desktop_fixture.h"
#include "platform/run_time_error.h"

namespace pelvan::desktop {
namespace {

class BindTest : public testing::WindowTest {
  protected:
    /// Binds a new widget below the window.
    template <class Widget, class Model> Widget* make(Model& model) {
        auto* widget = new Widget(&window_);
        bind(context_, model, widget);
        return widget;
    }
};

TEST_F(BindTest, CommonPropertiesAreMirroredForEveryKind) {
    Label label("Label1", "&Register");
    Frame frame("Frame1", "Frame");
    Button button("cmd_Send", "&Send");
    CheckBox check("chk_Log", "Log");
    TextBox text("txt_Port", "1", "Port <b>number</b>");
    ComboBox combo("ComboRTSMode", {"a", "b"}, 0, false, "mode");
    ScrollBar bar("HScroll1", 0, 10, 0, "moves");
    ProgressBar progress("ProgressBar1", "Done");
    ListBox list("List1", "Lines");
    Grid grid("MSFlexGrid1", "A|B", 3);
    const testing::WidgetsEnd end(window_);
    make<QLabel>(label);
    make<QGroupBox>(frame);
    make<QPushButton>(button);
    make<QCheckBox>(check);
    make<QLineEdit>(text);
    make<QComboBox>(combo);
    make<QScrollBar>(bar);
    make<QProgressBar>(progress);
    make<QListView>(list);
    make<QTableView>(grid);
    window_.show();
    for (Control* control : std::initializer_list<Control*>{
             &label, &frame, &button, &check, &text, &combo, &bar, &progress, &list, &grid}) {
        SCOPED_TRACE(control->Name());
        auto* widget = find<QWidget>(control->Name());
        ASSERT_NE(widget, nullptr);
        EXPECT_TRUE(widget->isVisible());
        control->set_Enabled(false);
        EXPECT_FALSE(widget->isEnabled());
        control->set_Visible(false);
        EXPECT_FALSE(widget->isVisible());
        control->set_Visible(true);
        EXPECT_TRUE(widget->isVisible());
        control->set_ToolTipText("new tip");
        EXPECT_EQ(widget->toolTip(), "new tip");
    }
    EXPECT_EQ(find<QWidget>("cmd_Send")->accessibleName(), "Send");
    EXPECT_EQ(find<QWidget>("HScroll1")->accessibleName(), "new tip");
    label.set_Caption("<b>3</b>");
    EXPECT_EQ(find<QLabel>("Label1")->text(), "<b>3</b>");
    EXPECT_EQ(find<QLabel>("Label1")->textFormat(), Qt::PlainText);
}

TEST_F(BindTest, TextBoxKeepsTheCaretAndEchoesNothing) {
    TextBox box("txt_Command", "12");
    const testing::WidgetsEnd end(window_);
    std::vector<std::string> changes;
    box.Change = [&] { changes.push_back(box.Text() + "@" + std::to_string(box.SelStart())); };
    auto* edit = make<QLineEdit>(box);
    window_.show();
    edit->setCursorPosition(1);
    QTest::keyClicks(edit, "ab");
    EXPECT_EQ(box.Text(), "1ab2");
    EXPECT_EQ(edit->cursorPosition(), 3);
    EXPECT_EQ(changes, (std::vector<std::string>{"1a2@2", "1ab2@3"}));
    box.set_Text("x\xC3\xA9y");
    EXPECT_EQ(edit->text(), QString::fromUtf8("x\xC3\xA9y"));
    EXPECT_EQ(changes.size(), 3U);
    box.select(1, 2); // one letter of two bytes
    EXPECT_EQ(edit->selectedText(), QString::fromUtf8("\xC3\xA9"));
    edit->setSelection(2, 1);
    EXPECT_EQ(box.SelStart(), 3);
    EXPECT_EQ(box.SelLength(), 1);
    box.set_Locked(true);
    EXPECT_TRUE(edit->isReadOnly());
    box.set_Text(std::string("\xFF\x80", 2)); // bytes of a broken reply
    EXPECT_EQ(edit->text().size(), 2);
    const std::string long_text(100000, 'x');
    box.set_Text(long_text);
    EXPECT_EQ(from_qt(edit->text()), long_text);
}

TEST_F(BindTest, TextThatTheHandlerCorrectsIsShownCorrected) {
    TextBox box("txt_Port");
    const testing::WidgetsEnd end(window_);
    box.Change = [&] {
        if (box.Text().size() > 2) box.set_Text("9");
    };
    auto* edit = make<QLineEdit>(box);
    window_.show();
    QTest::keyClicks(edit, "123");
    EXPECT_EQ(edit->text(), "9");
    EXPECT_EQ(box.Text(), "9");
}

TEST_F(BindTest, FocusRaisesGotFocusOnceFromEitherSide) {
    TextBox first("txt_Port(0)", "abc");
    TextBox second("txt_Port(1)", "def");
    const testing::WidgetsEnd end(window_);
    int arrivals = 0;
    second.GotFocus = [&] {
        ++arrivals;
        second.select_all();
    };
    auto* one = make<QLineEdit>(first);
    auto* two = make<QLineEdit>(second);
    show_active();
    one->setFocus();
    second.SetFocus();
    EXPECT_TRUE(two->hasFocus());
    EXPECT_EQ(arrivals, 1);
    second.SetFocus();
    testing::run_events();
    EXPECT_EQ(arrivals, 1);
    one->setFocus();
    two->deselect();
    two->setFocus(Qt::TabFocusReason);
    testing::run_events();
    EXPECT_EQ(arrivals, 2);
    EXPECT_EQ(two->selectedText(), "def");
    two->clearFocus();
    two->setFocus(Qt::ActiveWindowFocusReason);
    testing::run_events();
    EXPECT_EQ(arrivals, 2);
}

TEST_F(BindTest, RunTimeErrorOfAHandlerEndsInTheRunner) {
    Button button("cmd_Send", "Send");
    const testing::WidgetsEnd end(window_);
    button.Click = [] { throw RunTimeError(error_number::kOverflow); };
    make<QPushButton>(button)->click();
    EXPECT_EQ(errors_, std::vector<int>{error_number::kOverflow});
}

TEST_F(BindTest, ButtonsCheckBoxesAndOptions) {
    Button button("cmd_Send", "Send");
    CheckBox check("chk_Log", "Log");
    OptionGroup options("opt_DataFormat", {{"&Decimal", ""}, {"Hex", "tip"}, {"Smart", "", false}},
                        0);
    const testing::WidgetsEnd end(window_);
    int clicks = 0;
    std::vector<int> chosen;
    button.Click = check.Click = [&] { ++clicks; };
    options.Click = [&](int index) { chosen.push_back(index); };
    make<QPushButton>(button)->click();
    auto* box = make<QCheckBox>(check);
    EXPECT_EQ(make_radios(context_, options, &window_).size(), 3U);
    EXPECT_EQ(clicks, 1);
    box->click();
    EXPECT_EQ(check.Value(), 1);
    check.set_Value(2);
    EXPECT_EQ(box->checkState(), Qt::PartiallyChecked);
    box->click();
    EXPECT_EQ(check.Value(), 0);
    EXPECT_EQ(box->checkState(), Qt::Unchecked);
    EXPECT_EQ(clicks, 4);

    auto* decimal = find<QRadioButton>("opt_DataFormat(0)");
    auto* hex = find<QRadioButton>("opt_DataFormat(1)");
    auto* smart = find<QRadioButton>("opt_DataFormat(2)");
    EXPECT_TRUE(decimal->isChecked());
    EXPECT_EQ(decimal->accessibleName(), "Decimal");
    EXPECT_FALSE(smart->isEnabled());
    hex->click();
    EXPECT_EQ(options.Value(), 1);
    options.set_option_enabled(2, true);
    options.set_Value(2);
    EXPECT_TRUE(smart->isEnabled() && smart->isChecked() && !hex->isChecked());
    EXPECT_EQ(chosen, (std::vector<int>{1, 2}));
}

TEST_F(BindTest, ComboBoxListAndTypedText) {
    ComboBox mode("ComboRTSMode", {"Off", "On", "Toggle"}, 1, false);
    ComboBox profile("cmb_Profile", {"1", "2"}, -1, true);
    const testing::WidgetsEnd end(window_);
    std::string events;
    mode.Click = [&] { events += "mode " + mode.Text() + ";"; };
    profile.Click = [&] { events += "click;"; };
    profile.Change = [&] { events += "change " + profile.Text() + ";"; };
    auto* first = make<QComboBox>(mode);
    auto* second = make<QComboBox>(profile);
    window_.show();
    EXPECT_EQ(first->currentText(), "On");
    QTest::keyClick(first, Qt::Key_Down);
    EXPECT_EQ(mode.ListIndex(), 2);
    mode.set_ListIndex(0);
    EXPECT_EQ(first->currentIndex(), 0);
    EXPECT_EQ(second->currentIndex(), -1);
    QTest::keyClicks(second->lineEdit(), "7");
    EXPECT_EQ(profile.Text(), "7");
    QTest::keyClick(second, Qt::Key_Down);
    EXPECT_EQ(profile.ListIndex(), 0);
    EXPECT_EQ(second->currentText(), "1");
    profile.set_items({"8", "9"});
    EXPECT_EQ(second->count(), 2);
    EXPECT_EQ(second->currentText(), "1");
    EXPECT_EQ(events, "mode Toggle;mode Off;change 7;click;");
}

TEST_F(BindTest, BarsMayCountDownwards) {
    ScrollBar bar("HScroll1", 0, -20000, -50);
    ScrollBar spin("VScroll1", 59, 0, 7);
    ProgressBar progress("ProgressBar1");
    const testing::WidgetsEnd end(window_);
    int changes = 0;
    bar.Change = spin.Change = [&] { ++changes; };
    auto* scroll = make<QScrollBar>(bar);
    auto* box = make<QSpinBox>(spin);
    auto* done = make<QProgressBar>(progress);
    EXPECT_EQ(scroll->value(), 50);
    scroll->setValue(20000);
    EXPECT_EQ(bar.Value(), -20000);
    bar.set_Value(-3);
    EXPECT_EQ(scroll->value(), 3);
    box->stepUp();
    EXPECT_EQ(spin.Value(), 8);
    spin.set_Value(59);
    EXPECT_EQ(box->value(), 59);
    EXPECT_EQ(changes, 4);
    progress.set_Max(7);
    progress.set_Value(7);
    EXPECT_EQ(done->value(), done->maximum());
}

TEST_F(BindTest, GridShowsCellsAndTellsThePressedOne) {
    Grid grid("MSFlexGrid1", "Param|Value", 4);
    const testing::WidgetsEnd end(window_);
    grid.set_TextMatrix(2, 1, "42");
    std::string pressed;
    grid.MouseUp = [&](bool left) {
        pressed += std::to_string(grid.Row()) + "," + std::to_string(grid.Col()) +
                   (left ? " left;" : " right;");
    };
    auto* view = make<QTableView>(grid);
    view->resize(400, 300);
    window_.show();
    const QAbstractItemModel& cells = *view->model();
    EXPECT_EQ(cells.rowCount(), 3);
    EXPECT_EQ(cells.headerData(1, Qt::Horizontal).toString(), "Value");
    EXPECT_EQ(cells.index(1, 1).data().toString(), "42");
    std::optional<QModelIndex> changed;
    QObject::connect(&cells, &QAbstractItemModel::dataChanged, view,
                     [&](const QModelIndex& at) { changed = at; });
    grid.set_TextMatrix(3, 0, "x");
    EXPECT_EQ(changed, cells.index(2, 0));
    QTest::mouseClick(view->viewport(), Qt::LeftButton, {},
                      view->visualRect(cells.index(1, 1)).center());
    QTest::mouseClick(view->viewport(), Qt::RightButton, {},
                      view->visualRect(cells.index(2, 0)).center());
    testing::run_events();
    QTest::keyClick(view, Qt::Key_Up);
    EXPECT_EQ(grid.Row(), 2);
    QTest::keyClick(view, Qt::Key_Return);
    testing::run_events();
    EXPECT_EQ(pressed, "2,1 left;3,0 right;2,0 left;");
    grid.set_cell(1, 1);
    EXPECT_EQ(view->currentIndex(), cells.index(0, 1));
}

TEST_F(BindTest, MenusFollowTheirEntries) {
    MenuEntry file("mnuFile", "&File");
    MenuEntry log("Loglistenlist", "&Log to file", "Ctrl+L", "tip");
    MenuEntry more("mnuMore", "More");
    MenuEntry leaf("mnuLeaf", "Leaf");
    const testing::WidgetsEnd end(window_);
    log.make_checkable();
    more.children = {&leaf};
    file.children = {&log, nullptr, &more};
    int clicks = 0;
    log.Click = [&] { ++clicks; };
    leaf.Click = [&] { leaf.set_Checked(true); };
    QMenu* menu = make_menu(context_, file, &window_);
    ASSERT_EQ(menu->actions().size(), 3);
    EXPECT_TRUE(menu->actions()[1]->isSeparator());
    auto* action = find<QAction>("Loglistenlist");
    EXPECT_EQ(action->shortcut(), QKeySequence(Qt::CTRL | Qt::Key_L));
    action->trigger();
    EXPECT_EQ(clicks, 1);
    EXPECT_FALSE(action->isChecked()) << "only the model ticks";
    log.set_Checked(true);
    EXPECT_TRUE(action->isChecked());
    log.set_Enabled(false);
    action->trigger();
    EXPECT_EQ(clicks, 1);
    find<QAction>("mnuLeaf")->trigger();
    EXPECT_TRUE(find<QAction>("mnuLeaf")->isChecked());
    file.set_Visible(false);
    EXPECT_FALSE(menu->menuAction()->isVisible());
}

TEST_F(BindTest, TimerRunsAsTheModelSaysAndNeverInsideItself) {
    Timer model("Timer1");
    const testing::WidgetsEnd end(window_);
    QTimer* timer = bind(context_, model);
    model.start();
    EXPECT_FALSE(timer->isActive()) << "interval 0";
    model.set_Interval(3600000);
    EXPECT_TRUE(timer->isActive());
    int ticks = 0;
    const auto due = [timer] { QMetaObject::invokeMethod(timer, "timeout"); };
    model.Tick = [&] {
        if (++ticks == 1) due(); // as a dialog's event loop would
    };
    due();
    due();
    EXPECT_EQ(ticks, 2);
    model.stop();
    EXPECT_FALSE(timer->isActive());
}

TEST_F(BindTest, KeysAndLabels) {
    TextBox box("txt_Command");
    const testing::WidgetsEnd end(window_);
    auto* edit = make<QLineEdit>(box);
    auto* label = new QLabel("&Command:", &window_);
    set_label(label, edit);
    EXPECT_EQ(edit->accessibleName(), "Command:");
    std::string pressed;
    on_key(context_, edit, Qt::Key_Up, [&] { pressed += "up"; });
    QTest::keyClick(edit, Qt::Key_Up);
    QTest::keyClick(edit, Qt::Key_Down);
    EXPECT_EQ(pressed, "up");
}

TEST_F(BindTest, WidgetThatIsGoneIsToldNothing) {
    TextBox box("txt_Command");
    OptionGroup options("opt_A", {{"a", ""}, {"b", ""}});
    const testing::WidgetsEnd end(window_);
    delete make<QLineEdit>(box);
    for (QRadioButton* radio : make_radios(context_, options, &window_))
        delete radio;
    box.set_Text("still here");
    options.set_Value(1);
    EXPECT_EQ(box.Text(), "still here");
}

} // namespace
} // namespace pelvan::desktop
