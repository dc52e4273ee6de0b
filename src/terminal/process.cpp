#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <cstdlib>
#include <iostream>
#include <thread>

#include "terminal/terminal.h"

namespace pelvan {
namespace {

std::atomic<bool> stop_requested{false};

constexpr std::array kSignals{SIGINT, SIGTERM, SIGHUP};

void request_stop(int) {
    stop_requested = true;
}

/// Interrupts set the flag for as long as this lives; those that were ignored still are.
///
/// The first one asks the command to come to its end; the same one again ends the process, also
/// where a command waits for something else than the flag. The end of the session may come twice,
/// from the terminal and from the shell, and only ever asks.
class Interrupts {
  public:
    Interrupts() {
        for (std::size_t i = 0; i < kSignals.size(); ++i) {
            struct sigaction asked {};
            asked.sa_handler = request_stop;
            asked.sa_flags =
                kSignals[i] == SIGHUP ? SA_RESTART : SA_RESTART | static_cast<int>(SA_RESETHAND);
            sigaction(kSignals[i], nullptr, &former_[i]);
            if (former_[i].sa_handler != SIG_IGN) sigaction(kSignals[i], &asked, nullptr);
        }
        // A reader that is gone shows as a failed write; the command ends in order then.
        struct sigaction ignored {};
        ignored.sa_handler = SIG_IGN;
        sigaction(SIGPIPE, &ignored, &former_pipe_);
    }
    Interrupts(const Interrupts&) = delete;
    Interrupts& operator=(const Interrupts&) = delete;
    ~Interrupts() {
        for (std::size_t i = 0; i < kSignals.size(); ++i)
            sigaction(kSignals[i], &former_[i], nullptr);
        sigaction(SIGPIPE, &former_pipe_, nullptr);
    }

  private:
    std::array<struct sigaction, kSignals.size()> former_{};
    struct sigaction former_pipe_ {};
};

/// Gives the standard streams that are closed a file that refuses them: the next device that is
/// opened would take their number, and what is printed would go to the controller.
void hold_standard_streams() {
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        if (fcntl(stream, F_GETFD) < 0)
            static_cast<void>(open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY));
}

std::string variable(const char* name) {
    const char* value = std::getenv(name);
    return value ? value : "";
}

ApplicationDirectory find_directory() {
    return choose_application_directory({find_own_installation(), variable("PELVAN_DIRECTORY"),
                                         variable("HOME"), variable("XDG_DATA_HOME")});
}

} // namespace

void sleep_ms(int ms) {
    std::this_thread::sleep_for(std::chrono::milliseconds(ms));
}

std::optional<int> run_terminal_process(int argc, char** argv, ApplicationDirectory& directory) {
    hold_standard_streams();
    const auto tick = make_system_tick();
    const auto clock = make_system_clock();
    TerminalEnvironment environment{std::cout,      std::cerr,          *tick,
                                    *clock,         open_serial_device, directory.path,
                                    stop_requested, sleep_ms,           find_directory};
    const Interrupts interrupts; // not for the windows: they take them as events
    const auto code = run_terminal(std::vector<std::string>(argv + 1, argv + argc), environment);
    directory = {environment.directory, environment.directory_reason, environment.directory_notes};
    return code;
}

} // namespace pelvan
