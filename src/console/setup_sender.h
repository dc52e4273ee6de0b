// Sending a setup file: a text file of commands, one a line, that goes to the controller line by
// line. What a line means and how it is sent is the caller's; this class knows the file, shows how
// far it has come, asks what to do about a line that fails, and sums up.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "console/send_outcome.h"
#include "forms/controls.h"
#include "platform/services.h"

namespace pelvan {

class SetupSender {
  public:
    explicit SetupSender(Services& services);

    /// Shown while a file is being sent.
    ProgressBar prg_SetupFile{"prg_SetupFile", "Lines of the setup file sent"};
    Button cmd_CancelSetup{"cmd_CancelSetup", "Cance&l", "Send no further line."};

    /// Sends one line.
    using SendLine = std::function<SendOutcome(const std::string& line)>;
    /// Hears what is being done, in words.
    using ShowState = std::function<void(const std::string& text)>;

    /// Asks for a file and sends it; nothing when none is chosen. Shows the summary and returns it.
    ///
    /// Blank lines and lines that begin with ";" are skipped. Window events run before each line,
    /// so that the user sees the progress and may cancel. Raises the file's errors.
    std::string run(const SendLine& send_line, const ShowState& show);

    [[nodiscard]] bool running() const { return running_; }
    /// Ends the run before its next line.
    void cancel() { cancelled_ = true; }
    /// The same without a summary, for a program that is about to end.
    void abandon() { cancelled_ = abandoned_ = true; }

  private:
    struct Line {
        int number;
        std::string text;
    };
    enum class Fate { Accepted, Skipped, Cancelled };

    [[nodiscard]] static std::vector<Line> read_lines(const std::string& path);
    [[nodiscard]] Fate send_one(const Line& line, const SendLine& send_line,
                                const std::string& place, const ShowState& show);
    void show_controls(bool on);

    Services& services_;
    bool running_ = false;
    bool cancelled_ = false;
    bool abandoned_ = false;
};

} // namespace pelvan
