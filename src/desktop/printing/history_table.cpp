#include "desktop/printing/history_table.h"

#include <QAbstractTextDocumentLayout>
#include <QFontDatabase>
#include <QFontMetricsF>
#include <QTextCursor>
#include <QTextOption>
#include <QTextTable>
#include <algorithm>

#include "desktop/bindings/qt_text.h"

namespace pelvan::desktop {
namespace {

constexpr qreal kPointSize = 8;
constexpr char kGap[] = "  "; // behind a line that fills its column

QStringList cells(const HistoryDocument& document, const HistoryRow& row) {
    if (!document.with_times) return {visible_line(row.command), visible_line(row.response)};
    return {to_qt(row.sent_at), visible_line(row.command), to_qt(row.received_at),
            visible_line(row.response)};
}

/// In percent of the page, because the toolkit takes fixed widths for those of a screen. The
/// commands get what they need, but no more than a third.
QList<QTextLength> column_widths(const HistoryDocument& document, QPaintDevice& device,
                                 qreal page_width) {
    const QFontMetricsF metrics(print_font(), &device);
    const QString gap = QString::fromLatin1(kGap);
    qreal command = metrics.horizontalAdvance(QStringLiteral("Command") + gap);
    for (const HistoryRow& row : document.rows)
        command = std::max(command, metrics.horizontalAdvance(visible_line(row.command) + gap));
    const auto share = [page_width](qreal width) {
        return QTextLength(QTextLength::PercentageLength,
                           100 * std::min(width / page_width, 1.0 / 3));
    };
    const QTextLength time = share(metrics.horizontalAdvance(QStringLiteral("00:00:00.000") + gap));
    if (!document.with_times) return {share(command), QTextLength()};
    return {time, share(command), time, QTextLength()};
}

void fill(QTextTable& table, int row, const QStringList& texts, qreal gap) {
    QTextBlockFormat with_gap;
    with_gap.setRightMargin(gap);
    for (int column = 0; column < table.columns(); ++column) {
        QTextCursor cell = table.cellAt(row, column).firstCursorPosition();
        if (column < table.columns() - 1) cell.setBlockFormat(with_gap);
        cell.insertText(texts[column]);
    }
}

} // namespace

QFont print_font() {
    QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    font.setPointSizeF(kPointSize);
    return font;
}

std::unique_ptr<QTextDocument> history_table(const HistoryDocument& document, QPaintDevice& device,
                                             const QSizeF& page) {
    auto text = std::make_unique<QTextDocument>();
    text->setUndoRedoEnabled(false);
    text->documentLayout()->setPaintDevice(&device);
    text->setDefaultFont(print_font());
    text->setDocumentMargin(0);
    QTextOption option;
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    text->setDefaultTextOption(option);
    QTextTableFormat format;
    format.setHeaderRowCount(1);
    format.setBorder(0);
    format.setCellSpacing(0);
    format.setWidth(QTextLength(QTextLength::PercentageLength, 100));
    format.setColumnWidthConstraints(column_widths(document, device, page.width()));
    const int rows = static_cast<int>(document.rows.size()) + 1;
    // In the device's own pixels, other than fixed widths; less than what the columns allow for,
    // which is rounded.
    const qreal gap =
        0.9 * QFontMetricsF(print_font(), &device).horizontalAdvance(QString::fromLatin1(kGap));
    QTextCursor cursor(text.get());
    cursor.beginEditBlock();
    QTextTable* table = cursor.insertTable(rows, document.with_times ? 4 : 2, format);
    fill(*table, 0, cells(document, {"Sent", "Command", "Received", "Response"}), gap);
    for (int row = 1; row < rows; ++row)
        fill(*table, row, cells(document, document.rows[static_cast<std::size_t>(row - 1)]), gap);
    cursor.endEditBlock();
    text->setPageSize(page);
    return text;
}

} // namespace pelvan::desktop
