#include <chrono>
#include <csignal>
#include <filesystem>
#include <iostream>
#include <thread>

#include "terminal/terminal.h"

namespace pelvan {
namespace {

std::atomic<bool> stop_requested{false};

/// The first interrupt asks the command to come to its end; the next one ends the process, also
/// where a command waits for something else than the flag.
void request_stop(int signal_number) {
    stop_requested = true;
    std::signal(signal_number, SIG_DFL);
}

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
    std::signal(SIGINT, request_stop);
    std::signal(SIGTERM, request_stop);
    const auto code = run_terminal(std::vector<std::string>(argv + 1, argv + argc), environment);
    // The windows have no use for the flag: an interrupt ends them as it ends any program.
    std::signal(SIGINT, SIG_DFL);
    std::signal(SIGTERM, SIG_DFL);
    directory = environment.directory;
    return code;
}

} // namespace pelvan
