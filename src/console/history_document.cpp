#include "console/history_document.h"

#include <algorithm>

#include "platform/text_file.h"
#include "text/numbers.h"

namespace pelvan {
namespace {

/// Commands longer than this push their reply to the right, rather than all replies for one.
constexpr std::size_t kWidestCommand = 60;
constexpr char kCommand[] = "Command";

std::string printable(const std::string& line) {
    std::string out;
    for (const char each : line) {
        const auto code = static_cast<unsigned char>(each);
        const bool control = code < 0x20 || code == 0x7F;
        out += control ? "<" + hex_text(code, 2) + ">" : std::string(1, each);
    }
    return out;
}

std::string padded(const std::string& text, std::size_t width) {
    return text.size() < width ? text + std::string(width - text.size(), ' ') : text;
}

} // namespace

void save_document(const HistoryDocument& document, const std::string& path) {
    std::size_t width = sizeof(kCommand) - 1;
    for (const HistoryRow& row : document.rows)
        width = std::max(width, std::min(printable(row.command).size(), kWidestCommand));
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
        file->writeline(
            line(row.sent_at, printable(row.command), row.received_at, printable(row.response)));
    file->Close();
}

} // namespace pelvan
