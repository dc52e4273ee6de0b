#include "desktop/charts/trend_export.h"

#include <QImage>
#include <QPainter>
#include <QPixmap>
#include <QProgressDialog>
#include <QTableWidget>
#include <algorithm>
#include <vector>

namespace pelvan::desktop {
namespace {

constexpr int kMargin = 8;
constexpr int kSwatch = 10;
constexpr std::size_t kPassesAtOnce = 100; // some 10 ms with 100 rows
constexpr int kProgressSteps = 1000;

/// The legend's lines whose curves are drawn.
std::vector<int> drawn_lines(const QTableWidget& legend) {
    std::vector<int> lines;
    for (int row = 0; row < legend.rowCount(); ++row)
        if (legend.item(row, 0)->checkState() == Qt::Checked) lines.push_back(row);
    return lines;
}

QString legend_line(const QTableWidget& legend, int row) {
    const QTableWidgetItem* value = legend.item(row, 1);
    return legend.item(row, 0)->text() +
           (value ? QStringLiteral(":  ") + value->text() : QString());
}

QColor legend_color(const QTableWidget& legend, int row) {
    return legend.item(row, 0)->data(Qt::DecorationRole).value<QColor>();
}

/// How the legend's lines stand below the chart.
struct Columns {
    int width = 0; // pixels
    int count = 1;
    int lines = 0;
};

Columns columns_of(const QTableWidget& legend, const std::vector<int>& drawn, int picture_width) {
    const QFontMetrics metrics = legend.fontMetrics();
    Columns columns;
    for (const int row : drawn)
        columns.width =
            std::max(columns.width, metrics.horizontalAdvance(legend_line(legend, row)));
    columns.width += kSwatch + 3 * kMargin;
    columns.count = std::max(1, (picture_width - kMargin) / columns.width);
    columns.lines = (static_cast<int>(drawn.size()) + columns.count - 1) / columns.count;
    return columns;
}

} // namespace

bool save_trend_picture(const QPixmap& chart, const QTableWidget& legend, const QString& title,
                        const QString& path) {
    const QFontMetrics metrics = legend.fontMetrics();
    const int line_height = metrics.height() + 2;
    const QSize chart_size = chart.deviceIndependentSize().toSize();
    const std::vector<int> drawn = drawn_lines(legend);
    const Columns columns = columns_of(legend, drawn, chart_size.width());
    const int height = chart_size.height() + (columns.lines + 1) * line_height + 2 * kMargin;
    const qreal ratio = chart.devicePixelRatio();
    QImage picture(QSize(chart_size.width(), height) * ratio, QImage::Format_RGB32);
    picture.setDevicePixelRatio(ratio);
    picture.fill(legend.palette().color(QPalette::Base));
    QPainter painter(&picture);
    painter.setFont(legend.font());
    painter.setPen(legend.palette().color(QPalette::Text));
    painter.drawPixmap(0, 0, chart);
    const int baseline = chart_size.height() + metrics.ascent();
    painter.drawText(kMargin, baseline, title);
    for (int i = 0; i < static_cast<int>(drawn.size()); ++i) {
        const int row = drawn[static_cast<std::size_t>(i)];
        const int x = kMargin + i / columns.lines * columns.width;
        const int y = baseline + (i % columns.lines + 1) * line_height;
        painter.fillRect(x, y - kSwatch + 1, kSwatch, kSwatch, legend_color(legend, row));
        painter.drawText(x + kSwatch + kMargin, y, legend_line(legend, row));
    }
    painter.end();
    return picture.save(path, "PNG");
}

bool save_trend_csv(const Trend& trend, const QString& path, QWidget* parent) {
    try {
        const auto file = trend.export_csv(path.toStdString());
        QProgressDialog progress(QObject::tr("Writing the readings ..."), QObject::tr("Cancel"), 0,
                                 kProgressSteps, parent);
        progress.setWindowModality(Qt::WindowModal);
        progress.setMinimumDuration(500);
        while (!progress.wasCanceled() && file->write_some(kPassesAtOnce))
            progress.setValue(static_cast<int>(file->share() * (kProgressSteps - 1)));
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

} // namespace pelvan::desktop
