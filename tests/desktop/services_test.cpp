// Dialogs, desktop services and the watcher of received bytes.
#include <csignal>

#include "desktop/bindings/qt_text.h"
#include "desktop/system/end_signals.h"
#include "desktop/system/port_watcher.h"
#include "desktop/system/qt_desktop_services.h"
#include "desktop/system/qt_dialogs.h"
#include "desktop/system/theme_keeper.h"
#include "desktop/system/type_ahead.h"
#include "desktop_fixture.h"
#include "support/fake_serial_port.h"

namespace pelvan::desktop {
namespace {

using testing::when_asked;

TEST(QtDialogsTest, MessageBoxShowsItsTextAsItIsAndAnswersByButton) {
    const std::tuple<MessageButtons, const char*, MessageAnswer> cases[] = {
        {MessageButtons::Ok, "", MessageAnswer::Ok}, // no button: the box is closed
        {MessageButtons::YesNo, "&Yes", MessageAnswer::Yes},
        {MessageButtons::YesNo, "", MessageAnswer::No},
        {MessageButtons::YesNo, "Enter", MessageAnswer::Yes},
        {MessageButtons::YesNoPreferNo, "Enter", MessageAnswer::No},
        {MessageButtons::RetryCancel, "&Retry", MessageAnswer::Retry},
        {MessageButtons::RetryCancel, "", MessageAnswer::Cancel},
    };
    for (const auto& [buttons, press, answer] : cases) {
        when_asked<QMessageBox>([&, wanted = press](QMessageBox& box) {
            EXPECT_EQ(box.windowTitle(), "Pelvan 7");
            EXPECT_EQ(box.textFormat(), Qt::PlainText);
            EXPECT_EQ(box.text(), "<b> &\nmore");
            for (QAbstractButton* button : box.buttons())
                if (button->text() == wanted) return button->click();
            if (wanted == std::string("Enter")) return QTest::keyClick(&box, Qt::Key_Return);
            box.close();
        });
        EXPECT_EQ(QtDialogs().message_box("<b> &\r\nmore", "", buttons, MessageIcon::None), answer)
            << static_cast<int>(buttons) << press;
    }
}

TEST(QtDialogsTest, ABoxNeverOutgrowsTheScreen) {
    EXPECT_EQ(box_text("a\r\nb\rc\n\x01"), QString::fromUtf16(u"a\nb\nc\n\u2401"));
    for (const std::string& text :
         {std::string(1000000, 'x'), std::string(100000, '\n'), std::string(9999, '\xFF')}) {
        const QString shown = box_text(text);
        EXPECT_TRUE(shown.endsWith(QChar(0x2026)));
        EXPECT_LE(shown.count(u'\n'), 25);
        QLabel label(shown);
        label.setWordWrap(true);
        EXPECT_LT(label.minimumSizeHint().width(), 800);
        EXPECT_LT(label.heightForWidth(800), 700);
    }
}

TEST(QtDialogsTest, InputBoxGivesItsTextOrNothing) {
    for (const bool accept : {true, false}) {
        when_asked<QInputDialog>([&](QInputDialog& box) {
            EXPECT_EQ(box.findChild<QLabel*>()->textFormat(), Qt::PlainText);
            EXPECT_EQ(box.findChild<QLabel*>()->text(), "a<br>\n\nb\nc");
            box.setTextValue(box.textValue() + "7");
            accept ? box.accept() : box.reject();
        });
        EXPECT_EQ(QtDialogs().input_box("a<br>\r\rb\r\nc", "Enter Value", "5"), accept ? "57" : "");
    }
}

TEST(QtDialogsTest, SavingAppendsTheExtensionAndRefusesReadOnlyFiles) {
    EXPECT_EQ(name_filters("Text Files (*.txt)|*.txt|Sets|*.set;*.ini|All Files (*.*)|*.*|"),
              (QStringList{"Text Files (*.txt)", "Sets (*.set *.ini)", "All Files (*)"}));
    const pelvan::testing::TempDir folder;
    pelvan::testing::write_file(folder.file("locked.txt"), "x");
    std::filesystem::permissions(folder.file("locked.txt"), std::filesystem::perms::owner_read);
    FileDialogRequest request;
    request.initial_directory = folder.path();
    request.default_extension = "txt";
    request.refuse_read_only = true;
    const auto choose = [](const char* name) {
        return [name](QFileDialog& dialog) {
            dialog.findChild<QLineEdit*>("fileNameEdit")->setText(name);
            static_cast<QDialog&>(dialog).accept();
        };
    };
    when_asked<QFileDialog>(choose("locked"));
    when_asked<QMessageBox>([&](QMessageBox& box) {
        when_asked<QFileDialog>(choose("free"));
        box.close();
    });
    EXPECT_EQ(QtDialogs().save_file(request), folder.file("free.txt"));
}

TEST(QtDesktopServicesTest, HelpShowsPagesFindsTextsAndSaysWhatIsMissing) {
    const pelvan::testing::TempDir folder;
    pelvan::testing::write_file(folder.file("index.html"), "<title>Contents</title><p>Welcome");
    pelvan::testing::write_file(folder.file("listen.html"), "<title>Listening</title><p>Bytes on");
    QtDesktopServices services(folder.path());
    QWidget* window = nullptr;
    const auto shown = [&](const char* name) {
        services.show_help(name);
        for (QWidget* top : QApplication::topLevelWidgets())
            if (top->objectName() == "help_window") window = top;
        return window->findChild<QTextBrowser*>("help_page")->toPlainText();
    };
    EXPECT_EQ(shown(""), "Welcome");
    EXPECT_EQ(shown("listen"), "Bytes on");
    for (const char* missing : {"../secret", "nothing.html"})
        EXPECT_TRUE(shown(missing).contains("no help page")) << missing;
    auto* contents = window->findChild<QListWidget*>("help_contents");
    auto* page = window->findChild<QTextBrowser*>("help_page");
    shown("");
    EXPECT_EQ(contents->currentItem()->text(), "Contents");
    window->findChild<QLineEdit*>("help_search")->setText("bytes ON");
    ASSERT_EQ(contents->count(), 1);
    EXPECT_EQ(contents->currentItem()->text(), "Listening");
    EXPECT_EQ(page->toPlainText(), "Bytes on");
    ASSERT_EQ(page->extraSelections().size(), 1);
    EXPECT_EQ(page->extraSelections()[0].cursor.selectedText(), "Bytes on");
    window->findChild<QLineEdit*>("help_search")->clear();
    window->activateWindow();
    testing::run_events();
    QTest::keyClick(window, Qt::Key_Left, Qt::AltModifier); // back
    EXPECT_EQ(page->toPlainText(), "Welcome");
    EXPECT_EQ(contents->currentItem()->text(), "Contents");
    shown("listen");
    QTest::keyClick(window, Qt::Key_Home, Qt::AltModifier);
    EXPECT_EQ(page->toPlainText(), "Welcome");
    QTest::keyClick(window, Qt::Key_Escape);
    EXPECT_FALSE(window->isVisible());
}

TEST(QtDialogsTest, FilesThatWereChosenAreOfferedAgain) {
    const pelvan::testing::TempDir folder;
    const std::string set = folder.file("set.PV5");
    pelvan::testing::write_file(set, "x");
    PersonalSettings personal;
    RecentFiles recent(personal);
    QtDialogs dialogs([] {}, &recent);
    FileDialogRequest request;
    request.kind = "set";
    request.initial_directory = folder.path();
    when_asked<QFileDialog>([&](QFileDialog& dialog) {
        EXPECT_EQ(dialog.findChild<QComboBox*>("recent_files"), nullptr);
        dialog.selectFile(to_qt(set));
        static_cast<QDialog&>(dialog).accept();
    });
    EXPECT_EQ(dialogs.save_file(request), set);
    request.initial_directory = "/";
    when_asked<QFileDialog>([](QFileDialog& dialog) {
        auto* box = dialog.findChild<QComboBox*>("recent_files");
        ASSERT_NE(box, nullptr);
        ASSERT_TRUE(box->itemText(0).startsWith("set.PV5"));
        Q_EMIT box->activated(0);
    });
    EXPECT_EQ(dialogs.open_file(request), set);
}

TEST(QtDialogsTest, ATitleHasRoom) {
    const QString title(40, u'W');
    when_asked<QMessageBox>([&](QMessageBox& box) {
        EXPECT_GT(box.width(), box.fontMetrics().horizontalAdvance(title));
        box.close();
    });
    QtDialogs().message_box("x", title.toStdString(), MessageButtons::Ok, MessageIcon::None);
}

TEST(ThemeKeeperTest, FollowsTheChoiceAndGivesTheDesktopsColoursBack) {
    qputenv("GTK_THEME", "Adwaita"); // whatever the settings of this machine are
    const QPalette before = QApplication::palette();
    PersonalSettings personal;
    ThemeKeeper theme(personal);
    theme.choose(ThemeChoice::Dark);
    EXPECT_LT(QApplication::palette().color(QPalette::Base).lightness(), 100);
    EXPECT_GT(QApplication::palette().color(QPalette::Text).lightness(), 200);
    EXPECT_EQ(ThemeKeeper(personal).choice(), ThemeChoice::Dark) << "the next start";
    theme.choose(ThemeChoice::AsDesktop);
    EXPECT_EQ(QApplication::palette(), before);
}

/// A box whose Enter sends, with the program's time and the stamps of the input in our hands.
class TypeAheadTest : public testing::WindowTest {
  protected:
    TypeAheadTest() {
        box_.KeyDown = [this](Key key) {
            if (key != Key::Enter) return false;
            ++sent_;
            now_ms_ += blocks_ms_;
            return true;
        };
        context_.run = [this](const std::function<void()>& handler) { input_.run(handler); };
        bind(context_, box_, edit_);
    }
    ~TypeAheadTest() override { delete edit_; }

