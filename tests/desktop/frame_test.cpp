// Windows: forms bound to them, the frame, and the activation rule.
#include "desktop/windows/mdi_frame.h"

#include <QScreen>

#include "desktop/system/place_keeper.h"
#include "desktop_fixture.h"
#include "support/fake_dialogs.h"

namespace pelvan::desktop {
namespace {

struct RecordingForm : Form {
    RecordingForm(const std::string& name, std::string& activations)
        : Form(name, name + " &1"), log(activations) {
        menu.children = {&entry};
        menus = {&menu};
    }
    void Form_Activate() override { log += Name() + ";"; }
    bool Form_Unload() override { return may_unload; }
    bool closes_by_key() const override { return Name() != "console"; }

    std::string& log;
    MenuEntry menu{"mnu" + Name(), "&" + Name()};
    MenuEntry entry{"entry" + Name(), "Entry", "Ctrl+W"};
    bool may_unload = true;
};

struct FrameForm : Form {
    using Form::Form;
    bool Form_Unload() override { return may_unload; }
    bool may_unload = true;
};

class FrameTest : public testing::WindowTest {
  protected:
    /// Starts as the program does: forms shown first, then the frame.
    FrameTest() {
        for (Form* form : {&console_, &history_}) {
            frame_->add_child(*form, new QLineEdit);
            form->Show();
        }
        come_to(*frame_);
    }
    ~FrameTest() override { frame_.reset(); }

    QMdiSubWindow* child(const Form& form) {
        return frame_->findChild<QMdiSubWindow*>(to_qt(form.Name()));
    }
    QMdiArea* area() { return frame_->findChild<QMdiArea*>(); }
    static void come_to(QWidget& window) {
        window.show();
        window.activateWindow();
        testing::run_events();
    }
    std::string taken_log() { return std::exchange(log_, {}); }

    std::string log_;
    FrameForm frame_form_{"MDIPelvan6", "Pelvan 7"};
    pelvan::testing::FakeDesktop services_;
    RecordingForm console_{"console", log_};
    RecordingForm history_{"history", log_};
    RecordingForm dialog_{"settings", log_};
    PersonalSettings personal_;
    WindowPlaces places_{personal_};
    std::unique_ptr<MdiFrame> frame_ =
        std::make_unique<MdiFrame>(context_, frame_form_, services_, places_);
};

TEST_F(FrameTest, OnlyComingFromAnotherWindowOfTheProgramActivates) {
    EXPECT_EQ(taken_log(), "console;history;") << "each Show once, the frame's appearance none";
    area()->setActiveSubWindow(child(console_));
    area()->setActiveSubWindow(child(history_));
    console_.Show();
    testing::run_events();
    EXPECT_EQ(area()->activeSubWindow(), child(console_));
    EXPECT_EQ(taken_log(), "console;history;console;") << "once by whomever it is brought forward";
    console_.Show();
    EXPECT_EQ(taken_log(), "") << "nobody came from anywhere";

    QWidget other; // another program, or a dialog of the toolkit
    come_to(other);
    come_to(*frame_);
    EXPECT_EQ(taken_log(), "");

    // A window of the program outside the frame: going there and back are activations.
    QWidget settings_window;
    bind(frame_->context(), dialog_, &settings_window);
    dialog_.Show();
    testing::run_events();
    EXPECT_EQ(taken_log(), "settings;");
    come_to(*frame_);
    come_to(settings_window);
    EXPECT_EQ(taken_log(), "console;settings;");
}

TEST_F(FrameTest, ClosingAModalFormActivatesNothing) {
    taken_log();
    QWidget modal(frame_.get(), Qt::Dialog);
    modal.setWindowModality(Qt::WindowModal);
    bind(frame_->context(), dialog_, &modal);
    for (int i = 0; i < 2; ++i) {
        dialog_.Show();
        testing::run_events();
        dialog_.Unload();
        come_to(*frame_);
    }
    history_.Show();
    EXPECT_EQ(taken_log(), "settings;settings;");
}

TEST_F(FrameTest, ClosingUnloadsUnlessThatIsRefused) {
    taken_log();
    for (const bool may : {false, true}) {
        history_.may_unload = may;
        child(history_)->close();
        EXPECT_EQ(child(history_)->isVisible(), !may);
        EXPECT_EQ(history_.loaded(), !may);
    }
    testing::run_events();
    EXPECT_EQ(taken_log(), "console;") << "the person is now in the window that is left";
    history_.Show();
    EXPECT_TRUE(child(history_)->isVisible());
    EXPECT_EQ(taken_log(), "history;");
    for (const bool may : {false, true}) {
        frame_form_.Load();
        frame_form_.may_unload = may;
        EXPECT_EQ(frame_->close(), may);
        EXPECT_EQ(frame_->isVisible(), !may);
    }
}

TEST_F(FrameTest, MenusAndKeysFollowTheActiveChild) {
    MenuEntry arrange("mnuArrange", "&Arrange");
    frame_->add_window_entry(arrange);
    EXPECT_EQ(frame_->menuBar()->actions().at(0)->text(), "&history");
    int chosen = 0;
    history_.entry.Click = [&] { ++chosen; };
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_W, Qt::ControlModifier);
    EXPECT_EQ(chosen, 1) << "the form's own key, not the window's";
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_F6, Qt::ControlModifier);
    testing::run_events();
    EXPECT_EQ(area()->activeSubWindow(), child(console_));
    EXPECT_EQ(frame_->menuBar()->actions().at(0)->text(), "&console");
    auto* window_menu = frame_->findChild<QMenu*>("window_menu");
    window_menu->popup({});
    ASSERT_EQ(window_menu->actions().size(), 4); // entry, separator, two children
    EXPECT_TRUE(window_menu->actions()[2]->isChecked());
    EXPECT_EQ(window_menu->actions()[3]->text(), "history &&1");
    window_menu->actions()[3]->trigger();
    EXPECT_EQ(area()->activeSubWindow(), child(history_));
    window_menu->close();
    for (RecordingForm* form : {&history_, &console_}) {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_F4, Qt::ControlModifier);
        testing::run_events();
        EXPECT_EQ(form->loaded(), !form->closes_by_key());
    }
    frame_.reset(); // before the entry of this test
}

