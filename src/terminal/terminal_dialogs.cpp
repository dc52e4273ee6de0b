#include "terminal/terminal_dialogs.h"

#include "terminal/terminal.h"

namespace pelvan {
namespace {

/// A register that is written on a port whose device is gone shows the same text some thirty times
/// by rule, attempts, waits for silence and all; a message that waits for somebody to mend
/// something comes without end, perhaps in turn with another one.
constexpr int kMaxTimes = 200;

std::string one_line(const std::string& text) {
    std::string line;
    for (const char c : text) {
        const bool breaks = c == '\r' || c == '\n';
        if (!breaks)
            line += c;
        else if (!line.empty() && line.back() != ' ')
            line += ' ';
    }
    return line;
}

} // namespace

MessageAnswer TerminalDialogs::message_box(const std::string& text, const std::string& title,
                                           MessageButtons buttons, MessageIcon) {
    const bool repeated = text == last_;
    last_ = text;
    if (!repeated)
        err_ << "pelvan7: " << (title.empty() ? "" : one_line(title) + ": ") << one_line(text)
             << "\n";
    if (++times_[text] > kMaxTimes) throw CommandAborted{"stopped: " + one_line(text)};
    if (buttons == MessageButtons::YesNo || buttons == MessageButtons::YesNoPreferNo)
        return yes_ ? MessageAnswer::Yes : MessageAnswer::No;
    if (buttons == MessageButtons::RetryCancel) {
        if (retries_ == 0) return MessageAnswer::Cancel;
        --retries_; // each of them may show as many messages: their number is known
        times_.clear();
        return MessageAnswer::Retry;
    }
    if (buttons == MessageButtons::RetrySkipCancel) return MessageAnswer::Cancel;
    return MessageAnswer::Ok;
}

std::string TerminalDialogs::input_box(const std::string& prompt, const std::string&,
                                       const std::string&) {
    throw CommandAborted{"cannot ask: " + one_line(prompt)};
}

std::optional<std::string> TerminalDialogs::ask_text(const TextQuestion& question) {
    throw CommandAborted{"cannot ask: " + one_line(question.prompt)};
}

std::optional<std::string> TerminalDialogs::open_file(const FileDialogRequest&) {
    return file_;
}

std::optional<std::string> TerminalDialogs::save_file(const FileDialogRequest&) {
    return file_;
}

} // namespace pelvan