    /// The input's clock is 5 seconds behind the program's.
    void type(Qt::Key key, const char* text, int at_ms) {
        QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier, QString::fromLatin1(text));
        press.setTimestamp(static_cast<quint64>(at_ms - 5000));
        QCoreApplication::sendEvent(edit_, &press);
    }

    qint64 now_ms_ = 10000;
    int blocks_ms_ = 2000;
    int sent_ = 0;
    TypeAhead input_{[this] { return now_ms_; }};
    TextBox box_{"txt_Command"};
    QLineEdit* edit_ = new QLineEdit(&window_);
};

TEST_F(TypeAheadTest, WhatWasTypedWhileAnExchangeBlockedIsDropped) {
    type(Qt::Key_Return, "\r", 10000);
    for (const int at : {10200, 10400, 11900})
        type(Qt::Key_Return, "\r", at);
    type(Qt::Key_A, "a", 11950);
    EXPECT_EQ(sent_, 1);
    now_ms_ = 12100;
    type(Qt::Key_B, "b", 12090);
    EXPECT_EQ(edit_->text(), "b");
    type(Qt::Key_Return, "\r", 12100);
    EXPECT_EQ(sent_, 2);
}

TEST_F(TypeAheadTest, QuickTypingAndWhatNobodyStartedDropNothing) {
    blocks_ms_ = 60;
    for (const int at : {10000, 10020, 10040})
        type(Qt::Key_Return, "\r", at);
    EXPECT_EQ(sent_, 3) << "a line that answers at once";
    now_ms_ += 5000; // a pass of data logging, run by its timer
    for (const int at : {11000, 12000})
        type(Qt::Key_A, "a", at);
    EXPECT_EQ(edit_->text(), "aa");
    now_ms_ += 5000; // which has to say something
    input_.drop_typed_meanwhile();
    type(Qt::Key_Return, "\r", 16000);
    EXPECT_EQ(sent_, 3) << "the box is not answered by what was typed before";
}

/// On a line without a handle; hardware lines are watched by the listen window's tests.
class PortWatcherTest : public testing::WindowTest {
  protected:
    void watch(const std::string& arriving) {
        port_.set_PortOpen(true);
        watcher_.watch(port_);
        port_.arrive({0, arriving});
    }
    void set_threshold(std::int16_t count) {
        port_.set_RThreshold(count);
        port_.watch_changed.raise();
    }

