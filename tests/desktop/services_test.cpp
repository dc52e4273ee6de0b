// Dialogs, desktop services and the watcher of received bytes.
#include <csignal>

#include "desktop/system/end_signals.h"
#include "desktop/system/port_watcher.h"
#include "desktop/system/qt_desktop_services.h"
#include "desktop/system/qt_dialogs.h"
#include "desktop_fixture.h"
#include "support/fake_serial_port.h"

namespace pelvan::desktop {
namespace {

/// Acts on the next modal dialog of the kind, as soon as a blocking call has opened it.
template <class Dialog> void when_asked(std::function<void(Dialog&)> answer) {
    auto* look = new QTimer(qApp);
    QObject::connect(look, &QTimer::timeout, look, [look, answer = std::move(answer)] {
        auto* dialog = qobject_cast<Dialog*>(QApplication::activeModalWidget());
        if (dialog == nullptr) return;
        look->stop();
        look->deleteLater();
        answer(*dialog);
    });
    look->start(0);
}

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
    window->findChild<QLineEdit*>("help_search")->setText("bytes ON");
    ASSERT_EQ(contents->count(), 1);
    EXPECT_EQ(contents->item(0)->text(), "Listening");
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

} // namespace
} // namespace pelvan::desktop
