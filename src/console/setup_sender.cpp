#include "console/setup_sender.h"

#include "platform/text_file.h"
#include "text/strings.h"

namespace pelvan {
namespace {

constexpr char kTitle[] = "Send Setup File";
constexpr char kCommentMark = ';';

std::string counted(std::size_t count, const char* word) {
    return std::to_string(count) + " " + word + (count == 1 ? "" : "s");
}

} // namespace

SetupSender::SetupSender(Services& services) : services_(services) {
    cmd_CancelSetup.Click = [this] { cancel(); };
    show_controls(false);
}

void SetupSender::show_controls(bool on) {
    running_ = on;
    prg_SetupFile.set_Visible(on);
    cmd_CancelSetup.set_Visible(on);
}

std::vector<SetupSender::Line> SetupSender::read_lines(const std::string& path) {
    const auto file = opentextfile(path);
    std::vector<Line> lines;
    while (!file->AtEndOfStream()) {
        const int number = file->Line();
        const std::string text = trim(file->readline());
        if (!text.empty() && text[0] != kCommentMark) lines.push_back({number, text});
    }
    return lines;
}

SetupSender::Fate SetupSender::send_one(const Line& line, const SendLine& send_line,
                                        const std::string& place, const ShowState& show) {
    for (;;) {
        show(place + ": " + line.text);
        services_.desktop.let_events_run();
        if (cancelled_) return Fate::Cancelled;
        const SendOutcome outcome = send_line(line.text);
        if (outcome.accepted) return Fate::Accepted;
        const std::string question = "Line " + std::to_string(line.number) + " failed:\n" +
                                     line.text + "\n\n" + outcome.status;
        switch (services_.dialogs.message_box(question, kTitle, MessageButtons::RetrySkipCancel,
                                              MessageIcon::Exclamation)) {
        case MessageAnswer::Retry:
            continue;
        case MessageAnswer::Skip:
            return Fate::Skipped;
        default:
            return Fate::Cancelled;
        }
    }
}

std::string SetupSender::run(const SendLine& send_line, const ShowState& show) {
    FileDialogRequest request;
    request.title = kTitle;
    request.filter = "Text Files (*.txt)|*.txt|All Files (*.*)|*.*|";
    request.initial_directory = services_.application_directory;
    request.must_exist = true;
    const auto path = services_.dialogs.open_file(request);
    if (!path) return {};
    const std::vector<Line> lines = read_lines(*path);

    struct Shown {
        explicit Shown(SetupSender& sender) : owner(sender) { owner.show_controls(true); }
        Shown(const Shown&) = delete;
        Shown& operator=(const Shown&) = delete;
        ~Shown() { owner.show_controls(false); }
        SetupSender& owner;
    };
    std::size_t accepted = 0;
    std::size_t skipped = 0;
    {
        const Shown shown(*this);
        cancelled_ = false;
        prg_SetupFile.set_Max(static_cast<double>(lines.size()));
        prg_SetupFile.set_Value(0);
        for (const Line& line : lines) {
            const std::string place =
                std::to_string(accepted + skipped + 1) + " of " + std::to_string(lines.size());
            const Fate fate = send_one(line, send_line, place, show);
            if (fate == Fate::Cancelled) break;
            ++(fate == Fate::Accepted ? accepted : skipped);
            prg_SetupFile.set_Value(static_cast<double>(accepted + skipped));
        }
    }
    const std::size_t left = lines.size() - accepted - skipped;
    std::string summary = counted(accepted, "line") + " sent";
    if (skipped > 0) summary += ", " + std::to_string(skipped) + " skipped after a failure";
    if (left > 0) summary += ", cancelled with " + std::to_string(left) + " left";
    show(summary);
    if (!abandoned_) services_.dialogs.message_box(summary, kTitle);
    return summary;
}

} // namespace pelvan
