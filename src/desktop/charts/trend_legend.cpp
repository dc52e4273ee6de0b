#include "desktop/charts/trend_legend.h"

#include <QEvent>
#include <QHeaderView>
#include <QSignalBlocker>
#include <algorithm>
#include <cmath>

#include "desktop/bindings/qt_text.h"
#include "desktop/charts/trend_look.h"

namespace pelvan::desktop {
namespace {

constexpr int kName = 0;
constexpr int kValue = 1;
constexpr int kCellMargin = 12;

QString value_text(double value, const std::string& unit) {
    if (std::isnan(value)) return QObject::tr("no value");
    const QString number = QString::number(value, 'g', 15);
    return unit.empty() ? number : number + u' ' + visible_line(unit);
}

} // namespace

TrendLegend::TrendLegend(std::function<void()> changed)
    : QTableWidget(0, 2), changed_(std::move(changed)) {
    setObjectName(QStringLiteral("trend_legend"));
    setAccessibleName(tr("Values at the cursor"));
    setHorizontalHeaderLabels({tr("Curve"), tr("Value")});
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setSelectionBehavior(QAbstractItemView::SelectRows);
    setSelectionMode(QAbstractItemView::SingleSelection);
    setTabKeyNavigation(false);
    setToolTip(tr("A row without its tick is not drawn, and the scales fit the others. The "
                  "selected one stands out."));
    connect(this, &QTableWidget::itemChanged, this,
            [this](const QTableWidgetItem* item) { take_tick(*item); });
    connect(this, &QTableWidget::currentCellChanged, this, [this](int line, int, int former, int) {
        if (line != former) changed_();
    });
    verticalHeader()->hide();
    horizontalHeader()->setSectionResizeMode(kName, QHeaderView::Stretch);
}

void TrendLegend::show_rows(const Trend& trend) {
    const QSignalBlocker quiet(this);
    rows_ = trend.rows();
    setRowCount(static_cast<int>(rows_.size()));
    for (int line = 0; line < rowCount(); ++line) {
        const int row = rows_[static_cast<std::size_t>(line)];
        QTableWidgetItem& item = cell(line, kName);
        const QString name = visible_line(trend.label(row).name);
        item.setText(name);
        item.setToolTip(plain_tip(trend.label(row).name));
        item.setData(Qt::UserRole, row);
        item.setCheckState(hidden_.count(row) > 0 ? Qt::Unchecked : Qt::Checked);
    }
    show_colors();
}

void TrendLegend::show_colors() {
    for (int line = 0; line < rowCount(); ++line)
        cell(line, kName)
            .setData(Qt::DecorationRole,
                     curve_color(rows_[static_cast<std::size_t>(line)], is_dark(palette())));
}

void TrendLegend::show_values(const Trend& trend, double time_ms) {
    const QSignalBlocker quiet(this);
    // The column only grows: to fit it to each text would take longer than all the rest.
    int width = columnWidth(kValue);
    for (int line = 0; line < rowCount(); ++line) {
        const int row = rows_[static_cast<std::size_t>(line)];
        const QString text = value_text(trend.nearest(row, time_ms).value, trend.label(row).unit);
        QTableWidgetItem& item = cell(line, kValue);
        item.setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
        if (item.text() == text) continue;
        item.setText(text);
        width = std::max(width, fontMetrics().horizontalAdvance(text) + kCellMargin);
    }
    if (width > columnWidth(kValue)) setColumnWidth(kValue, width);
}

std::vector<int> TrendLegend::drawn() const {
    std::vector<int> drawn;
    for (const int row : rows_)
        if (hidden_.count(row) == 0) drawn.push_back(row);
    return drawn;
}

int TrendLegend::current() const {
    const auto line = static_cast<std::size_t>(currentRow());
    return currentRow() >= 0 && line < rows_.size() ? rows_[line] : -1;
}

void TrendLegend::changeEvent(QEvent* event) {
    QTableWidget::changeEvent(event);
    if (event->type() != QEvent::PaletteChange) return;
    const QSignalBlocker quiet(this);
    show_colors();
}

void TrendLegend::take_tick(const QTableWidgetItem& item) {
    if (item.column() != kName) return;
    const int row = item.data(Qt::UserRole).toInt();
    if (item.checkState() == Qt::Checked)
        hidden_.erase(row);
    else
        hidden_.insert(row);
    changed_();
}

QTableWidgetItem& TrendLegend::cell(int line, int column) {
    if (item(line, column) == nullptr) setItem(line, column, new QTableWidgetItem);
    return *item(line, column);
}

} // namespace pelvan::desktop
