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

/// A cell of a table that is separated by commas (RFC 4180).
std::string csv_cell(const std::string& text) {
    const std::string shown = controls_in_brackets(text);
    if (shown.find_first_of(",\"") == shown.npos) return shown;
    std::string cell = "\"";
    for (const char c : shown)
        cell += c == '"' ? "\"\"" : std::string(1, c);
    return cell + "\"";
}

} // namespace

std::string csv_text(const std::vector<HistoryRow>& rows) {
    std::string text = "Sent,Protocol,Command,Received,Response\r\n";
    for (const HistoryRow& row : rows)
        text += csv_cell(row.sent_at) + "," + protocol::name(row.entry.protocol) + "," +
                csv_cell(row.command) + "," + csv_cell(row.received_at) + "," +
                csv_cell(row.response) + "\r\n";
    return text;
}

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
