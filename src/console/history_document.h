// Both history lists as one document, to be saved as text or printed: a row is a command and its
// reply. No control and no dialog here, so that a printing front end needs nothing else.
#pragma once

#include <string>
#include <vector>

#include "console/command_entry.h"

namespace pelvan {

struct HistoryRow {
    std::string sent_at; // "16:30:05.250"
    std::string command;
    std::string received_at;
    std::string response;
    long taken_ms = 0; // from the one to the other, by the tick
    /// What the command was made of.
    CommandEntry entry{};
};

struct HistoryDocument {
    std::string title;
    std::string date; // when it was made
    bool with_times = false;
    std::vector<HistoryRow> rows;
};

/// The rows for a spreadsheet: a line of titles, then a line a row with both times, protocol,
/// command and response. Cells with a comma or a quotation mark stand in quotation marks.
[[nodiscard]] std::string csv_text(const std::vector<HistoryRow>& rows);

/// Writes title, date and the two lists side by side; an existing file is replaced. A control
/// character of a line stands as its number, "<0D>". Raises the file's errors.
void save_document(const HistoryDocument& document, const std::string& path);

} // namespace pelvan
