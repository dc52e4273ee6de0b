// Message boxes, input boxes and file dialogs on the screen, above whichever window is active.
#pragma once

#include <QStringList>
#include <functional>
#include <utility>

#include "personal/recent_files.h"
#include "platform/dialogs.h"

namespace pelvan::desktop {

inline constexpr char kApplicationTitle[] = "Pelvan 7";

class QtDialogs : public Dialogs {
  public:
    /// `before_opening` runs before each box and file dialog. `recent` (borrowed) keeps the files
    /// that were chosen; dialogs that open files offer them.
    explicit QtDialogs(
        std::function<void()> before_opening = [] {}, RecentFiles* recent = nullptr)
        : before_opening_(std::move(before_opening)), recent_(recent) {}

    MessageAnswer message_box(const std::string& text, const std::string& title,
                              MessageButtons buttons, MessageIcon icon) override;
    std::string input_box(const std::string& prompt, const std::string& title,
                          const std::string& default_text) override;
    std::optional<std::string> ask_text(const TextQuestion& question) override;
    std::optional<std::string> open_file(const FileDialogRequest& request) override;
    std::optional<std::string> save_file(const FileDialogRequest& request) override;

  private:
    std::optional<std::string> choose(const FileDialogRequest& request, bool open);

    std::function<void()> before_opening_;
    RecentFiles* recent_;
};

/// A text as a box shows it: cut where the box would outgrow the screen, control characters made
/// visible, and every line end a line end.
[[nodiscard]] QString box_text(const std::string& text);

/// "Text Files (*.txt)|*.txt|All Files (*.*)|*.*|" as {"Text Files (*.txt)", "All Files (*)"}.
[[nodiscard]] QStringList name_filters(const std::string& filter);

/// Whether a file that exists may not be written.
[[nodiscard]] bool is_read_only(const QString& path);

} // namespace pelvan::desktop
