// Both directions of every binding, on a small form; widgets are found by their object names.
#include "desktop_fixture.h"

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

TEST_F(BindTest, TextBoxKeepsTheCaretAndEchoesNothing) {
    TextBox box("txt_Command", "12");
    std::string changes;
    box.Change = [&] {
        changes += box.Text() + ";";
        if (box.Text() == "1abc2") box.set_Text("9"); // as a handler that corrects
    };
    auto* edit = make<QLineEdit>(box);
    edit->setCursorPosition(1);
    QTest::keyClicks(edit, "ab");
    EXPECT_EQ(edit->cursorPosition(), 3);
    QTest::keyClicks(edit, "c");
    EXPECT_EQ(edit->text(), "9");
    EXPECT_EQ(changes, "1a2;1ab2;1abc2;9;");
    EXPECT_EQ(edit->cursorPosition(), 0);
    box.set_Text("x\xC3\xA9y");
    box.select_all();
    EXPECT_EQ(edit->selectedText(), QString::fromUtf8("x\xC3\xA9y"));
    box.set_Text("\xFF\x80" + std::string(100000, 'x')); // bytes of a broken reply
    EXPECT_EQ(edit->text().size(), 100002);
    delete edit;
    box.set_Text("a widget that is gone is told nothing");
    box.select_all();
    box.SetFocus();
}

TEST_F(BindTest, FocusRaisesGotFocusOnceFromEitherSide) {
    TextBox first("txt_Port(0)", "abc");
    TextBox second("txt_Port(1)", "def");
    const testing::WidgetsEnd end{window_};
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
    second.SetFocus();
    testing::run_events();
    EXPECT_TRUE(two->hasFocus());
    EXPECT_EQ(arrivals, 1);
    for (const Qt::FocusReason reason : {Qt::TabFocusReason, Qt::ActiveWindowFocusReason}) {
        one->setFocus();
        two->deselect();
        two->setFocus(reason);
        testing::run_events();
        EXPECT_EQ(two->hasSelectedText(), reason == Qt::TabFocusReason);
        EXPECT_EQ(arrivals, 2) << "none when it is back from another program";
    }
}

TEST_F(BindTest, KeyDownIsToldPlainKeysAndKeepsThoseItHandles) {
    TextBox box("txt_Command", "12");
    const testing::WidgetsEnd end{window_};
    std::vector<Key> told;
    box.KeyDown = [&](Key key) {
        told.push_back(key);
        return told.size() > 1;
    };
    auto* edit = make<QLineEdit>(box);
    int returns = 0;
    QObject::connect(edit, &QLineEdit::returnPressed, edit, [&] { ++returns; });
    QTest::keyClick(edit, Qt::Key_Return);
    QTest::keyClick(edit, Qt::Key_Enter, Qt::KeypadModifier);
    QTest::keyClick(edit, Qt::Key_Up, Qt::ShiftModifier);
    QTest::keyClick(edit, Qt::Key_Down);
    QTest::keyClick(edit, Qt::Key_Home);
    EXPECT_EQ(told, (std::vector{Key::Enter, Key::Enter, Key::Down}));
    EXPECT_EQ(returns, 1);
    EXPECT_EQ(edit->cursorPosition(), 0);
}

TEST_F(BindTest, ALabelPaintsItselfAtOnceWhenItIsAskedTo) {
    struct Painted : QLabel {
        using QLabel::QLabel;
        void paintEvent(QPaintEvent*) override { shown = text(); }
        QString shown;
    };
    Label label("lbl_Status");
    const testing::WidgetsEnd end{window_};
    auto* widget = make<Painted>(label);
    show_active();
    label.set_Caption("Sending ...");
    label.Refresh();
    EXPECT_EQ(widget->shown, "Sending ...");
}

