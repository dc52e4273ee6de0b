// The person at the boxes and the file dialogs, who answers and types anything, or has gone away.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "harness.h"
#include "platform/desktop_services.h"
#include "platform/dialogs.h"
#include "text/strings.h"

namespace pelvan::fuzz {

/// What is typed, apart from any bytes.
inline const std::vector<std::string>& typed_texts() {
    static const std::vector<std::string> texts =
        split("|0|1|3|16|247|300|742|-1|1.5|4000|65535|65536|99999999999|1e300|x|0 5|1 2 3|FFFF|"
              "01ca|? SP1|= SP1 100|9600|9600,N,8,1|1, 3|0.1|simulated:742|hostile|"
              "simulated:loopback|name|20.5|\xC2\xB0"
              "F",
              '|');
    return texts;
}

inline constexpr const char* kFiles[] = {
    "setup.txt", "set.PV5", "profiles.txt", "script.txt", "record.csv", "missing.x", ".", "log"};

class AnyAnswers : public Dialogs, public DesktopServices {
  public:
    explicit AnyAnswers(Input& input) : input_(input) {}

    MessageAnswer message_box(const std::string& text, const std::string&, MessageButtons buttons,
                              MessageIcon) override {
        require(text != "INTERNAL ERROR" && text != "OUT OF MEMORY ERROR", "no fault of its own");
        if (in_box) in_box();
        const bool gone = ++boxes_ > 200 || input_.empty();
        const unsigned choice = gone ? 0 : input_.below(4);
        switch (buttons) {
        case MessageButtons::Ok:
            return gone || choice == 3 ? MessageAnswer::Skip : MessageAnswer::Ok;
        case MessageButtons::YesNo:
        case MessageButtons::YesNoPreferNo:
            return choice < 1 ? MessageAnswer::No : MessageAnswer::Yes;
        case MessageButtons::RetryCancel:
        case MessageButtons::RetrySkipCancel:
            break;
        }
        if (choice == 1 && buttons == MessageButtons::RetrySkipCancel) return MessageAnswer::Skip;
        return choice < 2 ? MessageAnswer::Cancel : MessageAnswer::Retry;
    }
    std::string input_box(const std::string&, const std::string&, const std::string&) override {
        return text();
    }
    std::optional<std::string> ask_text(const TextQuestion&) override {
        if (in_box) in_box();
        return input_.below(4) == 0 ? std::nullopt : std::optional(text());
    }
    std::optional<std::string> open_file(const FileDialogRequest&) override {
        if (in_box) in_box();
        return input_.below(4) == 0 ? std::nullopt : std::optional(file());
    }
    std::optional<std::string> save_file(const FileDialogRequest& request) override {
        return open_file(request);
    }

    void let_events_run() override {
        if (in_turn) in_turn();
    }
    void paint_windows() override {}
    void set_clipboard_text(const std::string&) override {}
    bool show_folder_of(const std::string&) override { return input_.flag(); }
    ScreenSize screen_size() override { return {1024, 768}; }
    void set_help_file(const std::string&) override {}
    void show_help(const std::string&) override {}

    /// Something that is typed; never a path that leads out of the working directory.
    std::string text() {
        const unsigned choice = input_.byte();
        if (choice < 200) return typed_texts()[choice % typed_texts().size()];
        std::string typed(input_.piece());
        std::replace(typed.begin(), typed.end(), '/', '-');
        return typed;
    }
    std::string file() { return directory + "/" + kFiles[input_.below(std::size(kFiles))]; }

    std::function<void()> in_box;
    std::function<void()> in_turn;
    std::string directory;

  private:
    Input& input_;
    int boxes_ = 0;
};

} // namespace pelvan::fuzz
