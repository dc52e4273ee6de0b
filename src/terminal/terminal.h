// The program without a screen: `pelvan7 COMMAND`. The same body as behind the windows, with
// message boxes as lines on standard error and questions answered by options, never by waiting.
#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "app/core.h"
#include "config/application_directory.h"

namespace pelvan {

namespace exit_code {
inline constexpr int kDone = 0;
inline constexpr int kFailed = 1;
inline constexpr int kBadOption = 2;
} // namespace exit_code

/// What a file without channels comes to, and what to type.
inline constexpr char kNoChannel[] =
    "no port is set up: pelvan7 ports set modbus --device DEVICE (pelvan7 ports lists them)";

/// Sleeps.
void sleep_ms(int ms);

/// What the outer world gives to a terminal run; tests hand in streams and a tick of their own.
struct TerminalEnvironment {
    std::ostream& out;
    std::ostream& err;
    TickSource& tick;
    Clock& clock;
    LineOpener open_device;
    /// That of --directory; when it is empty, `find_directory` says which one.
    std::string directory;
    /// Set by an interrupt; commands that go on until they are stopped look at it.
    std::atomic<bool>& stop;
    /// Lets time go by between two pieces of work; may return early.
    std::function<void(int ms)> wait_ms = sleep_ms;
    /// Asked once a command, or the windows, need the directory; may raise 76.
    std::function<ApplicationDirectory()> find_directory = nullptr;
    /// Why it is this one, and what a person may wonder about.
    std::string directory_reason = "--directory names it";
    std::vector<std::string> directory_notes = {};
    /// Whether nobody named it: a command that is typed later finds it as well.
    bool directory_found = false;
};

/// Ends a command from inside a message box or a question that nobody is there to answer.
struct CommandAborted {
    std::string reason;
};

/// The application behind a terminal command, on dialogs and desktop services that need no screen.
class TerminalApplication {
  public:
    explicit TerminalApplication(TerminalEnvironment& environment);
    ~TerminalApplication();
    Core& app();

    /// Locates the configuration file and builds the channels, without the console's own start-up:
    /// no command changes the protocol that the user chose. False when no channel was built.
    bool start();
    /// What every question with a choice is answered with from now on.
    void answer_questions_yes(bool yes);
    /// The same message may come again: it is no loop that waits for an answer.
    void work_went_on();
    /// How many of the questions that offer it are answered with Retry.
    void answer_retries(int count);
    /// What open and save dialogs choose.
    void choose_file(const std::string& path);
    /// Whether the sentence says why a device does not open, and that stands there already.
    [[nodiscard]] bool has_told(const std::string& sentence) const;
    /// Called whenever long work lets events run.
    void on_events(std::function<void()> handler);

  private:
    struct Parts;
    std::unique_ptr<Parts> parts_;
};

/// Runs the command that the arguments (without the program's name) ask for and returns its exit
/// code; nothing when they ask for none, so that the windows should open. Sets
/// `environment.directory`.
std::optional<int> run_terminal(const std::vector<std::string>& arguments,
                                TerminalEnvironment& environment);

/// Runs it on this process: standard streams, system time, interrupt and termination signals. A
/// directory that has no path is found out.
std::optional<int> run_terminal_process(int argc, char** argv, ApplicationDirectory& directory);

} // namespace pelvan
