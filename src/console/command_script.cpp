#include "console/command_script.h"

#include <algorithm>

#include "platform/text_file.h"
#include "text/numbers.h"
#include "text/strings.h"

namespace pelvan {
namespace {

constexpr char kCommentMark = ';';

/// The end mark of old text files is no fault.
bool is_text(const std::string& line) {
    return std::none_of(line.begin(), line.end(), [](char c) {
        return static_cast<unsigned char>(c) < ' ' && c != '\t' && c != '\f' && c != '\x1A';
    });
}

} // namespace

std::optional<std::vector<ScriptLine>> read_command_script(const std::string& path) {
    const auto file = opentextfile(path);
    std::vector<ScriptLine> lines;
    while (!file->AtEndOfStream()) {
        const int number = file->Line();
        const std::string text = trim(file->readline());
        if (!is_text(text)) return std::nullopt;
        if (!text.empty() && text[0] != kCommentMark) lines.push_back({number, text});
    }
    return lines;
}

std::string ScriptSummary::text() const {
    std::string text = count_text(accepted, "line") + " sent";
    if (skipped > 0) text += ", " + std::to_string(skipped) + " skipped after a failure";
    if (left > 0) text += ", cancelled with " + std::to_string(left) + " left";
    return text;
}

ScriptSummary send_script(const std::vector<ScriptLine>& lines, const SendLine& send_line,
                          ScriptListener& listener) {
    ScriptSummary summary{0, 0, lines.size()};
    const auto next = [&](std::size_t& count) {
        ++count;
        --summary.left;
    };
    while (summary.left > 0) {
        const std::size_t done = lines.size() - summary.left;
        const ScriptLine& line = lines[done];
        if (!listener.line_due(line, done, lines.size())) break;
        const SendOutcome outcome = send_line(line.text);
        if (outcome.accepted) {
            next(summary.accepted);
            continue;
        }
        const ScriptAnswer answer = listener.line_failed(line, outcome.status);
        if (answer == ScriptAnswer::Cancel) break;
        if (answer == ScriptAnswer::Skip) next(summary.skipped);
    }
    return summary;
}

} // namespace pelvan
