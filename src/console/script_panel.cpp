#include "console/script_panel.h"

#include "text/strings.h"

namespace pelvan {
namespace {

constexpr char kTitle[] = "Send Setup File";
constexpr std::size_t kShownLine = 200; // characters of a line in a box or the status line

} // namespace

ScriptPanel::ScriptPanel(Services& services, Label& status) : services_(services), status_(status) {
    cmd_CancelSetup.Click = [this] { cancelled_ = true; };
    show_controls(false);
}

void ScriptPanel::show_controls(bool on) {
    running_ = on;
    prg_SetupFile.set_Visible(on);
    cmd_CancelSetup.set_Visible(on);
}

bool ScriptPanel::line_due(const ScriptLine& line, std::size_t done, std::size_t count) {
    prg_SetupFile.set_Max(static_cast<double>(count));
    prg_SetupFile.set_Value(static_cast<double>(done));
    status_.set_Caption(std::to_string(done + 1) + " of " + std::to_string(count) + ": " +
                        shortened(line.text, kShownLine));
    services_.desktop.let_events_run();
    return !cancelled_;
}

ScriptAnswer ScriptPanel::line_failed(const ScriptLine& line, const std::string& reason) {
    const std::string question = "Line " + std::to_string(line.number) + " failed:\n" +
                                 shortened(line.text, kShownLine) + "\n\n" +
                                 shortened(reason, kShownLine);
    switch (services_.dialogs.message_box(question, kTitle, MessageButtons::RetrySkipCancel,
                                          MessageIcon::Exclamation)) {
    case MessageAnswer::Retry:
        return ScriptAnswer::Retry;
    case MessageAnswer::Skip:
        return ScriptAnswer::Skip;
    default:
        return ScriptAnswer::Cancel;
    }
}

void ScriptPanel::run(const SendLine& send_line) {
    FileDialogRequest request;
    request.title = kTitle;
    request.filter = "Text Files (*.txt)|*.txt|All Files (*.*)|*.*|";
    request.initial_directory = services_.application_directory;
    request.must_exist = true;
    request.kind = "commands";
    const auto path = services_.dialogs.open_file(request);
    if (!path) return;
    const auto lines = read_command_script(*path);
    if (!lines) {
        services_.dialogs.message_box("\"" + *path + "\" is no text file.", kTitle,
                                      MessageButtons::Ok, MessageIcon::Exclamation);
        return;
    }
    struct Shown {
        explicit Shown(ScriptPanel& panel) : owner(panel) { owner.show_controls(true); }
        Shown(const Shown&) = delete;
        Shown& operator=(const Shown&) = delete;
        ~Shown() { owner.show_controls(false); }
        ScriptPanel& owner;
    };
    ScriptSummary summary;
    {
        const Shown shown(*this);
        cancelled_ = false;
        summary = send_script(*lines, send_line, *this);
    }
    status_.set_Caption(summary.text());
    if (!abandoned_) services_.dialogs.message_box(summary.text(), kTitle);
}

} // namespace pelvan
