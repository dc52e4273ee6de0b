// Windows: forms bound to them, the frame, and the activation rule.
#include <gtest/gtest.h>

#include <QLineEdit>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenuBar>
#include <QMessageBox>

#include "desktop/mdi_frame.h"
#include "desktop_fixture.h"

namespace pelvan::desktop {
namespace {

class RecordingForm : public Form {
  public:
    RecordingForm(const std::string& name, std::string& log) : Form(name, name + " &1"), log_(log) {
        menu.children = {&entry};
        menus = {&menu};
        set_help_page(name + ".html");
    }
    void Form_Activate() override { log_ += Name() + ";"; }
    bool Form_Unload() override { return may_unload; }

    MenuEntry menu{"mnu" + Name(), "&" + Name()};
    MenuEntry entry{"entry" + Name(), "Entry", "Ctrl+W"};
    bool may_unload = true;

  private:
    std::string& log_;
};

class FrameTest : public testing::WindowTest {
  protected:
    ~FrameTest() override { frame_.reset(); }

    QMdiSubWindow* child(const char* name) {
        return frame_->findChild<QMdiSubWindow*>(QLatin1String(name));
    }
    QMdiArea* area() { return frame_->findChild<QMdiArea*>(); }
    /// Starts as the program does: forms shown first, then the frame.
    void start() {
        frame_->add_child(console_, new QLineEdit);
        frame_->add_child(history_, new QLineEdit);
        console_.Show();
        history_.Show();
        frame_->show();
        frame_->activateWindow();
        testing::run_events();
        log_.clear();
    }
    QStringList menu_titles() {
        QStringList titles;
        for (QAction* action : frame_->menuBar()->actions())
            titles += action->text();
        return titles;
    }

    std::string log_;
    Form frame_form_{"MDIPelvan6", "Pelvan 7"};
    RecordingForm console_{"console", log_};
    RecordingForm history_{"history", log_};
    RecordingForm dialog_{"settings", log_};
    std::unique_ptr<MdiFrame> frame_ = std::make_unique<MdiFrame>(context_, frame_form_);
};

TEST_F(FrameTest, OnlyComingFromAnotherWindowOfTheProgramActivates) {
    frame_->add_child(console_, new QLineEdit);
    frame_->add_child(history_, new QLineEdit);
    console_.Show();
    history_.Show();
    frame_->show();
    frame_->activateWindow();
    testing::run_events();
    EXPECT_EQ(log_, "console;history;") << "each Show once, the frame's appearance none";
    log_.clear();

    area()->setActiveSubWindow(child("console"));
    EXPECT_EQ(log_, "console;");
    area()->setActiveSubWindow(child("history"));
    EXPECT_EQ(log_, "console;history;");
    log_.clear();

    // A dialog of the toolkit, or another program, comes and goes.
    QMessageBox box(frame_.get());
    box.show();
    box.activateWindow();
    testing::run_events();
    box.close();
    frame_->activateWindow();
    testing::run_events();
    EXPECT_EQ(log_, "");
    QWidget other_program;
    other_program.show();
    other_program.activateWindow();
    testing::run_events();
    frame_->activateWindow();
    testing::run_events();
    EXPECT_EQ(log_, "");

    // A window of the program outside the frame: going there and back are activations.
    QWidget settings_window;
    bind(frame_->context(), dialog_, &settings_window);
    dialog_.Show();
    testing::run_events();
    EXPECT_EQ(log_, "settings;");
    frame_->activateWindow();
    testing::run_events();
    settings_window.activateWindow();
    testing::run_events();
    EXPECT_EQ(log_, "settings;history;settings;");
}

TEST_F(FrameTest, ProgramBringsAFormForwardAndRunsItsActivationOnce) {
    start();
    console_.Show();
    testing::run_events();
    EXPECT_EQ(area()->activeSubWindow(), child("console"));
    EXPECT_EQ(log_, "console;");
    EXPECT_EQ(frame_->active_form(), &console_);
    console_.Show();
    EXPECT_EQ(log_, "console;") << "nobody came from anywhere";
    console_.Unload();
    testing::run_events();
    console_.Show();
    EXPECT_EQ(log_, "console;history;console;");
}

TEST_F(FrameTest, ClosingAModalFormActivatesNothing) {
    start();
    QWidget modal(frame_.get(), Qt::Dialog);
    modal.setWindowModality(Qt::WindowModal);
    bind(frame_->context(), dialog_, &modal);
    for (int i = 0; i < 2; ++i) {
        dialog_.Show();
        testing::run_events();
        dialog_.Unload();
        frame_->activateWindow();
        testing::run_events();
    }
    history_.Show();
    EXPECT_EQ(log_, "settings;settings;");
}

TEST_F(FrameTest, ClosingAChildUnloadsItsFormUnlessThatRefuses) {
    start();
    history_.may_unload = false;
    child("history")->close();
    EXPECT_TRUE(child("history")->isVisible());
    history_.may_unload = true;
    child("history")->close();
    EXPECT_FALSE(child("history")->isVisible());
    EXPECT_FALSE(history_.loaded());
    testing::run_events();
    EXPECT_EQ(log_, "console;") << "the person is now in the window that is left";
    history_.Show();
    EXPECT_TRUE(child("history")->isVisible());
}

TEST_F(FrameTest, MenuBarShowsTheActiveChildsMenusAndTheWindowMenu) {
    MenuEntry arrange("mnuArrange", "&Arrange");
    MenuEntry help("mnuHelp", "&Help");
    MenuEntry contents("mnucontents", "Contents");
    help.children = {&contents};
    console_.menus.push_back(&help);
    int arranged = 0;
    arrange.Click = [&] { ++arranged; };
    frame_->add_window_entry(arrange);
    start();
    EXPECT_EQ(menu_titles(), (QStringList{"&history", "&Window"}));
    area()->setActiveSubWindow(child("console"));
    EXPECT_EQ(menu_titles(), (QStringList{"&console", "&Window", "&Help"}));
    auto* window_menu = frame_->findChild<QMenu*>("window_menu");
    window_menu->popup({});
    ASSERT_EQ(window_menu->actions().size(), 4); // entry, separator, two children
    EXPECT_EQ(window_menu->actions()[3]->text(), "history &&1");
    EXPECT_TRUE(window_menu->actions()[2]->isChecked());
    window_menu->actions()[0]->trigger();
    EXPECT_EQ(arranged, 1);
    window_menu->actions()[3]->trigger();
    EXPECT_EQ(area()->activeSubWindow(), child("history"));
    window_menu->close();
    frame_.reset(); // before the entries of this test
}

TEST_F(FrameTest, KeysGoFromChildToChildAndToHelp) {
    start();
    std::string help;
    frame_->show_help = [&](const std::string& page) { help = page; };
    EXPECT_EQ(area()->activeSubWindow(), child("history"));
    int chosen = 0;
    history_.entry.Click = [&] { ++chosen; };
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_W, Qt::ControlModifier);
    EXPECT_EQ(chosen, 1) << "the form's own key, not the window's";
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_F6, Qt::ControlModifier);
    testing::run_events();
    EXPECT_EQ(area()->activeSubWindow(), child("console"));
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_F1);
    EXPECT_EQ(help, "console.html");
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab, Qt::ControlModifier);
    QTest::keyRelease(QApplication::focusWidget(), Qt::Key_Control);
    EXPECT_EQ(area()->activeSubWindow(), child("history"));
}

