#include "desktop/printing/page_lines.h"

#include <algorithm>

#include "desktop/bindings/qt_text.h"

namespace pelvan::desktop {
namespace {

constexpr int kTimeWidth = 14; // "hh:mm:ss.mmm" and a gap
constexpr int kGap = 2;
constexpr int kNarrowestColumn = 8;

struct Columns {
    int time = 0;
    int command = 0;
    int response = 0;
};

/// The commands get what they need, but no more than a third.
Columns columns_for(const HistoryDocument& document, int width) {
    Columns columns;
    columns.time = document.with_times ? kTimeWidth : 0;
    const int room = std::max(width - 2 * columns.time - kGap, 2 * kNarrowestColumn);
    qsizetype longest = kNarrowestColumn;
    for (const HistoryRow& row : document.rows)
        longest = std::max(longest, visible_line(row.command).size());
    columns.command = static_cast<int>(std::min<qsizetype>(longest, std::max(room / 3, 8)));
    columns.response = room - columns.command;
    return columns;
}

void add_row(QStringList& lines, const Columns& columns, const HistoryRow& row) {
    const QString command = visible_line(row.command);
    const QString response = visible_line(row.response);
    const auto piece = [](const QString& text, qsizetype number, qsizetype width) {
        return text.mid(number * width, width);
    };
    const auto goes_on = [](const QString& text, qsizetype number, qsizetype width) {
        return number * width < text.size();
    };
    for (qsizetype i = 0;
         i == 0 || goes_on(command, i, columns.command) || goes_on(response, i, columns.response);
         ++i) {
        const bool first = i == 0;
        lines += (first ? to_qt(row.sent_at) : QString())
                     .left(columns.time)
                     .leftJustified(columns.time) +
                 piece(command, i, columns.command).leftJustified(columns.command + kGap) +
                 (first ? to_qt(row.received_at) : QString())
                     .left(columns.time)
                     .leftJustified(columns.time) +
                 piece(response, i, columns.response);
    }
}

} // namespace

QStringList page_lines(const HistoryDocument& document, int width) {
    const Columns columns = columns_for(document, width);
    QStringList lines;
    add_row(lines, columns, {"Sent", "Command", "Received", "Response"});
    for (const HistoryRow& row : document.rows)
        add_row(lines, columns, row);
    return lines;
}

} // namespace pelvan::desktop
