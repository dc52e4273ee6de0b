#include "desktop/printing/print_profile.h"

#include <QAbstractTextDocumentLayout>
#include <QPageLayout>
#include <QPainter>
#include <QPrintDialog>
#include <QPrintPreviewDialog>
#include <QPrinter>
#include <QTextCursor>
#include <QTextDocument>
#include <QTextTable>
#include <algorithm>

#include "desktop/bindings/qt_text.h"
#include "desktop/printing/history_table.h"

namespace pelvan::desktop {
namespace {

constexpr QMarginsF kMargins{12, 12, 12, 12}; // mm
constexpr double kCurveShare = 0.45;          // of the first page
constexpr double kCellPadding = 0.3;          // of a line

QTextTableFormat table_format(const ProfileDocument& document, qreal line) {
    QTextTableFormat format;
    format.setHeaderRowCount(1);
    format.setBorder(0.5);
    format.setBorderCollapse(true);
    format.setBorderStyle(QTextFrameFormat::BorderStyle_Solid);
    format.setCellPadding(kCellPadding * line);
    format.setWidth(QTextLength(QTextLength::PercentageLength, 100));
    format.setColumns(static_cast<int>(document.headings.size()));
    return format;
}

/// The lines and the table of steps, laid out for a page as wide and high as `page`.
std::unique_ptr<QTextDocument> make_table(const ProfileDocument& document, QPaintDevice& device,
                                          const QSizeF& page, qreal first_page_gap) {
    auto text = std::make_unique<QTextDocument>();
    text->setUndoRedoEnabled(false);
    text->documentLayout()->setPaintDevice(&device);
    text->setDefaultFont(print_font());
    text->setDocumentMargin(0);
    QTextCursor cursor(text.get());
    QTextBlockFormat below_curve;
    below_curve.setTopMargin(first_page_gap);
    cursor.setBlockFormat(below_curve);
    for (const std::string& line : document.lines) {
        cursor.insertText(visible_line(line));
        cursor.insertBlock(QTextBlockFormat());
    }
    const qreal line = QFontMetricsF(print_font(), &device).lineSpacing();
    const int rows = static_cast<int>(document.rows.size()) + 1;
    const int columns = static_cast<int>(document.headings.size());
    if (columns > 0) {
        QTextTable* table = cursor.insertTable(rows, columns, table_format(document, line));
        for (int row = 0; row < rows; ++row) {
            const auto& cells =
                row == 0 ? document.headings : document.rows[static_cast<std::size_t>(row - 1)];
            for (int column = 0; column < columns; ++column)
                table->cellAt(row, column)
                    .firstCursorPosition()
                    .insertText(to_qt(cells[static_cast<std::size_t>(column)]));
        }
    }
    text->setPageSize(page);
    return text;
}

class ProfilePages {
  public:
    ProfilePages(QPrinter& printer, const ProfileDocument& document, const PaintCurve& paint_curve)
        : printer_(printer), document_(document), paint_curve_(paint_curve),
          line_(QFontMetricsF(print_font(), &printer).lineSpacing()),
          body_(printer.pageRect(QPrinter::DevicePixel).size() - QSizeF(0, 2 * line_)),
          curve_(0, 2 * line_, body_.width(), kCurveShare * body_.height()),
          table_(make_table(document, printer, body_, curve_.height() + line_)) {}

    /// False when the printer (or the file) refused.
    bool paint() {
        QPainter painter;
        if (!painter.begin(&printer_)) return false;
        painter.setFont(print_font());
        const int count = table_->pageCount();
        const int first = std::max(printer_.fromPage(), 1);
        const int last = printer_.toPage() > 0 ? std::min(printer_.toPage(), count) : count;
        for (int page = first; page <= last; ++page) {
            if (page > first && !printer_.newPage()) return false;
            paint_head(painter, QStringLiteral("Page %1 of %2").arg(page).arg(count));
            if (page == 1) paint_curve_(painter, curve_);
            paint_table(painter, page);
        }
        return painter.end();
    }

  private:
    void paint_head(QPainter& painter, const QString& page) const {
        const QRectF place(0, 0, body_.width(), line_);
        painter.drawText(place, Qt::AlignLeft, to_qt(document_.title));
        painter.drawText(place, Qt::AlignRight, to_qt(document_.date) + "   " + page);
    }

    void paint_table(QPainter& painter, int page) const {
        const QRectF part(QPointF(0, (page - 1) * body_.height()), body_);
        QAbstractTextDocumentLayout::PaintContext look;
        look.clip = part;
        look.palette.setColor(QPalette::Text, Qt::black); // in a dark theme too
        painter.save();
        painter.translate(0, 2 * line_ - part.top());
        painter.setClipRect(part);
        table_->documentLayout()->draw(&painter, look);
        painter.restore();
    }

    QPrinter& printer_;
    const ProfileDocument& document_;
    const PaintCurve& paint_curve_;
    qreal line_;
    QSizeF body_;
    QRectF curve_;
    std::unique_ptr<QTextDocument> table_;
};

bool print_profile(const ProfileDocument& document, const PaintCurve& paint_curve,
                   const PrintRequest& request) {
    QPrinter printer(QPrinter::HighResolution);
    printer.setPageOrientation(QPageLayout::Landscape);
    printer.setPageMargins(kMargins, QPageLayout::Millimeter);
    printer.setDocName(to_qt(document.title));
    if (request.action == PrintAction::WritePdf) {
        printer.setOutputFormat(QPrinter::PdfFormat);
        printer.setOutputFileName(request.pdf_file);
    } else if (request.action == PrintAction::Preview) {
        QPrintPreviewDialog dialog(&printer, request.parent);
        QObject::connect(
            &dialog, &QPrintPreviewDialog::paintRequested, &dialog,
            [&](QPrinter* pages) { ProfilePages(*pages, document, paint_curve).paint(); });
        dialog.resize(900, 700);
        dialog.exec();
        return true;
    } else if (QPrintDialog dialog(&printer, request.parent); dialog.exec() != QDialog::Accepted) {
        return true;
    }
    return ProfilePages(printer, document, paint_curve).paint();
}

} // namespace
} // namespace pelvan::desktop

extern "C" Q_DECL_EXPORT bool pelvan_print_profile(const pelvan::ProfileDocument& document,
                                                   const pelvan::desktop::PaintCurve& paint_curve,
                                                   const pelvan::desktop::PrintRequest& request) {
    return pelvan::desktop::print_profile(document, paint_curve, request);
}
