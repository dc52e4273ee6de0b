// The console's controls for a command script ("setup file" in the console's words): asks for the
// file, shows how far it has come, and asks what to do about a line that fails.
#pragma once

#include <functional>

#include "console/command_script.h"
#include "forms/controls.h"
#include "platform/services.h"

namespace pelvan {

class ScriptPanel : private ScriptListener {
  public:
    /// The label shows what is being done, in words.
    ScriptPanel(Services& services, Label& status);

    /// Shown while a file is being sent.
    ProgressBar prg_SetupFile{"prg_SetupFile", "Lines of the setup file sent"};
    Button cmd_CancelSetup{"cmd_CancelSetup", "Cance&l", "Send no further line."};

    /// Asks for a file, sends it and shows the summary; nothing when none is chosen.
    ///
    /// Window events run before each line, so that the user sees the progress and may cancel.
    /// Raises the file's errors.
    void run(const SendLine& send_line);

    [[nodiscard]] bool running() const { return running_; }
    /// Ends the run before its next line, without a summary, for a program that is about to end.
    void abandon() { cancelled_ = abandoned_ = true; }

  private:
    bool line_due(const ScriptLine& line, std::size_t done, std::size_t count) override;
    ScriptAnswer line_failed(const ScriptLine& line, const std::string& reason) override;
    void show_controls(bool on);

    Services& services_;
    Label& status_;
    bool running_ = false;
    bool cancelled_ = false;
    bool abandoned_ = false;
};

} // namespace pelvan
