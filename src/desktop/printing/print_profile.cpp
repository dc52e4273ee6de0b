#include "desktop/printing/print_profile.h"

#include <QFontMetricsF>
#include <QPageLayout>
#include <QPainter>
#include <QPrintDialog>
#include <QPrintPreviewDialog>
#include <QPrinter>
#include <algorithm>
#include <vector>

#include "desktop/bindings/qt_text.h"
#include "desktop/printing/history_table.h"

namespace pelvan::desktop {
namespace {

constexpr QMarginsF kMargins{12, 12, 12, 12}; // mm
constexpr double kCurveShare = 0.45;          // of the first page
constexpr double kRowHeight = 1.3;            // lines

/// The table of steps on as many pages as it takes, its head on each.
class StepTable {
  public:
    StepTable(const ProfileDocument& document, QPaintDevice& device, qreal width)
        : document_(document), metrics_(print_font(), &device) {
        qreal all = 0;
        for (std::size_t i = 0; i < document.headings.size(); ++i) {
            widths_.push_back(width_of(i));
            all += widths_.back();
        }
        // A table that is wider than the page is cut at the columns' ends.
        for (qreal& each : widths_)
            each *= std::min(1.0, width / std::max(all, 1.0));
    }

    [[nodiscard]] std::size_t rows() const { return document_.rows.size(); }
    /// Rows that have room below a head.
    [[nodiscard]] std::size_t rows_in(qreal height) const {
        const qreal left = height - head_height();
        return left < row_height() ? 0 : static_cast<std::size_t>(left / row_height());
    }

    void paint(QPainter& painter, qreal top, std::size_t first, std::size_t end) const {
        paint_row(painter, top, head_height(), document_.headings);
        top += head_height();
        for (std::size_t row = first; row < end; ++row, top += row_height())
            paint_row(painter, top, row_height(), document_.rows[row]);
    }

  private:
    [[nodiscard]] qreal row_height() const { return kRowHeight * metrics_.lineSpacing(); }
    [[nodiscard]] qreal head_height() const {
        qsizetype lines = 1;
        for (const std::string& head : document_.headings)
            lines = std::max(lines, to_qt(head).count(u'\n') + 1);
        return (static_cast<qreal>(lines) - 1) * metrics_.lineSpacing() + row_height();
    }
    [[nodiscard]] qreal width_of(std::size_t column) const {
        qreal width = 0;
        for (const QString& line : to_qt(document_.headings[column]).split(u'\n'))
            width = std::max(width, metrics_.horizontalAdvance(line));
        for (const auto& row : document_.rows)
            width = std::max(width, metrics_.horizontalAdvance(to_qt(row[column])));
        return width + 2 * metrics_.horizontalAdvance(u' ');
    }
    void paint_row(QPainter& painter, qreal top, qreal height,
                   const std::vector<std::string>& texts) const {
        const qreal gap = metrics_.horizontalAdvance(u' ');
        qreal left = 0;
        for (std::size_t i = 0; i < widths_.size(); left += widths_[i], ++i) {
            const QRectF place(left, top, widths_[i], height);
            painter.drawRect(place);
            painter.drawText(place.adjusted(gap, 0, 0, 0), Qt::AlignLeft | Qt::AlignVCenter,
                             to_qt(texts[i]));
        }
    }

    const ProfileDocument& document_;
    QFontMetricsF metrics_;
    std::vector<qreal> widths_;
};

class ProfilePages {
  public:
    ProfilePages(QPrinter& printer, const ProfileDocument& document, const PaintCurve& paint_curve)
        : printer_(printer), document_(document), paint_curve_(paint_curve),
          line_(QFontMetricsF(print_font(), &printer).lineSpacing()),
          page_(printer.pageRect(QPrinter::DevicePixel).size()),
          table_(document, printer, page_.width()) {
        const auto rows = [this](qreal top) { return table_.rows_in(page_.height() - top); };
        ends_.push_back(std::min(rows(curve_place().bottom() + line_), table_.rows()));
        // A page takes a row at least, however small it is.
        const std::size_t more = std::max<std::size_t>(rows(2 * line_), 1);
        while (ends_.back() < table_.rows())
            ends_.push_back(std::min(ends_.back() + more, table_.rows()));
    }

    /// False when the printer (or the file) refused.
    bool paint() {
        QPainter painter;
        if (!painter.begin(&printer_)) return false;
        painter.setFont(print_font());
        const int count = static_cast<int>(ends_.size());
        const int first = std::clamp(printer_.fromPage(), 1, count);
        const int last = printer_.toPage() > 0 ? std::min(printer_.toPage(), count) : count;
        for (int page = first; page <= last; ++page) {
            if (page > first && !printer_.newPage()) return false;
            paint_page(painter, page);
        }
        return painter.end();
    }

  private:
    /// Below the head line, the lines of the document and an empty one.
    [[nodiscard]] QRectF curve_place() const {
        const qreal top = (2 + static_cast<qreal>(document_.lines.size())) * line_;
        return {0, top, page_.width(), kCurveShare * page_.height()};
    }

    void paint_page(QPainter& painter, int page) const {
        const QRectF place(0, 0, page_.width(), line_);
        painter.drawText(place, Qt::AlignLeft, to_qt(document_.title));
        painter.drawText(place, Qt::AlignRight,
                         to_qt(document_.date) +
                             QStringLiteral("   Page %1 of %2").arg(page).arg(ends_.size()));
        const auto at = static_cast<std::size_t>(page - 1);
        if (page > 1) return table_.paint(painter, 2 * line_, ends_[at - 1], ends_[at]);
        for (std::size_t i = 0; i < document_.lines.size(); ++i)
            painter.drawText(place.translated(0, static_cast<qreal>(i + 1) * line_), Qt::AlignLeft,
                             to_qt(document_.lines[i]));
        painter.save();
        paint_curve_(painter, curve_place());
        painter.restore();
        if (ends_[0] > 0) table_.paint(painter, curve_place().bottom() + line_, 0, ends_[0]);
    }

    QPrinter& printer_;
    const ProfileDocument& document_;
    const PaintCurve& paint_curve_;
    qreal line_;
    QSizeF page_;
    StepTable table_;
    std::vector<std::size_t> ends_; // the row behind the last one of each page
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
