// Dialogs and desktop services of a run without a screen.
#pragma once

#include <algorithm>
#include <functional>
#include <map>
#include <ostream>

#include "platform/desktop_services.h"
#include "platform/dialogs.h"

namespace pelvan {

class TerminalDialogs : public Dialogs {
  public:
    explicit TerminalDialogs(std::ostream& err) : err_(err) {}

    /// A line on standard error. A message that comes back without anything between (a bad port
    /// number in the configuration file does, for ever) aborts the command.
    MessageAnswer message_box(const std::string& text, const std::string& title,
                              MessageButtons buttons, MessageIcon icon) override;
    /// Nobody is there to type: aborts the command.
    std::string input_box(const std::string& prompt, const std::string& title,
                          const std::string& default_text) override;
    std::optional<std::string> ask_text(const TextQuestion& question) override;
    /// The name given by `choose_file`, or nothing.
    std::optional<std::string> open_file(const FileDialogRequest& request) override;
    std::optional<std::string> save_file(const FileDialogRequest& request) override;

    void answer_yes(bool yes) { yes_ = yes; }
    /// How many of the questions that offer it are answered with Retry, from now on.
    void answer_retries(int count) { retries_ = std::max(count, 0); }
    void choose_file(const std::string& path) { file_ = path; }
    /// Work went on since the last message, so the same text may come again; it is not printed
    /// again.
    void allow_last() { times_.clear(); }
    /// As `allow_last`, but the same text is printed again.
    void forget_last() {
        last_.clear();
        times_.clear();
    }

  private:
    std::ostream& err_;
    bool yes_ = false;
    int retries_ = 0;
    std::optional<std::string> file_;
    std::string last_;
    std::map<std::string, int> times_; // each text since work last went on
};

class TerminalDesktop : public DesktopServices {
  public:
    void let_events_run() override {
        if (on_events) on_events();
    }
    void paint_windows() override {}
    void set_clipboard_text(const std::string&) override {}
    bool show_folder_of(const std::string&) override { return false; }
    ScreenSize screen_size() override { return {1024, 768}; }
    void set_help_file(const std::string&) override {}
    void show_help(const std::string&) override {}

    /// Called whenever long work lets events run.
    std::function<void()> on_events;
};

} // namespace pelvan
