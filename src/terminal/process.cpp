#include <signal.h>

#include <array>
#include <chrono>
#include <filesystem>
#include <iostream>
#include <thread>

#include "terminal/terminal.h"

namespace pelvan {
namespace {

std::atomic<bool> stop_requested{false};

constexpr std::array kSignals{SIGINT, SIGTERM};

/// The first interrupt asks the command to come to its end; the next one ends the process, also
/// where a command waits for something else than the flag.
void request_stop(int) {
    stop_requested = true;
    struct sigaction standard {};
    standard.sa_handler = SIG_DFL;
    for (const int each : kSignals)
        sigaction(each, &standard, nullptr);
}

/// Interrupts set the flag for as long as this lives; those that were ignored still are.
class Interrupts {
  public:
    Interrupts() {
        struct sigaction asked {};
        asked.sa_handler = request_stop;
        asked.sa_flags = SA_RESTART;
        for (std::size_t i = 0; i < kSignals.size(); ++i) {
            sigaction(kSignals[i], nullptr, &former_[i]);
            if (former_[i].sa_handler != SIG_IGN) sigaction(kSignals[i], &asked, nullptr);
        }
    }
    Interrupts(const Interrupts&) = delete;
    Interrupts& operator=(const Interrupts&) = delete;
    ~Interrupts() {
        for (std::size_t i = 0; i < kSignals.size(); ++i)
            sigaction(kSignals[i], &former_[i], nullptr);
    }

  private:
    std::array<struct sigaction, kSignals.size()> former_{};
};

} // namespace

void sleep_ms(int ms) {
    std::this_thread::sleep_for(std::chrono::milliseconds(ms));
}

std::optional<int> run_terminal_process(int argc, char** argv, std::string& directory) {
    std::error_code error;
    const auto executable = std::filesystem::read_symlink("/proc/self/exe", error);
    if (directory.empty())
        directory = (error ? std::filesystem::current_path() : executable.parent_path()).string();
    const auto tick = make_system_tick();
    const auto clock = make_system_clock();
    TerminalEnvironment environment{std::cout,          std::cerr, *tick,         *clock,
                                    open_serial_device, directory, stop_requested};
    const Interrupts interrupts; // not for the windows: they take them as events
    const auto code = run_terminal(std::vector<std::string>(argv + 1, argv + argc), environment);
    directory = environment.directory;
    return code;
}

} // namespace pelvan
