#include "desktop/system/qt_desktop_services.h"

#include <QClipboard>
#include <QCoreApplication>
#include <QGuiApplication>
#include <QScreen>

#include "desktop/bindings/qt_text.h"
#include "desktop/system/help_window.h"

namespace pelvan::desktop {

QtDesktopServices::QtDesktopServices(std::string help_folder)
    : help_folder_(std::move(help_folder)) {}

QtDesktopServices::~QtDesktopServices() = default;

void QtDesktopServices::let_events_run() {
    QCoreApplication::processEvents();
}

void QtDesktopServices::set_clipboard_text(const std::string& text) {
    QGuiApplication::clipboard()->setText(to_qt(text));
}

ScreenSize QtDesktopServices::screen_size() {
    const QScreen* screen = QGuiApplication::primaryScreen();
    if (screen == nullptr) return {};
    // In pixels of 1/96 inch, as forms are placed: their windows grow with the screen's resolution.
    const QSizeF size = QSizeF(screen->availableSize()) * 96.0 / screen->logicalDotsPerInch();
    return {qRound(size.width()), qRound(size.height())};
}

void QtDesktopServices::show_help(const std::string& page) {
    if (!help_window_) help_window_ = std::make_unique<HelpWindow>(to_qt(help_folder_));
    help_window_->show_page(to_qt(page));
    help_window_->show();
    help_window_->raise();
    help_window_->activateWindow();
}

} // namespace pelvan::desktop
