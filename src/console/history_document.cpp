#include "console/history_document.h"

#include <algorithm>

#include "platform/text_file.h"
#include "text/bytes.h"

namespace pelvan {
namespace {

/// Commands longer than this push their reply to the right, rather than all replies for one.
constexpr std::size_t kWidestCommand = 60;
constexpr char kCommand[] = "Command";

std::string padded(const std::string& text, std::size_t width) {
    return text.size() < width ? text + std::string(width - text.size(), ' ') : text;
}

} // namespace

void save_document(const HistoryDocument& document, const std::string& path) {
    std::size_t width = sizeof(kCommand) - 1;
    for (const HistoryRow& row : document.rows)
        width = std::max(width, std::min(controls_in_brackets(row.command).size(), kWidestCommand));
    const std::size_t time_width = document.with_times ? sizeof("hh:mm:ss.mmm") - 1 : 0;
    const auto line = [&](const std::string& sent_at, const std::string& command,
                          const std::string& received_at, const std::string& response) {
        const std::string gap = document.with_times ? "  " : "";
        const auto time = [&](const std::string& text) {
            return document.with_times ? padded(text, time_width) + gap : std::string();
        };
        return time(sent_at) + padded(command, width) + " | " + time(received_at) + response;
    };
    const auto file = CreateTextFile(path, true);
    file->writeline(document.title);
    file->writeline(document.date);
    file->writeline("");
    file->writeline(line("Sent", kCommand, "Received", "Response"));
    for (const HistoryRow& row : document.rows)
        file->writeline(line(row.sent_at, controls_in_brackets(row.command), row.received_at,
                             controls_in_brackets(row.response)));
    file->Close();
}

} // namespace pelvan
