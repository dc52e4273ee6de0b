// `pelvan7` opens the windows, `pelvan7 COMMAND` works without a screen.
#include <QApplication>
#include <cstdlib>
#include <filesystem>
#include <iostream>

#include "desktop/main_window.h"
#include "terminal/terminal.h"

namespace {

/// Qt ends the process without a word for the user when there is no screen.
bool has_screen() {
#ifdef Q_OS_LINUX
    const bool named = std::getenv("DISPLAY") || std::getenv("WAYLAND_DISPLAY");
    return named || std::getenv("QT_QPA_PLATFORM");
#else
    return true;
#endif
}

} // namespace

int main(int argc, char** argv) {
    std::string directory;
    if (const auto code = pelvan::run_terminal_process(argc, argv, directory)) return *code;
    if (!has_screen()) {
        std::cerr << "pelvan7: no display; name a command to work in the terminal (--help)\n";
        return pelvan::exit_code::kFailed;
    }
    QApplication application(argc, argv);
    QApplication::setApplicationName("Pelvan 7");
    QApplication::setDesktopFileName("pelvan7");
    pelvan::desktop::MainWindow window(directory);
    window.open();
    return QApplication::exec();
}
