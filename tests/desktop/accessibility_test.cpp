// Every window by keyboard alone and by ear: its controls have names, Tab reaches them, and no
// access key stands for two things.
#include <QAccessible>

#include "desktop/charts/trend_library.h"
#include "desktop/system/help_window.h"
#include "desktop/windows/profile_window.h"
#include "desktop_fixture.h"
#include "support/simulated_program.h"

namespace pelvan::desktop::testing {
namespace {

std::string described(const QWidget& widget) {
    return std::string(widget.metaObject()->className()) + " \"" +
           widget.objectName().toStdString() + "\"";
}

/// Whether the widget is one that a person uses; parts of others count with those.
bool is_control(const QWidget& widget) {
    const QWidget* parent = widget.parentWidget();
    if (widget.focusProxy() || widget.inherits("QToolBarExtension")) return false;
    if (qobject_cast<const QComboBox*>(parent) || qobject_cast<const QHeaderView*>(&widget) ||
        qobject_cast<const QLineEdit*>(parent) ||
        parent->objectName().startsWith("qt_scrollarea") ||
        qobject_cast<const QAbstractItemView*>(parent) || qobject_cast<const QTabBar*>(parent))
        return false;
    return (widget.focusPolicy() & Qt::TabFocus) || qobject_cast<const QAbstractButton*>(&widget) ||
           qobject_cast<const QLineEdit*>(&widget) || qobject_cast<const QComboBox*>(&widget) ||
           qobject_cast<const QAbstractItemView*>(&widget) ||
           qobject_cast<const QAbstractSlider*>(&widget) ||
           qobject_cast<const QTextBrowser*>(&widget) || qobject_cast<const QProgressBar*>(&widget);
}

/// What is reached by other keys than Tab, or only shows something.
bool needs_no_tab(const QWidget& widget) {
    if (!widget.isEnabled() || qobject_cast<const QProgressBar*>(&widget)) return true;
    // The arrow keys lead from one to the other; entries of menus; what goes with its list; what
    // the keys of the list or of a bar beside it do.
    return qobject_cast<const QRadioButton*>(&widget) ||
           qobject_cast<const QToolBar*>(widget.parentWidget()) ||
           widget.objectName().endsWith("Times") || widget.objectName() == "hscrl_List" ||
           widget.objectName().startsWith("txt_LoggingInterval");
}

std::vector<QWidget*> controls_of(const QWidget& window) {
    std::vector<QWidget*> out;
    for (QWidget* widget : window.findChildren<QWidget*>())
        if (widget->isVisibleTo(&window) && is_control(*widget)) out.push_back(widget);
    return out;
}

void expect_names(const QWidget& window) {
    for (QWidget* widget : controls_of(window)) {
        const QAccessibleInterface* spoken = QAccessible::queryAccessibleInterface(widget);
        EXPECT_TRUE(spoken && !spoken->text(QAccessible::Name).isEmpty())
            << described(*widget) << " has no name";
    }
}

void expect_tab_reaches(QWidget& window) {
    std::set<const QWidget*> reached;
    for (int presses = 0; presses < 150 && QApplication::focusWidget(); ++presses) {
        reached.insert(QApplication::focusWidget());
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    }
    for (const QWidget* widget : controls_of(window))
        EXPECT_TRUE(reached.contains(widget) || needs_no_tab(*widget))
            << described(*widget) << " is out of Tab's reach";
}

void add_key(const QString& text, const std::string& where, std::map<QString, std::string>& keys) {
    const QString key = QKeySequence::mnemonic(text).toString();
    if (key.isEmpty()) return;
    EXPECT_FALSE(keys.contains(key)) << key.toStdString() << " of \"" << text.toStdString()
                                     << "\" in " << where << " and of " << keys[key];
    keys[key] = "\"" + text.toStdString() + "\"";
}

void expect_keys_once(const QWidget& window, const QMenuBar* bar) {
    std::map<QString, std::string> keys;
    if (bar)
        for (const QAction* menu : bar->actions())
            add_key(menu->text(), "the menu bar", keys);
    for (const QWidget* widget : window.findChildren<QWidget*>()) {
        if (!widget->isVisibleTo(&window)) continue;
        const auto* label = qobject_cast<const QLabel*>(widget);
        if (qobject_cast<const QAbstractButton*>(widget) || (label && label->buddy()))
            add_key(widget->property("text").toString(), described(*widget), keys);
        add_key(widget->property("title").toString(), described(*widget), keys);
        if (const auto* tabs = qobject_cast<const QTabBar*>(widget))
            for (int i = 0; i < tabs->count(); ++i)
                add_key(tabs->tabText(i), described(*widget), keys);
    }
}

void expect_keys_once_in(const QMenu& menu) {
    std::map<QString, std::string> keys;
    for (const QAction* action : menu.actions()) {
        add_key(action->text(), menu.title().toStdString(), keys);
        if (action->menu()) expect_keys_once_in(*action->menu());
    }
}

void expect_accessible(QWidget& window, const std::string& name, const QMenuBar* bar = nullptr) {
    SCOPED_TRACE(name);
    run_events();
    expect_names(window);
    expect_tab_reaches(window);
    expect_keys_once(window, bar);
    if (!bar) return;
    for (const QAction* menu : bar->actions())
        expect_keys_once_in(*menu->menu());
}

class AccessibilityTest : public ProgramTest {
  protected:
    AccessibilityTest() { open({"simulated:742", "simulated:742"}); }
    void walk(Form& form) {
        form.Show();
        run_events();
        auto* area = main_->frame().findChild<QMdiArea*>();
        expect_accessible(*area->activeSubWindow(), form.Name(), main_->frame().menuBar());
    }
};

TEST_F(AccessibilityTest, OfEveryChildWindow) {
    for (Form* form :
         std::initializer_list<Form*>{&app().history.frmCommand, &app().history.frmResponse,
                                      &app().listen, &app().logging, &app().scan})
        walk(*form);
    for (int protocol = 0; protocol < 4; ++protocol) {
        walk(app().bad_requests);
        app().bad_requests.cmb_Protocol.set_ListIndex(protocol);
    }
    app().transfer.Show();
    app().transfer.lbl_File.set_Caption("Saved in");
    for (Control* control : std::initializer_list<Control*>{
             &app().transfer.lbl_File, &app().transfer.txt_File, &app().transfer.cmdOpenFolder})
        control->set_Visible(true); // as behind a transfer
    walk(app().transfer);
    for (int protocol = 0; protocol < 4; ++protocol) {
        app().console.opt_Protocol.set_Value(protocol);
        walk(app().console);
    }
    auto* tabs = find<QTabWidget>("tabs");
    app().listen.Show();
    for (int i = 1; i < tabs->count(); ++i) {
        tabs->setCurrentIndex(i);
        tabs->setFocus();
        walk(app().listen);
    }
}

TEST_F(AccessibilityTest, OfAllOfAWindowOnASmallScreen) {
    const QSize small(960, 540);
    main_->frame().showNormal();
    main_->frame().resize(small);
    run_events();
    const auto* area = main_->frame().findChild<QMdiArea*>();
    for (Form* form : std::initializer_list<Form*>{
             &app().console, &app().history.frmCommand, &app().history.frmResponse, &app().listen,
             &app().transfer, &app().logging, &app().scan, &app().bad_requests}) {
        form->Show();
        run_events();
        const QMdiSubWindow* window = area->activeSubWindow();
        const QRect room = area->viewport()->rect();
        EXPECT_TRUE(room.contains(window->geometry())) << form->Name();
    }
    for (Form* form : std::initializer_list<Form*>{&app().comms_settings, &app().serial_devices}) {
        form->Show();
        const QSize size = find(form->Name().c_str())->size();
        EXPECT_EQ(size.boundedTo(small), size) << form->Name();
        form->Unload();
    }
}

TEST_F(AccessibilityTest, OfTheSettings) {
    for (Form* form : std::initializer_list<Form*>{&app().comms_settings, &app().serial_devices}) {
        form->Show();
        QWidget* window = find(form->Name().c_str());
        window->activateWindow();
        expect_accessible(*window, form->Name());
        form->Unload();
        run_events();
    }
}

TEST_F(AccessibilityTest, OfHelpAndTrend) {
    HelpWindow help(QString::fromStdString(dir_.path()));
    const TrendWindow trend = make_trend_window(PELVAN_PROGRAM_DIRECTORY,
                                                app().logging.logger().trend(), &main_->frame());
    ASSERT_NE(trend.window, nullptr) << trend.error.toStdString();
    for (QWidget* window : {static_cast<QWidget*>(&help), trend.window}) {
        window->show();
        window->activateWindow();
        expect_accessible(*window, window->windowTitle().toStdString());
    }
}

class ProfileAccessibilityTest : public WindowTest, protected pelvan::testing::SimulatedProgram {
  protected:
    ProfileAccessibilityTest() : SimulatedProgram({"simulated:742", "simulated:742"}, 1) {}
};

TEST_F(ProfileAccessibilityTest, OfTheProfiles) {
    std::filesystem::copy(std::string(PELVAN_SAMPLES) + "/Download Sequences",
                          dir.file("Download Sequences"));
    PersonalSettings personal;
    WindowPlaces places(personal);
    MdiFrame frame(context_, app.frame, desktop, places);
    frame.show();
    frame.activateWindow();
    app.profile_logic.Show();
    add_profile_window(PELVAN_PROGRAM_DIRECTORY, app.profile_logic, dialogs, frame);
    frame.findChild<QAction*>("mnuProfileNew")->trigger();
    run_events();
    for (int side = 0; side < 2; ++side) {
        frame.findChild<QTabWidget*>("profile_sides")->setCurrentIndex(side);
        expect_accessible(*frame.findChild<QMdiSubWindow*>(), "profiles", frame.menuBar());
    }
}

} // namespace
} // namespace pelvan::desktop::testing
