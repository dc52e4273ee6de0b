#include "desktop/system/qt_desktop_services.h"

#include <QClipboard>
#include <QCoreApplication>
#include <QDesktopServices>
#include <QFileInfo>
#include <QGuiApplication>
#include <QScreen>
#include <QUrl>

#include "desktop/bindings/qt_text.h"
#include "desktop/system/help_window.h"
#include "desktop/system/place_keeper.h"

namespace pelvan::desktop {

QtDesktopServices::QtDesktopServices(std::string help_folder, WindowPlaces* places)
    : help_folder_(std::move(help_folder)), places_(places) {}

QtDesktopServices::~QtDesktopServices() = default;

void QtDesktopServices::let_events_run() {
    QCoreApplication::processEvents();
}

void QtDesktopServices::paint_windows() {
    QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents |
                                    QEventLoop::ExcludeSocketNotifiers |
                                    QEventLoop::X11ExcludeTimers);
}

void QtDesktopServices::set_clipboard_text(const std::string& text) {
    QGuiApplication::clipboard()->setText(to_qt(text));
}

bool QtDesktopServices::show_folder_of(const std::string& path) {
    return QDesktopServices::openUrl(QUrl::fromLocalFile(QFileInfo(to_qt(path)).absolutePath()));
}

ScreenSize QtDesktopServices::screen_size() {
    const QScreen* screen = QGuiApplication::primaryScreen();
    if (screen == nullptr) return {};
    // In pixels of 1/96 inch, as forms are placed: their windows grow with the screen's resolution.
    const QSizeF size = QSizeF(screen->availableSize()) * 96.0 / screen->logicalDotsPerInch();
    return {qRound(size.width()), qRound(size.height())};
}

void QtDesktopServices::show_help(const std::string& page) {
    if (!help_window_) {
        help_window_ = std::make_unique<HelpWindow>(to_qt(help_folder_));
        if (places_ != nullptr) keep_place_on_screen(help_window_.get(), "help", *places_);
    }
    help_window_->show_page(to_qt(page));
    help_window_->show();
    help_window_->raise();
    help_window_->activateWindow();
}

void QtDesktopServices::close_windows() {
    help_window_.reset();
}

} // namespace pelvan::desktop
