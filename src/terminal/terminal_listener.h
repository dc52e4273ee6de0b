// What transfers and profiles tell and ask on their way, on a terminal: progress and messages are
// lines on standard error, questions are answered by options, an interrupt cancels.
#pragma once

#include "registers/transfer_run.h"
#include "terminal/terminal.h"

namespace pelvan {

class TerminalListener : public TransferListener {
  public:
    /// `retries` is how often a silent controller is tried again, a second later.
    TerminalListener(TerminalApplication& terminal, TerminalEnvironment& environment, int retries);

    [[nodiscard]] Core& app() const { return app_; }
    [[nodiscard]] std::ostream& err() const { return err_; }
    [[nodiscard]] TransferContext context_of(Link& link, int address, bool together = false);
    /// Lines of the list of errors.
    [[nodiscard]] const std::vector<std::string>& errors() const { return errors_; }
    /// Shows the question, which the option has answered before.
    [[nodiscard]] bool ask_yes(const std::string& text, bool answer);

    void begun() override {}
    void working() override {}
    void log(const std::string&) override {}
    void list_error(const std::string& text, std::optional<int> position) override;
    void clear_errors() override { errors_.clear(); }
    void progress(int done, int of) override;
    void let_events_run() override { app_.services.desktop.let_events_run(); }
    bool ask_retry(const std::string& text) override;
    bool confirm(TransferQuestion, const std::string& text) override {
        return ask_yes(text, false);
    }
    void tell(const std::string& text, const std::string& title) override {
        app_.services.dialogs.message_box(text, title);
    }
    std::optional<std::string> choose_file_to_save(const std::string&) override { return {}; }

  private:
    TerminalApplication& terminal_;
    Core& app_;
    std::ostream& err_;
    const std::function<void(int ms)>& wait_ms_;
    CancelFlag cancel_;
    std::vector<std::string> errors_;
    int shown_ = 0; // percent
};

} // namespace pelvan
