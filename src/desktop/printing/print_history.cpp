#include "desktop/printing/print_history.h"

#include <QAbstractTextDocumentLayout>
#include <QFontMetricsF>
#include <QPageLayout>
#include <QPainter>
#include <QPrintDialog>
#include <QPrintPreviewDialog>
#include <QPrinter>
#include <algorithm>

#include "desktop/bindings/qt_text.h"
#include "desktop/printing/history_table.h"

namespace pelvan::desktop {
namespace {

constexpr QMarginsF kMargins{15, 15, 15, 15}; // mm
constexpr int kHeadLines = 2;                 // title, date and page, and an empty line

/// Every page begins with title, date and page number; the table's head line follows.
class Pages {
  public:
    Pages(QPrinter& printer, const HistoryDocument& document)
        : printer_(printer), title_(to_qt(document.title)), date_(to_qt(document.date)),
          line_height_(QFontMetricsF(print_font(), &printer).lineSpacing()),
          body_(printer.pageRect(QPrinter::DevicePixel).size() -
                QSizeF(0, kHeadLines * line_height_)),
          table_(history_table(document, printer, body_)) {}

    /// False when the printer (or the file) refused.
    bool paint() {
        QPainter painter;
        if (!painter.begin(&printer_)) return false;
        painter.setFont(print_font());
        const int count = table_->pageCount();
        const int first = printer_.fromPage() > 0 ? printer_.fromPage() : 1;
        const int last = printer_.toPage() > 0 ? std::min(printer_.toPage(), count) : count;
        for (int page = first; page <= last; ++page) {
            if (page > first && !printer_.newPage()) return false;
            paint_head(painter, QStringLiteral("Page %1 of %2").arg(page).arg(count));
            paint_table(painter, page);
        }
        return painter.end();
    }

  private:
    void paint_head(QPainter& painter, const QString& page) const {
        const QRectF place(0, 0, body_.width(), line_height_);
        painter.drawText(place, Qt::AlignLeft, title_);
        painter.drawText(place, Qt::AlignRight, date_ + QStringLiteral("   ") + page);
        const qreal below = 1.5 * line_height_;
        painter.drawLine(QPointF(0, below), QPointF(body_.width(), below));
    }

    void paint_table(QPainter& painter, int page) const {
        const QRectF part(QPointF(0, (page - 1) * body_.height()), body_);
        QAbstractTextDocumentLayout::PaintContext look;
        look.clip = part;
        look.palette.setColor(QPalette::Text, Qt::black); // in a dark theme too
        painter.save();
        painter.translate(0, kHeadLines * line_height_ - part.top());
        painter.setClipRect(part);
        table_->documentLayout()->draw(&painter, look);
        painter.restore();
    }

    QPrinter& printer_;
    QString title_;
    QString date_;
    qreal line_height_;
    QSizeF body_;
    std::unique_ptr<QTextDocument> table_;
};

bool show_preview(QPrinter& printer, const HistoryDocument& document, QWidget* parent) {
    QPrintPreviewDialog dialog(&printer, parent);
    QObject::connect(&dialog, &QPrintPreviewDialog::paintRequested, &dialog,
                     [&document](QPrinter* pages) { Pages(*pages, document).paint(); });
    dialog.resize(900, 700);
    dialog.exec();
    return true;
}

bool ask_and_print(QPrinter& printer, const HistoryDocument& document, QWidget* parent) {
    QPrintDialog dialog(&printer, parent);
    if (dialog.exec() != QDialog::Accepted) return true;
    return Pages(printer, document).paint();
}

bool print_history(const HistoryDocument& document, const PrintRequest& request) {
    QPrinter printer(QPrinter::HighResolution);
    printer.setPageMargins(kMargins, QPageLayout::Millimeter);
    printer.setDocName(to_qt(document.title));
    switch (request.action) {
    case PrintAction::Preview:
        return show_preview(printer, document, request.parent);
    case PrintAction::WritePdf:
        printer.setOutputFormat(QPrinter::PdfFormat);
        printer.setOutputFileName(request.pdf_file);
        return Pages(printer, document).paint();
    case PrintAction::Print:
        break;
    }
    return ask_and_print(printer, document, request.parent);
}

} // namespace
} // namespace pelvan::desktop

extern "C" Q_DECL_EXPORT bool pelvan_print_history(const pelvan::HistoryDocument& document,
                                                   const pelvan::desktop::PrintRequest& request) {
    return pelvan::desktop::print_history(document, request);
}