TEST_F(FrameTest, ClosingTheFrameAsksFirst) {
    start();
    bool may_close = false;
    frame_->before_close = [&] { return may_close; };
    EXPECT_FALSE(frame_->close());
    EXPECT_TRUE(frame_->isVisible());
    may_close = true;
    EXPECT_TRUE(frame_->close());
    EXPECT_FALSE(frame_->isVisible());
}

TEST_F(FrameTest, FormPropertiesReachTheWindow) {
    start();
    const int dots = frame_->logicalDpiX();
    const auto pixels = [dots](int twips) { return twips * dots / 1440; };
    console_.Move({1440, 2880, 8640, 4320});
    const QRect moved(pixels(1440), pixels(2880), pixels(8640), pixels(4320));
    EXPECT_EQ(child("console")->geometry(), moved);
    child("console")->move(0, 0); // by hand
    console_.set_Caption("new");
    EXPECT_EQ(child("console")->windowTitle(), "new");
    EXPECT_EQ(child("console")->pos(), QPoint(0, 0));
    console_.Move({1440, 2880, 8640, 4320}); // arranged again
    EXPECT_EQ(child("console")->geometry(), moved);
    console_.set_Pointer(MousePointer::Hourglass);
    EXPECT_EQ(child("console")->cursor().shape(), Qt::WaitCursor);
    console_.set_Pointer(MousePointer::Normal);
    EXPECT_NE(child("console")->cursor().shape(), Qt::WaitCursor);
    console_.set_State(WindowState::Minimized);
    EXPECT_TRUE(child("console")->isMinimized());
    child("console")->showNormal();
    EXPECT_EQ(console_.State(), WindowState::Normal);
}

} // namespace
} // namespace pelvan::desktop
