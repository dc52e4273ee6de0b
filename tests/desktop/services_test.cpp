// Dialogs, desktop services and the watcher of received bytes.
#include <gtest/gtest.h>
#include <unistd.h>

#include <QFileDialog>
#include <QInputDialog>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMessageBox>
#include <QPushButton>
#include <QTextBrowser>
#include <QTimer>
#include <filesystem>

#include "desktop/port_watcher.h"
#include "desktop/qt_desktop_services.h"
#include "desktop/qt_dialogs.h"
#include "desktop_fixture.h"
#include "support/fake_serial_port.h"
#include "support/temp_dir.h"

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
    struct Case {
        MessageButtons buttons;
        QString press; // empty: the box is closed instead
        MessageAnswer answer;
    };
    const Case cases[] = {
        {MessageButtons::Ok, "&OK", MessageAnswer::Ok},
        {MessageButtons::Ok, "", MessageAnswer::Ok},
        {MessageButtons::YesNo, "&Yes", MessageAnswer::Yes},
        {MessageButtons::YesNo, "&No", MessageAnswer::No},
        {MessageButtons::YesNo, "", MessageAnswer::No},
        {MessageButtons::RetryCancel, "&Retry", MessageAnswer::Retry},
        {MessageButtons::RetryCancel, "&Cancel", MessageAnswer::Cancel},
        {MessageButtons::RetryCancel, "", MessageAnswer::Cancel},
    };
    for (const Case& one : cases) {
        when_asked<QMessageBox>([&](QMessageBox& box) {
            EXPECT_EQ(box.windowTitle(), "Pelvan 7");
            EXPECT_EQ(box.textFormat(), Qt::PlainText);
            EXPECT_EQ(box.text(), "<b> & more");
            EXPECT_EQ(box.icon(), QMessageBox::NoIcon);
            for (QAbstractButton* button : box.buttons())
                if (button->text() == one.press) return button->click();
            EXPECT_TRUE(one.press.isEmpty());
            box.close();
        });
        EXPECT_EQ(QtDialogs().message_box("<b> & more", "", one.buttons, MessageIcon::None),
                  one.answer);
    }
    when_asked<QMessageBox>([](QMessageBox& box) {
        EXPECT_EQ(box.windowTitle(), "WARNING");
        EXPECT_EQ(box.icon(), QMessageBox::Warning);
        box.close();
    });
    static_cast<void>(
        QtDialogs().message_box("x", "WARNING", MessageButtons::Ok, MessageIcon::Exclamation));
}

TEST(QtDialogsTest, InputBoxGivesItsTextOrNothing) {
    for (const bool accept : {true, false}) {
        when_asked<QInputDialog>([&](QInputDialog& box) {
            EXPECT_EQ(box.windowTitle(), "Enter Value");
            EXPECT_EQ(box.labelText(), "a<br>\nb");
            EXPECT_EQ(box.findChild<QLabel*>()->textFormat(), Qt::PlainText);
            EXPECT_EQ(box.textValue(), "5");
            box.findChild<QLineEdit*>()->setText("17");
            accept ? box.accept() : box.reject();
        });
        EXPECT_EQ(QtDialogs().input_box("a<br>\nb", "Enter Value", "5"), accept ? "17" : "");
    }
}

TEST(QtDialogsTest, FilterOfTheClassicForm) {
    EXPECT_EQ(name_filters("Text Files (*.txt)|*.txt|All Files (*.*)|*.*|"),
              (QStringList{"Text Files (*.txt)", "All Files (*)"}));
    EXPECT_EQ(name_filters("Sets|*.set;*.ini"), QStringList{"Sets (*.set *.ini)"});
    EXPECT_TRUE(name_filters("").isEmpty());
}

TEST(QtDialogsTest, SavingAppendsTheExtensionAndRefusesReadOnlyFiles) {
    const pelvan::testing::TempDir folder;
    const std::string locked = folder.file("locked.txt");
    pelvan::testing::write_file(locked, "x");
    std::filesystem::permissions(locked, std::filesystem::perms::owner_read);
    FileDialogRequest request;
    request.title = "Save Set";
    request.filter = "Text Files (*.txt)|*.txt|";
    request.initial_directory = folder.path();
    request.default_extension = "txt";
    request.refuse_read_only = true;
    const auto choose = [](const char* name) {
        return [name](QFileDialog& dialog) {
            dialog.findChild<QLineEdit*>("fileNameEdit")->setText(name);
            static_cast<QDialog&>(dialog).accept();
        };
    };
    when_asked<QFileDialog>([&](QFileDialog& dialog) {
        EXPECT_EQ(dialog.windowTitle(), "Save Set");
        choose("free")(dialog);
    });
    EXPECT_EQ(QtDialogs().save_file(request), folder.file("free.txt"));

    bool refused = false;
    when_asked<QFileDialog>([&](QFileDialog& dialog) {
        when_asked<QMessageBox>([&](QMessageBox& box) {
            refused = true;
            when_asked<QFileDialog>([](QFileDialog& again) { again.reject(); });
            box.close();
        });
        choose("locked")(dialog);
    });
    EXPECT_EQ(QtDialogs().save_file(request), std::nullopt);
    EXPECT_TRUE(refused);
}

