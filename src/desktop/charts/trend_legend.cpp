#include "desktop/charts/trend_legend.h"

#include <QHeaderView>
#include <QSignalBlocker>
#include <cmath>

#include "desktop/charts/trend_curves.h"

namespace pelvan::desktop {
namespace {

constexpr int kWidth = 300;
constexpr int kName = 0;
constexpr int kValue = 1;

} // namespace

TrendLegend::TrendLegend(std::function<void()> ticked)
    : QTableWidget(0, 2), ticked_(std::move(ticked)) {
    setObjectName(QStringLiteral("trend_legend"));
    setAccessibleName(tr("Values at the cursor"));
    setHorizontalHeaderLabels({tr("Row"), tr("Value")});
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setTabKeyNavigation(false);
    setToolTip(tr("A row without its tick is not drawn, and the scale fits the others."));
    connect(this, &QTableWidget::itemChanged, this,
            [this](const QTableWidgetItem* item) { take_tick(*item); });
    verticalHeader()->hide();
    horizontalHeader()->setSectionResizeMode(kName, QHeaderView::Stretch);
    setFixedWidth(kWidth);
}

void TrendLegend::show_rows(const Trend& trend) {
    const QSignalBlocker quiet(this);
    rows_ = trend.rows();
    setRowCount(static_cast<int>(rows_.size()));
    for (int line = 0; line < rowCount(); ++line) {
        const int row = rows_[static_cast<std::size_t>(line)];
        QTableWidgetItem& item = cell(line, kName);
        item.setText(QString::fromStdString(trend.name(row)));
        item.setData(Qt::DecorationRole, TrendCurves::color(row));
        item.setData(Qt::UserRole, row);
        item.setCheckState(is_hidden(row) ? Qt::Unchecked : Qt::Checked);
    }
}

void TrendLegend::show_values(const Trend& trend, double time_ms) {
    const QSignalBlocker quiet(this);
    for (int line = 0; line < rowCount(); ++line) {
        const double value = trend.nearest(rows_[static_cast<std::size_t>(line)], time_ms).value;
        cell(line, kValue)
            .setText(std::isnan(value) ? tr("no value") : QString::number(value, 'g', 15));
    }
}

void TrendLegend::take_tick(const QTableWidgetItem& item) {
    if (item.column() != kName) return;
    const int row = item.data(Qt::UserRole).toInt();
    if (item.checkState() == Qt::Checked)
        hidden_.erase(row);
    else
        hidden_.insert(row);
    ticked_();
}

QTableWidgetItem& TrendLegend::cell(int line, int column) {
    if (item(line, column) == nullptr) setItem(line, column, new QTableWidgetItem);
    return *item(line, column);
}

} // namespace pelvan::desktop