    pelvan::testing::FakeTick tick_;
    pelvan::testing::FakeSerialPort port_{tick_};
    PortWatcher watcher_{context_.run};
};

TEST_F(PortWatcherTest, LooksAfterAnExchangeAndMayBeForgottenInTheEvent) {
    std::string received;
    const Subscription receiving = port_.OnComm.subscribe([&] {
        received += port_.Input();
        watcher_.forget(port_);
    });
    watch("taken in during an exchange");
    testing::run_events();
    set_threshold(1);
    EXPECT_EQ(received, "") << "queued, not inside the setting";
    testing::run_events();
    port_.arrive({0, "after it was forgotten"});
    set_threshold(1);
    testing::run_events();
    EXPECT_EQ(received, "taken in during an exchange");
}

TEST_F(PortWatcherTest, HandlerIsNeverEnteredTwiceAndItsErrorsEndInTheRunner) {
    int depth = 0;
    int deepest = 0;
    const Subscription receiving = port_.OnComm.subscribe([&] {
        deepest = std::max(deepest, ++depth);
        if (depth == 1) set_threshold(1);
        testing::run_events(); // as a message box does
        --depth;
        port_.Input();
        throw RunTimeError(error_number::kOverflow);
    });
    watch("x");
    set_threshold(1);
    testing::run_events();
    EXPECT_EQ(deepest, 1);
    EXPECT_EQ(errors_, std::vector<int>{error_number::kOverflow});
}

TEST(QtDialogsTest, AFileGivenAsDirectoryStandsForItsFolder) {
    const pelvan::testing::TempDir folder;
    pelvan::testing::write_file(folder.file("set.PV5"), "x");
    FileDialogRequest request;
    for (const std::string& given :
         {folder.file("set.PV5"), folder.file("new.PV5"), folder.path()}) {
        request.initial_directory = given;
        QString shown;
        when_asked<QFileDialog>([&](QFileDialog& dialog) {
            shown = dialog.directory().absolutePath();
            dialog.reject();
        });
        EXPECT_EQ(QtDialogs().open_file(request), std::nullopt);
        EXPECT_EQ(shown.toStdString(), folder.path()) << given;
    }
}

TEST(EndSignalsTest, ASignalBecomesOneEvent) {
    int ended = 0;
    const EndSignals signals([&] { ++ended; });
    EXPECT_FALSE(EndSignals::pending());
    std::raise(SIGTERM);
    EXPECT_EQ(ended, 0);
    EXPECT_TRUE(EndSignals::pending()); // work that lets no events run can end early
    testing::run_events();
    testing::run_events();
    EXPECT_EQ(ended, 1);
}

TEST(EndSignalsTest, TheEndOfASessionMayComeTwiceAndAClosedTerminalIsNone) {
    int ended = 0;
    const EndSignals signals([&] { ++ended; });
    std::raise(SIGPIPE);
    testing::run_events();
    EXPECT_EQ(ended, 0);
    for (int i = 0; i < 2; ++i)
        std::raise(SIGHUP); // of the terminal and of the shell
    testing::run_events();
    EXPECT_EQ(ended, 1);
}

TEST(QtText, OnlyUtf8ComesBackAsItWas) {
    EXPECT_TRUE(survives_qt("/home/k\xC3\xA4the/\xF0\x9F\x94\xA5 a"));
    EXPECT_FALSE(survives_qt("/home/k\xE4the"));
    EXPECT_FALSE(survives_qt("\xED\xA0\x80")); // half of a pair
}

} // namespace
} // namespace pelvan::desktop