TEST_F(FrameTest, MenusStayWhileABoxIsOpenAndNoWindowIsListedTwice) {
    MenuEntry arrange("mnuArrange", "&Arrange");
    MenuEntry show("mnuShow", "&history && 1"); // its title is "history &1"
    history_.set_Caption("history & 1");
    frame_->add_window_entry(arrange);
    frame_->add_window_entry(show);
    {
        QDialog box(frame_.get());
        come_to(box);
        EXPECT_EQ(frame_->menuBar()->actions().at(0)->text(), "&history");
    }
    frame_->findChild<QMenu*>("window_menu")->popup({});
    QStringList texts;
    for (const QAction* action : frame_->findChild<QMenu*>("window_menu")->actions())
        texts += action->text();
    EXPECT_EQ(texts, (QStringList{"&Arrange", "&history && 1", "", "console &&1"}));
    frame_.reset(); // before the entries of this test
}

TEST_F(FrameTest, AWindowComesBackWhereItWasAndStaysInsideTheFrame) {
    frame_->resize(900, 600);
    testing::run_events();
    const QRect room = area()->viewport()->rect();
    console_.Move({20000, 20000, 3000, 3000}); // twips, beyond the frame
    EXPECT_TRUE(room.contains(child(console_)->geometry()));
    EXPECT_TRUE(frame_->stand_as_put({&console_, &history_}));
    child(console_)->setGeometry(50, 60, 300, 200); // by hand
    EXPECT_FALSE(frame_->stand_as_put({&console_, &history_}));
    console_.Unload();
    console_.Move({0, 0, 4000, 4000});
    EXPECT_EQ(child(console_)->geometry(), QRect(50, 60, 300, 200));
    frame_->forget_places({&console_});
    console_.Move({0, 0, 4500, 4500});
    EXPECT_EQ(child(console_)->pos(), QPoint());
    EXPECT_EQ(places_.of("console"), std::nullopt);
    child(console_)->setGeometry(50, 60, 300, 200);
    console_.Show();
    frame_.reset(); // the program ends
    EXPECT_EQ(places_.of("console"), (WindowPlace{50, 60, 300, 200}));
}

TEST_F(FrameTest, AWindowOfALargerScreenFitsWithItsTitleBar) {
    const QRect screen = frame_->screen()->availableGeometry();
    places_.keep("trend", {0, 0, screen.width(), screen.height(), false});
    QWidget window;
    keep_place_on_screen(&window, "trend", places_);
    EXPECT_LT(window.height(), screen.height() - 20);
}

TEST_F(FrameTest, AFileIsTakenByTheWindowsThatKnowWhatToDoWithIt) {
    std::string taken;
    dialog_.FileDropped = [&](const std::string& path) { taken = path; };
    frame_->add_child(dialog_, new QLabel);
    dialog_.Show();
    QMimeData one;
    one.setUrls({QUrl::fromLocalFile("/a b.txt")});
    QMimeData two;
    two.setUrls({QUrl::fromLocalFile("/a"), QUrl::fromLocalFile("/b")});
    const auto dropped_on = [&](const Form& form, const QMimeData& data) {
        QDragEnterEvent enter({1, 1}, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        enter.ignore();
        QCoreApplication::sendEvent(child(form), &enter);
        QDropEvent drop({1, 1}, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(child(form), &drop);
        testing::run_events();
        return enter.isAccepted();
    };
    EXPECT_FALSE(dropped_on(dialog_, two));
    EXPECT_FALSE(child(console_)->acceptDrops());
    EXPECT_EQ(taken, "");
    EXPECT_TRUE(dropped_on(dialog_, one));
    EXPECT_EQ(taken, "/a b.txt");
}

TEST_F(FrameTest, FormIsMovedOnlyWhenTheProgramMovesIt) {
    frame_->resize(1200, 900); // room for it
    testing::run_events();
    const auto pixels = [this](int twips) { return twips * frame_->logicalDpiX() / 1440; };
    for (int i = 0; i < 2; ++i) {
        console_.Move({1440, 2880, 8640, 4320});
        EXPECT_EQ(child(console_)->geometry(),
                  QRect(pixels(1440), pixels(2880), pixels(8640), pixels(4320)));
        child(console_)->move(0, 0); // by hand
        console_.set_Caption("new");
        EXPECT_EQ(child(console_)->pos(), QPoint(0, 0));
    }
}

} // namespace
} // namespace pelvan::desktop