TEST(QtDesktopServicesTest, HelpShowsPagesFindsTextsAndSaysWhatIsMissing) {
    const pelvan::testing::TempDir folder;
    pelvan::testing::write_file(folder.file("index.html"), "<title>Contents</title><p>Welcome");
    pelvan::testing::write_file(folder.file("a_listen.html"),
                                "<title>Listening</title><p>Bytes on the line");
    QtDesktopServices services(folder.path());
    services.set_help_file("Pelvan7.hlp");
    EXPECT_EQ(services.help_file(), "Pelvan7.hlp");
    services.show_help("");
    QWidget* window = nullptr;
    for (QWidget* top : QApplication::topLevelWidgets())
        if (top->objectName() == "help_window") window = top;
    ASSERT_NE(window, nullptr);
    EXPECT_TRUE(window->isVisible());
    auto* page = window->findChild<QTextBrowser*>("help_page");
    auto* contents = window->findChild<QListWidget*>("help_contents");
    EXPECT_EQ(page->toPlainText(), "Welcome");
    ASSERT_EQ(contents->count(), 2);
    EXPECT_EQ(contents->item(0)->text(), "Contents");
    services.show_help("a_listen");
    EXPECT_EQ(page->toPlainText(), "Bytes on the line");
    for (const char* missing : {"../secret", "nothing.html"}) {
        services.show_help(missing);
        EXPECT_TRUE(page->toPlainText().contains("no help page")) << missing;
    }
    window->findChild<QLineEdit*>("help_search")->setText("bytes ON");
    ASSERT_EQ(contents->count(), 1);
    contents->setCurrentRow(0);
    EXPECT_EQ(page->toPlainText(), "Bytes on the line");
}

/// A port whose handle is one end of a pipe; handle -1 makes it a simulated line.
class PipePort : public pelvan::testing::FakeSerialPort {
  public:
    explicit PipePort(pelvan::testing::FakeTick& tick) : FakeSerialPort(tick) {
        EXPECT_EQ(pipe(ends_), 0);
        FakeSerialPort::set_PortOpen(true);
    }
    ~PipePort() override {
        close(ends_[0]);
        close(ends_[1]);
    }
    int CommID() const override { return has_handle ? ends_[0] : -1; }
    void set_RThreshold(std::int16_t count) override {
        FakeSerialPort::set_RThreshold(count);
        if (watch_changed) watch_changed();
    }
    void check_receive() override {
        ++checks;
        FakeSerialPort::check_receive();
    }
    void bytes_arrive(const std::string& bytes) {
        arrive({0, bytes});
        EXPECT_EQ(write(ends_[1], "x", 1), 1); // stays readable, as a level-triggered handle does
    }

    bool has_handle = true;
    int checks = 0;

  private:
    int ends_[2] = {-1, -1};
};

class PortWatcherTest : public testing::WindowTest {
  protected:
    pelvan::testing::FakeTick tick_;
    PipePort port_{tick_};
    PortWatcher watcher_{context_.run};
};

TEST_F(PortWatcherTest, ReadableHandleRaisesTheEventOnlyWhileAThresholdIsSet) {
    std::string received;
    port_.OnComm = [&] { received += port_.Input(); };
    watcher_.watch(port_);
    port_.bytes_arrive("early");
    testing::run_events();
    EXPECT_EQ(port_.checks, 0);
    port_.set_RThreshold(1);
    testing::run_events();
    EXPECT_EQ(received, "early");
    port_.bytes_arrive("late");
    testing::run_events();
    EXPECT_EQ(received, "earlylate");
    port_.set_RThreshold(0);
    const int before = port_.checks;
    testing::run_events();
    EXPECT_EQ(port_.checks, before);
}

TEST_F(PortWatcherTest, BytesTakenInDuringAnExchangeAreLookedAtOnceAfterIt) {
    port_.has_handle = false;
    std::string received;
    port_.OnComm = [&] { received += port_.Input(); };
    watcher_.watch(port_);
    port_.set_RThreshold(0);
    port_.arrive({0, "kept"});
    port_.set_RThreshold(1);
    port_.set_RThreshold(2);
    EXPECT_EQ(received, "") << "queued, not inside the setting";
    testing::run_events();
    EXPECT_EQ(received, "kept");
}

TEST_F(PortWatcherTest, HandlerIsNeverEnteredTwiceAndItsErrorsEndInTheRunner) {
    int depth = 0;
    int deepest = 0;
    port_.OnComm = [&] {
        deepest = std::max(deepest, ++depth);
        port_.bytes_arrive("more");
        testing::run_events(); // as a message box does
        --depth;
        port_.Input();
        throw RunTimeError(error_number::kOverflow);
    };
    watcher_.watch(port_);
    port_.set_RThreshold(1);
    port_.bytes_arrive("first");
    testing::run_events();
    EXPECT_EQ(deepest, 1);
    EXPECT_FALSE(errors_.empty());
}

TEST_F(PortWatcherTest, SimulatedLineIsAskedAndAPortMayBeForgottenInItsOwnEvent) {
    port_.has_handle = false;
    watcher_.watch(port_);
    port_.set_RThreshold(1);
    testing::run_events();
    port_.OnComm = [&] { watcher_.forget(port_); };
    port_.arrive({0, "x"});
    EXPECT_TRUE(QTest::qWaitFor([&] { return !port_.watch_changed; }, 5000));
}

} // namespace
} // namespace pelvan::desktop
