// `pelvan7` opens the windows, `pelvan7 COMMAND` works without a screen.
#include <QApplication>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <string>

#include "desktop/bindings/qt_text.h"
#include "desktop/system/app_icon.h"
#include "desktop/system/end_signals.h"
#include "desktop/system/qt_dialogs.h"
#include "desktop/windows/main_window.h"
#include "personal/personal_settings.h"
#include "terminal/terminal.h"

namespace {

[[noreturn]] void no_display(const std::string& reason) {
    std::cerr << "pelvan7: " << reason << "; name a command to work in the terminal (--help)\n";
    std::_Exit(pelvan::exit_code::kFailed);
}

bool has_screen() {
#ifdef Q_OS_LINUX
    for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"})
        if (const char* value = std::getenv(name); value && *value) return true;
    return false;
#else
    return true;
#endif
}

/// Qt ends the process with a signal when the screen that is named cannot be reached.
void say_why_no_window(QtMsgType type, const QMessageLogContext&, const QString& text) {
    if (type == QtFatalMsg) no_display("the display cannot be used");
    if (type != QtDebugMsg && type != QtInfoMsg) std::cerr << text.toStdString() << "\n";
}

/// Its files would be looked for, and saved, under another name.
int refuse_directory(const std::string& path) {
    pelvan::desktop::QtDialogs().message_box("The windows cannot work in the directory " + path +
                                                 ", because its name is not UTF-8. Rename it, or "
                                                 "start with --directory and another one.",
                                             {}, pelvan::MessageButtons::Ok,
                                             pelvan::MessageIcon::Exclamation);
    return pelvan::exit_code::kFailed;
}

/// Why it is this directory, and what else there is to say of it.
std::string note_of(const pelvan::ApplicationDirectory& directory) {
    std::string note = "\n(" + directory.reason + ")";
    for (const std::string& more : directory.notes)
        note += "\n" + more;
    return note;
}

} // namespace

int main(int argc, char** argv) {
    pelvan::ApplicationDirectory directory;
    if (const auto code = pelvan::run_terminal_process(argc, argv, directory)) return *code;
    if (!has_screen()) no_display("no display");
    const QtMessageHandler usual = qInstallMessageHandler(say_why_no_window);
    QApplication application(argc, argv);
    qInstallMessageHandler(usual);
    QApplication::setApplicationName("Pelvan 7");
    QApplication::setDesktopFileName("pelvan7");
    QApplication::setWindowIcon(pelvan::desktop::app_icon());
    if (const std::string path = std::filesystem::absolute(directory.path).string();
        !pelvan::desktop::survives_qt(path))
        return refuse_directory(path);
    pelvan::desktop::MainWindow window(
        directory.path,
        pelvan::personal_settings_path([](const char* name) { return std::getenv(name); }));
    window.application().frame.directory_note = note_of(directory);
    window.open();
#ifdef Q_OS_UNIX
    using pelvan::desktop::EndSignals;
    const EndSignals signals([&window] { window.end(); });
    // No event arrives in a pass of data logging, which may take minutes on silent controllers.
    pelvan::DataLogger& logger = window.application().data_logger;
    const pelvan::Subscription ends = logger.before_row.subscribe([&logger](int) {
        if (EndSignals::pending()) logger.end_pass();
    });
#endif
    return QApplication::exec();
}
