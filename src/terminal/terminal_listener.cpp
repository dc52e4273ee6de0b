#include "terminal/terminal_listener.h"

#include <algorithm>

namespace pelvan {
namespace {

constexpr int kProgressStep = 10; // percent
/// Between two retries, so that a cable that came off can be put back.
constexpr int kRetryPauseMs = 1000;

} // namespace

TerminalListener::TerminalListener(TerminalApplication& terminal, TerminalEnvironment& environment,
                                   int retries)
    : terminal_(terminal), app_(terminal.app()), err_(environment.err),
      wait_ms_(environment.wait_ms) {
    terminal.answer_retries(retries);
    terminal.on_events([this, &environment] {
        if (environment.stop) cancel_.canceled = true;
    });
}

TransferContext TerminalListener::context_of(Link& link, int address, bool together) {
    return {link,
            app_.modbus,
            app_.services.clock,
            app_.services.application_directory,
            DeviceAddress(std::to_string(address)),
            *this,
            cancel_,
            together};
}

bool TerminalListener::ask_yes(const std::string& text, bool answer) {
    terminal_.answer_questions_yes(answer);
    return app_.services.dialogs.message_box(text, {}, MessageButtons::YesNoPreferNo) ==
           MessageAnswer::Yes;
}

void TerminalListener::list_error(const std::string& text, std::optional<int> position) {
    const std::ptrdiff_t count = std::ssize(errors_);
    errors_.insert(errors_.begin() + std::min<std::ptrdiff_t>(position.value_or(count), count),
                   text);
}

void TerminalListener::progress(int done, int of) {
    const int percent = 100 * done / of;
    const int reached = percent - percent % kProgressStep;
    if (reached > shown_) err_ << "pelvan7: " << reached << " %" << std::endl;
    shown_ = reached;
}

bool TerminalListener::ask_retry(const std::string& text) {
    if (app_.services.dialogs.message_box(text, {}, MessageButtons::RetryCancel) !=
        MessageAnswer::Retry)
        return false;
    wait_ms_(kRetryPauseMs);
    return true;
}

} // namespace pelvan
