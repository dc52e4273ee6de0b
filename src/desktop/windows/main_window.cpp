#include "desktop/windows/main_window.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QMdiSubWindow>
#include <QScreen>

#include "desktop/bindings/qt_text.h"
#include "desktop/printing/print_module.h"
#include "desktop/windows/console_window.h"
#include "desktop/windows/first_paint.h"
#include "desktop/windows/listen_window.h"
#include "desktop/windows/logging_window.h"
#include "desktop/windows/profile_window.h"
#include "desktop/windows/settings_window.h"
#include "desktop/windows/status_bar.h"
#include "desktop/windows/transfer_window.h"

namespace pelvan::desktop {
namespace {

constexpr QRect kListenPlace{60, 60, 900, 560};
constexpr QRect kTransferPlace{100, 80, 1000, 560};

std::function<qint64()> elapsed_ms() {
    QElapsedTimer timer;
    timer.start();
    return [timer] { return timer.elapsed(); };
}

} // namespace

MainWindow::MainWindow(const std::string& directory)
    : tick_(make_system_tick()), clock_(make_system_clock()), type_ahead_(elapsed_ms()),
      desktop_((QCoreApplication::applicationDirPath() + "/help").toStdString()),
      application_(Services{*tick_, *clock_, dialogs_, desktop_, directory}, open_serial_device),
      watcher_(bind_context().run_unasked),
      frame_(std::make_unique<MdiFrame>(bind_context(), application_.frame, desktop_)) {
    Application& app = application_;
    watch_ports();
    add_status_bar(frame_->context(), app.frame.line, *frame_);
    // Closing the console alone ends the program at once: no questions, no saving.
    console_closed_ = app.console.closed.subscribe([&app] {
        app.transfer.cancel_transfer();
        app.profile_logic.line.cancel();
        QCoreApplication::exit(0);
    });
    for (MenuEntry* entry : app.frame.mnuWindow.children)
        if (entry) frame_->add_window_entry(*entry);
}

MainWindow::~MainWindow() = default;

void MainWindow::open() {
    frame_->setGeometry(QApplication::primaryScreen()->availableGeometry());
    application_.frame.set_Visible(true);
    frame_->showMaximized();
    QEventLoop until_painted;
    new FirstPaint(frame_->canvas(), [&until_painted] { until_painted.quit(); });
    until_painted.exec(QEventLoop::ExcludeUserInputEvents);
    make_children();
    application_.frame.Load();
}

void MainWindow::end() {
    // A box that nobody answers would hold the end; those that stand are closed by it.
    unattended_.emplace(application_.messages, [](const std::string&) {});
    application_.events.run([this] {
        application_.logging.Unload();
        application_.console.Unload();
    });
}

void MainWindow::make_children() {
    Application& app = application_;
    const BindContext& context = frame_->context();
    frame_->add_child(app.console, make_console(context, app.console));
    for (HistoryForm* form : {&app.history.frmCommand, &app.history.frmResponse})
        frame_->add_child(*form, make_history(context, *form));
    print_ = app.history.print_requested.subscribe(
        [this](const HistoryDocument& document) { print(document, PrintAction::Print); });
    preview_ = app.history.preview_requested.subscribe(
        [this](const HistoryDocument& document) { print(document, PrintAction::Preview); });
    first_shows_.emplace_back(app.comms_settings, [this, &app] {
        make_comms_settings(frame_->context(), app.comms_settings, *frame_);
    });
    first_shows_.emplace_back(app.serial_devices, [this, &app] {
        make_serial_devices(frame_->context(), app.serial_devices, *frame_);
    });
    first_shows_.emplace_back(app.listen, [this, &app] {
        frame_->add_child(app.listen, make_listen(frame_->context(), app.listen))
            ->setGeometry(kListenPlace);
    });
    first_shows_.emplace_back(app.logging, [this, &app] {
        frame_->add_child(app.logging,
                          make_logging(frame_->context(), app.logging, dialogs_, *frame_));
    });
    first_shows_.emplace_back(app.profile_logic, [this, &app] {
        add_profile_window(QCoreApplication::applicationDirPath(), app.profile_logic, dialogs_,
                           *frame_);
    });
    first_shows_.emplace_back(app.transfer, [this, &app] {
        frame_->add_child(app.transfer, make_transfer(frame_->context(), app.transfer))
            ->setGeometry(kTransferPlace);
    });
}

void MainWindow::print(const HistoryDocument& document, PrintAction action) {
    const QString problem = print_with_module(QCoreApplication::applicationDirPath(), document,
                                              {action, frame_.get(), {}});
    if (!problem.isEmpty())
        dialogs_.message_box(from_qt(problem), {}, MessageButtons::Ok, MessageIcon::Exclamation);
}

BindContext MainWindow::bind_context() {
    const EventRunner unasked = [this](const std::function<void()>& handler) {
        application_.events.run(handler);
    };
    const EventRunner asked = [this, unasked](const std::function<void()>& handler) {
        type_ahead_.run([&] { unasked(handler); });
    };
    return {asked, nullptr, nullptr, unasked};
}

void MainWindow::watch_ports() {
    port_changes_ = application_.comms.element_changed.subscribe([this](SerialPort* port) {
        if (port) {
            watcher_.watch(*port);
            return;
        }
        for (const auto& gone : application_.comms.com_Device)
            watcher_.forget(*gone);
    });
}

} // namespace pelvan::desktop
