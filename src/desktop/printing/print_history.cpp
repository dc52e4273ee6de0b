#include "desktop/printing/print_history.h"

#include <QFontDatabase>
#include <QFontMetricsF>
#include <QPageLayout>
#include <QPainter>
#include <QPrintDialog>
#include <QPrintPreviewDialog>
#include <QPrinter>
#include <algorithm>

#include "desktop/bindings/qt_text.h"
#include "desktop/printing/page_lines.h"

namespace pelvan::desktop {
namespace {

constexpr qreal kPointSize = 8;
constexpr QMarginsF kMargins{15, 15, 15, 15}; // mm
constexpr int kHeaderLines = 3;               // title and page, columns' titles, an empty one

/// Writes the pages one after another; every page begins with title, date, page and column titles.
class Pages {
  public:
    Pages(QPrinter& printer, const HistoryDocument& document)
        : printer_(printer), font_(QFontDatabase::systemFont(QFontDatabase::FixedFont)),
          area_(QPointF(), printer.pageRect(QPrinter::DevicePixel).size()) {
        font_.setPointSizeF(kPointSize);
        const QFontMetricsF metrics(font_, &printer);
        line_height_ = metrics.lineSpacing();
        lines_ =
            page_lines(document, static_cast<int>(area_.width() / metrics.horizontalAdvance(u'0')));
        columns_ = lines_.takeFirst();
        per_page_ = std::max(1, static_cast<int>(area_.height() / line_height_) - kHeaderLines);
        title_ = to_qt(document.title);
        date_ = to_qt(document.date);
    }

    /// False when the printer (or the file) refused.
    bool paint() {
        QPainter painter;
        if (!painter.begin(&printer_)) return false;
        painter.setFont(font_);
        const int count = page_count();
        const int first = printer_.fromPage() > 0 ? printer_.fromPage() : 1;
        const int last = printer_.toPage() > 0 ? std::min(printer_.toPage(), count) : count;
        for (int page = first; page <= last; ++page) {
            if (page > first && !printer_.newPage()) return false;
            paint_page(painter, page);
        }
        return painter.end();
    }

  private:
    [[nodiscard]] int page_count() const {
        return std::max(1, (static_cast<int>(lines_.size()) + per_page_ - 1) / per_page_);
    }

    void paint_page(QPainter& painter, int page) {
        const QString number = QStringLiteral("Page %1 of %2").arg(page).arg(page_count());
        const QRectF head = line_place(0);
        painter.drawText(head, Qt::AlignLeft, title_);
        painter.drawText(head, Qt::AlignRight, date_ + QStringLiteral("   ") + number);
        painter.drawText(line_place(1), Qt::AlignLeft, columns_);
        painter.drawLine(line_place(1).bottomLeft(), line_place(1).bottomRight());
        const int first = (page - 1) * per_page_;
        const int end = std::min<int>(first + per_page_, static_cast<int>(lines_.size()));
        for (int i = first; i < end; ++i)
            painter.drawText(line_place(kHeaderLines + i - first), Qt::AlignLeft, lines_[i]);
    }

    [[nodiscard]] QRectF line_place(int line) const {
        return {area_.left(), area_.top() + line * line_height_, area_.width(), line_height_};
    }

    QPrinter& printer_;
    QFont font_;
    QRectF area_;
    qreal line_height_ = 1;
    int per_page_ = 1;
    QStringList lines_;
    QString columns_;
    QString title_;
    QString date_;
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
