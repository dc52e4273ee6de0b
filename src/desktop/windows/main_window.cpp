#include "desktop/windows/main_window.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QMdiSubWindow>
#include <QScreen>
#include <QTimer>

#include "config/application_directory.h"
#include "desktop/bindings/qt_text.h"
#include "desktop/printing/print_module.h"
#include "desktop/system/module.h"
#include "desktop/windows/bad_requests_window.h"
#include "desktop/windows/console_window.h"
#include "desktop/windows/first_paint.h"
#include "desktop/windows/listen_window.h"
#include "desktop/windows/logging_window.h"
#include "desktop/windows/profile_window.h"
#include "desktop/windows/scan_window.h"
#include "desktop/windows/settings_window.h"
#include "desktop/windows/status_bar.h"
#include "desktop/windows/transfer_window.h"

namespace pelvan::desktop {
namespace {

constexpr char kFrame[] = "frame";
constexpr QRect kListenPlace{60, 60, 900, 560};
constexpr QRect kScanPlace{80, 40, 860, 560};
constexpr QRect kTransferPlace{100, 80, 1000, 560};
constexpr QRect kBadRequestsPlace{40, 60, 940, 520};

std::function<qint64()> elapsed_ms() {
    QElapsedTimer timer;
    timer.start();
    return [timer] { return timer.elapsed(); };
}

} // namespace

MainWindow::MainWindow(const std::string& directory, const std::string& personal_file)
    : personal_(personal_file), tick_(make_system_tick()), clock_(make_system_clock()),
      type_ahead_(elapsed_ms()),
      desktop_(find_installation(from_qt(QCoreApplication::applicationDirPath())).help, &places_),
      application_(Services{*tick_, *clock_, dialogs_, desktop_, directory}, open_serial_device),
      watcher_(bind_context().run_unasked),
      frame_(std::make_unique<MdiFrame>(bind_context(), application_.frame, desktop_, places_)) {
    Application& app = application_;
    watch_ports();
    add_status_bar(frame_->context(), app.frame.line, *frame_);
    // Closing the console alone ends the program at once: no questions, no saving.
    console_closed_ = app.console.closed.subscribe([&app] {
        app.transfer.cancel_transfer();
        app.bad_requests.cancel();
        app.profile_logic.line.cancel();
        app.scan.cancel();
        QCoreApplication::exit(0);
    });
    for (MenuEntry* entry : app.frame.mnuWindow.children)
        if (entry) frame_->add_window_entry(*entry);
    follow_person();
}

MainWindow::~MainWindow() {
    keep_frame_place();
    frame_.reset(); // its windows tell where they stood
    desktop_.close_windows();
    personal_.save();
}

/// What the person chooses for the windows.
void MainWindow::follow_person() {
    MDIPelvan6& form = application_.frame;
    form.show_theme(theme_.choice());
    theme_chosen_ =
        form.theme_chosen.subscribe([this](ThemeChoice choice) { theme_.choose(choice); });
    form.frame_size = [this] {
        const auto in_points = [this](const QSize& size) {
            const QSizeF points = QSizeF(size) * 96.0 / frame_->logicalDpiX();
            return ScreenSize{qRound(points.width()), qRound(points.height())};
        };
        return MDIPelvan6::Size{in_points(frame_->size()), in_points(frame_->canvas().size())};
    };
    arranged_ = form.arranged.subscribe([this] { frame_->forget_places(main_forms()); });
    room_ = frame_->room_changed.subscribe([this] {
        if (application_.console.loaded() && frame_->stand_as_put(main_forms()))
            application_.frame.place_windows();
    });
}

std::vector<const Form*> MainWindow::main_forms() const {
    return {&application_.console, &application_.history.frmCommand,
            &application_.history.frmResponse};
}

void MainWindow::place_frame() {
    const QRect screen = QApplication::primaryScreen()->availableGeometry();
    const auto remembered = places_.of(kFrame);
    frame_->setGeometry(screen);
    if (remembered) {
        const WindowPlace place = fitted(
            *remembered, {screen.left(), screen.top(), screen.width(), screen.height(), false});
        frame_->move(place.left, place.top);
        frame_->resize(place.width, place.height);
    }
    application_.frame.set_Visible(true);
    if (!remembered || remembered->maximized) frame_->showMaximized();
}

void MainWindow::keep_frame_place() {
    const bool maximized = frame_->isMaximized();
    if (frame_->isMinimized() || (maximized && !places_.of(kFrame))) return; // as it starts
    const QRect normal = frame_->normalGeometry();
    const QRect place = maximized ? normal : QRect(frame_->pos(), frame_->size());
    places_.keep(kFrame, {place.left(), place.top(), place.width(), place.height(), maximized});
}

void MainWindow::open() {
    place_frame();
    QEventLoop until_painted;
    new FirstPaint(frame_->canvas(), [&until_painted] { until_painted.quit(); });
    until_painted.exec(QEventLoop::ExcludeUserInputEvents);
    make_children();
    application_.frame.Load();
    QTimer::singleShot(0, &theme_, [this] { theme_.follow_desktop(); });
}

void MainWindow::end() {
    // A box that nobody answers would hold the end; those that stand are closed by it.
    unattended_.emplace(application_.messages, [](const std::string&) {});
    application_.events.run([this] {
        application_.logging.close_unasked();
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
        frame_->add_child(app.listen, make_listen(frame_->context(), app.listen), kListenPlace);
    });
    first_shows_.emplace_back(app.logging, [this, &app] {
        frame_->add_child(app.logging,
                          make_logging(frame_->context(), app.logging, dialogs_, *frame_));
    });
    first_shows_.emplace_back(app.profile_logic, [this, &app] {
        add_profile_window(module_folder(), app.profile_logic, dialogs_, *frame_);
    });
    first_shows_.emplace_back(app.scan, [this, &app] {
        frame_->add_child(app.scan, make_scan(frame_->context(), app.scan), kScanPlace);
    });
    first_shows_.emplace_back(app.bad_requests, [this, &app] {
        frame_->add_child(app.bad_requests, make_bad_requests(frame_->context(), app.bad_requests),
                          kBadRequestsPlace);
    });
    first_shows_.emplace_back(app.transfer, [this, &app] {
        frame_->add_child(app.transfer, make_transfer(frame_->context(), app.transfer),
                          kTransferPlace);
    });
}

void MainWindow::print(const HistoryDocument& document, PrintAction action) {
    const QString problem =
        print_with_module(module_folder(), document, {action, frame_.get(), {}});
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
