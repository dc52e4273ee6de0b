// Dialogs that answer from a script and remember what was asked.
#pragma once

#include <deque>
#include <functional>
#include <string>
#include <vector>

#include "platform/desktop_services.h"
#include "platform/dialogs.h"

namespace pelvan::testing {

using Texts = std::vector<std::string>;

class FakeDialogs : public Dialogs {
  public:
    struct Shown {
        std::string text;
        std::string title;
        MessageButtons buttons = MessageButtons::Ok;
        MessageIcon icon = MessageIcon::None;
    };

    MessageAnswer message_box(const std::string& text, const std::string& title,
                              MessageButtons buttons, MessageIcon icon) override {
        shown.push_back({text, title, buttons, icon});
        if (on_message) on_message(text);
        if (buttons == MessageButtons::Ok) return MessageAnswer::Ok;
        const bool yes_no =
            buttons == MessageButtons::YesNo || buttons == MessageButtons::YesNoPreferNo;
        return take(answers, yes_no ? MessageAnswer::No : MessageAnswer::Cancel);
    }
    std::string input_box(const std::string& prompt, const std::string& title,
                          const std::string& default_text) override {
        prompts.push_back({prompt, title});
        last_default = default_text;
        return take(inputs, std::string());
    }
    std::optional<std::string> ask_text(const TextQuestion& question) override {
        questions.push_back(question);
        return take(texts_entered, std::optional<std::string>());
    }
    std::optional<std::string> open_file(const FileDialogRequest& request) override {
        requests.push_back(request);
        return take(files, std::optional<std::string>());
    }
    std::optional<std::string> save_file(const FileDialogRequest& request) override {
        return open_file(request);
    }

    /// Texts of all messages so far, in order.
    [[nodiscard]] Texts texts() const {
        Texts out;
        for (const auto& message : shown)
            out.push_back(message.text);
        return out;
    }

    std::vector<Shown> shown;
    std::deque<MessageAnswer> answers; // of the boxes with a choice; No or Cancel when used up
    std::deque<std::string> inputs;
    std::deque<std::optional<std::string>> files;
    std::deque<std::optional<std::string>> texts_entered; // cancelled when used up
    std::vector<TextQuestion> questions;
    std::vector<std::pair<std::string, std::string>> prompts;
    std::vector<FileDialogRequest> requests;
    std::string last_default;
    std::function<void(const std::string&)> on_message;

  private:
    template <class T> static T take(std::deque<T>& from, T otherwise) {
        if (from.empty()) return otherwise;
        T value = from.front();
        from.pop_front();
        return value;
    }
};

class FakeDesktop : public DesktopServices {
  public:
    void let_events_run() override {
        ++turns;
        if (on_turn) on_turn();
    }
    void paint_windows() override {
        if (on_paint) on_paint();
    }
    void set_clipboard_text(const std::string& text) override { clipboard = text; }
    bool show_folder_of(const std::string& path) override {
        folder_of = path;
        return has_folders;
    }
    ScreenSize screen_size() override { return screen; }
    void set_help_file(const std::string& name) override { help_file = name; }
    void show_help(const std::string&) override {}

    int turns = 0;
    std::function<void()> on_turn;
    std::function<void()> on_paint;
    std::string clipboard;
    std::string folder_of; // what `show_folder_of` was asked for last
    bool has_folders = true;
    ScreenSize screen{1920, 1080};
    std::string help_file;
};

} // namespace pelvan::testing