TEST_F(BindTest, LabelsButtonsCheckBoxesAndOptions) {
    Label label("Label1", "<b>3</b>");
    Button button("cmd_Send", "&Send");
    CheckBox check("chk_Log", "Log");
    OptionGroup options("opt_DataFormat", {{"&Decimal", ""}, {"Hex", "tip"}, {"Smart", "", false}});
    const testing::WidgetsEnd end{window_};
    EXPECT_EQ(make<QLabel>(label)->textFormat(), Qt::PlainText);
    std::string events;
    button.Click = [] { throw RunTimeError(error_number::kOverflow); };
    check.Click = [&] { events += "check " + std::to_string(check.Value()) + ";"; };
    options.Click = [&](int index) { events += "option " + std::to_string(index) + ";"; };
    make<QPushButton>(button)->click();
    EXPECT_EQ(errors_, std::vector<int>{error_number::kOverflow});
    EXPECT_EQ(find<QWidget>("cmd_Send")->accessibleName(), "Send");
    auto* box = make<QCheckBox>(check);
    box->click();
    check.set_Value(2);
    EXPECT_EQ(box->checkState(), Qt::PartiallyChecked);
    box->click();
    const auto radios = make_radios(context_, options, &window_);
    EXPECT_FALSE(radios[2]->isEnabled());
    find<QRadioButton>("opt_DataFormat(1)")->click();
    options.set_Value(2);
    EXPECT_TRUE(radios[2]->isChecked());
    EXPECT_EQ(events, "check 1;check 2;check 0;option 1;option 2;");
}

TEST_F(BindTest, ComboBoxListAndTypedText) {
    ComboBox profile("cmb_Profile", {"1", "2"}, -1, true);
    const testing::WidgetsEnd end{window_};
    std::string events;
    profile.Click = [&] { events += "click " + profile.Text() + ";"; };
    profile.Change = [&] { events += "change " + profile.Text() + ";"; };
    auto* combo = make<QComboBox>(profile);
    window_.show();
    QTest::keyClicks(combo->lineEdit(), "7");
    QTest::keyClick(combo, Qt::Key_Down);
    profile.set_ListIndex(1);
    EXPECT_EQ(combo->currentIndex(), 1);
    profile.set_items({"8", "9", "10"});
    EXPECT_EQ(combo->currentText(), "2");
    EXPECT_EQ(events, "change 7;click 1;click 2;");
}

TEST_F(BindTest, BarsMayCountDownwards) {
    ScrollBar bar("HScroll1", 0, -20000, -50);
    const testing::WidgetsEnd end{window_};
    auto* scroll = make<QScrollBar>(bar);
    EXPECT_EQ(scroll->value(), 50);
    scroll->setValue(20000);
    EXPECT_EQ(bar.Value(), -20000);
}

TEST_F(BindTest, GridTellsThePressedCell) {
    Grid grid("MSFlexGrid1", "Param|Value", 4);
    const testing::WidgetsEnd end{window_};
    std::string pressed;
    grid.MouseUp = [&](bool left) {
        pressed += std::to_string(grid.Row()) + "," + std::to_string(grid.Col()) +
                   (left ? " left;" : " right;");
    };
    auto* view = make<QTableView>(grid);
    view->resize(400, 300);
    window_.show();
    for (const auto& [button, row] : {std::pair{Qt::LeftButton, 1}, {Qt::RightButton, 2}}) {
        const QRect place = view->visualRect(view->model()->index(row, 1));
        QTest::mouseClick(view->viewport(), button, {}, place.center());
    }
    testing::run_events();
    QTest::keyClick(view, Qt::Key_Up);
    QTest::keyClick(view, Qt::Key_Return);
    testing::run_events();
    EXPECT_EQ(pressed, "2,1 left;3,1 right;2,1 left;");
}

TEST_F(BindTest, OnlyTheModelTicksAMenuEntry) {
    MenuEntry log("Loglistenlist", "&Log to file");
    QAction action;
    log.make_checkable();
    int clicks = 0;
    log.Click = [&] { ++clicks; };
    bind(context_, log, &action);
    action.trigger();
    EXPECT_FALSE(action.isChecked());
    log.set_Enabled(false);
    action.trigger();
    EXPECT_EQ(clicks, 1);
}

TEST_F(BindTest, TimerNeverRunsInsideItself) {
    Timer model("Timer1");
    const testing::WidgetsEnd end{window_};
    QTimer* timer = bind(context_, model);
    int ticks = 0;
    const auto due = [timer] { QMetaObject::invokeMethod(timer, "timeout"); };
    model.Tick = [&] {
        if (++ticks == 1) due(); // as a dialog's event loop would
    };
    due();
    due();
    EXPECT_EQ(ticks, 2);
}

} // namespace
} // namespace pelvan::desktop
