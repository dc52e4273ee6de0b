// What the program asks a person in the middle of its work: message boxes, input boxes and file
// dialogs. All are modal. In the terminal a message is a line and questions are answered by
// options.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace pelvan {

/// Enter presses the first button; with `YesNoPreferNo` it presses No, where a Yes by mistake could
/// not be taken back.
enum class MessageButtons { Ok, YesNo, YesNoPreferNo, RetryCancel, RetrySkipCancel };
enum class MessageIcon { None, Exclamation };
enum class MessageAnswer { Ok, Yes, No, Retry, Skip, Cancel };

/// An open or save dialog. `filter` has the classic form "Text Files (*.txt)|*.txt|All Files
/// (*.*)|*.*|".
struct FileDialogRequest {
    std::string title;
    std::string filter;
    std::string initial_directory;
    std::string file_name;
    std::string default_extension; // without a point; appended to a name that has none
    std::string kind;              // of file, for the lists of recent ones; empty: in none of them
    bool must_exist = false;
    bool overwrite_prompt = false;
    bool refuse_read_only = false;
};

/// A text that is asked for; the suggestions can be chosen instead of typing.
struct TextQuestion {
    std::string prompt;
    std::string title;
    std::string default_text;
    std::vector<std::string> suggestions;
};

class Dialogs {
  public:
    virtual ~Dialogs() = default;

    /// Blocks until answered. An empty title means the application's title. Closing the box answers
    /// Ok, No or Cancel by its buttons.
    virtual MessageAnswer message_box(const std::string& text, const std::string& title = {},
                                      MessageButtons buttons = MessageButtons::Ok,
                                      MessageIcon icon = MessageIcon::None) = 0;

    /// The text entered; empty when cancelled, which no caller tells from an empty entry.
    virtual std::string input_box(const std::string& prompt, const std::string& title,
                                  const std::string& default_text) = 0;

    /// The text entered, which may be empty, or nothing when cancelled.
    virtual std::optional<std::string> ask_text(const TextQuestion& question) = 0;

    /// The chosen path, or nothing when cancelled.
    virtual std::optional<std::string> open_file(const FileDialogRequest& request) = 0;
    virtual std::optional<std::string> save_file(const FileDialogRequest& request) = 0;
};

} // namespace pelvan
