#include "desktop/windows/traffic_view.h"

#include <QComboBox>
#include <QHeaderView>
#include <QLabel>
#include <QPainter>
#include <QTableWidget>
#include <QTimer>
#include <QVBoxLayout>
#include <algorithm>

#include "desktop/bindings/bind.h"
#include "desktop/bindings/qt_text.h"

namespace pelvan::desktop {
namespace {

constexpr int kBeatMs = 500;
constexpr int kReplyTimes = 0;
constexpr int kBarGap = 4;

QString ms(const TimeSummary& times, double value) {
    return times.count == 0 ? QString() : QString::number(value, 'f', 1);
}

QStringList cells(const QString& name, const TrafficRow& row) {
    return {name,
            QString::number(row.requests),
            QString::number(row.unanswered),
            QString::number(row.replies),
            QString::number(row.exceptions),
            ms(row.reply, row.reply.minimum),
            ms(row.reply, row.reply.mean()),
            ms(row.reply, row.reply.maximum),
            ms(row.gap, row.gap.minimum),
            ms(row.gap, row.gap.mean()),
            ms(row.gap, row.gap.maximum)};
}

const QStringList& titles() {
    static const QStringList kTitles{
        QStringLiteral("Traffic"),    QStringLiteral("Requests"),   QStringLiteral("No reply"),
        QStringLiteral("Replies"),    QStringLiteral("Exceptions"), QStringLiteral("Reply min"),
        QStringLiteral("Reply mean"), QStringLiteral("Reply max"),  QStringLiteral("Gap min"),
        QStringLiteral("Gap mean"),   QStringLiteral("Gap max")};
    return kTitles;
}

} // namespace

HistogramView::HistogramView(QWidget* parent) : QWidget(parent) {
    setObjectName(QStringLiteral("histogram"));
    setToolTip(QStringLiteral("How many times fell between the limits (milliseconds)."));
}

void HistogramView::show_times(const Histogram& times) {
    times_ = times;
    QStringList words;
    for (std::size_t i = 0; i < Histogram::kClasses; ++i)
        if (times.count(i) > 0)
            words.append(
                QStringLiteral("%1 ms: %2").arg(to_qt(Histogram::label(i))).arg(times.count(i)));
    setAccessibleDescription(words.join(QStringLiteral("; ")));
    update();
}

QSize HistogramView::minimumSizeHint() const {
    const QFontMetrics metrics = fontMetrics();
    return {metrics.horizontalAdvance(QStringLiteral("5000-10000")) *
                static_cast<int>(Histogram::kClasses),
            metrics.height() * 8};
}

void HistogramView::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    long highest = 1;
    for (std::size_t i = 0; i < Histogram::kClasses; ++i)
        highest = std::max(highest, times_.count(i));
    const int line = fontMetrics().height();
    const int base = height() - line - kBarGap;
    const int room = base - line - kBarGap;
    const double step = static_cast<double>(width()) / static_cast<double>(Histogram::kClasses);
    for (std::size_t i = 0; i < Histogram::kClasses; ++i) {
        const int left = static_cast<int>(step * static_cast<double>(i));
        const int wide = static_cast<int>(step) - kBarGap;
        const long count = times_.count(i);
        // A class that is not empty is seen, however small it is beside the others.
        const int high = count == 0 ? 0
                                    : std::max(1, static_cast<int>(static_cast<double>(room) *
                                                                   static_cast<double>(count) /
                                                                   static_cast<double>(highest)));
        painter.fillRect(left, base - high, wide, high, palette().highlight());
        if (count > 0)
            painter.drawText(left, base - high - line, wide, line, Qt::AlignCenter,
                             QString::number(count));
        painter.drawText(left, base + kBarGap / 2, wide, line, Qt::AlignCenter,
                         to_qt(Histogram::label(i)));
    }
    painter.drawLine(0, base, width(), base);
}

TrafficView::TrafficView(const Traffic& traffic, QWidget* parent)
    : QWidget(parent), traffic_(traffic),
      table_(new QTableWidget(0, static_cast<int>(titles().size()))), which_(new QComboBox),
      histogram_(new HistogramView) {
    table_->setObjectName(QStringLiteral("traffic"));
    table_->setAccessibleName(QStringLiteral("Traffic by address and function"));
    table_->setToolTip(QStringLiteral("Modbus requests and replies; times in milliseconds, those "
                                      "of the lumps in which the adapter delivers the bytes. A "
                                      "gap runs from the beginning of one frame to that of the "
                                      "next."));
    table_->setHorizontalHeaderLabels(titles());
    table_->verticalHeader()->hide();
    table_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    table_->setSelectionBehavior(QAbstractItemView::SelectRows);
    table_->setTabKeyNavigation(false);
    which_->setObjectName(QStringLiteral("histogram_of"));
    which_->addItems({QStringLiteral("Reply times"), QStringLiteral("Gaps")});
    which_->setToolTip(QStringLiteral("Which times the histogram shows."));
    auto* label = new QLabel(QStringLiteral("Histo&gram of"));
    set_label(label, which_);
    auto* choice = new QHBoxLayout;
    choice->addWidget(label);
    choice->addWidget(which_);
    choice->addWidget(new QLabel(QStringLiteral("in milliseconds")));
    choice->addStretch();
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(table_, 2);
    layout->addLayout(choice);
    layout->addWidget(histogram_, 1);
    connect(which_, &QComboBox::currentIndexChanged, this, [this] { fill(); });
    auto* beat = new QTimer(this);
    connect(beat, &QTimer::timeout, this, [this] {
        if (traffic_.revision() != shown_ && isVisible()) fill();
    });
    beat->start(kBeatMs);
}

void TrafficView::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    fill();
}

void TrafficView::fill() {
    shown_ = traffic_.revision();
    const TrafficCounts& counts = traffic_.counts();
    table_->setRowCount(
        static_cast<int>(2 + counts.by_address().size() + counts.by_function().size()));
    int row = 0;
    fill_row(row++, QStringLiteral("All"), counts.all());
    for (const auto& [address, row_counts] : counts.by_address())
        fill_row(row++, QStringLiteral("Address %1").arg(address), row_counts);
    for (const auto& [function, row_counts] : counts.by_function())
        fill_row(row++, QStringLiteral("Function %1").arg(function), row_counts);
    fill_row(row, QStringLiteral("No Modbus frame: %1").arg(counts.damaged()), {});
    table_->resizeColumnsToContents();
    const bool replies = which_->currentIndex() == kReplyTimes;
    histogram_->setAccessibleName(which_->currentText());
    histogram_->show_times(replies ? counts.reply_times() : counts.gaps());
}

void TrafficView::fill_row(int row, const QString& name, const TrafficRow& from) {
    const bool is_remark = row == table_->rowCount() - 1;
    const QStringList texts = is_remark ? QStringList{name} : cells(name, from);
    for (int column = 0; column < table_->columnCount(); ++column) {
        QTableWidgetItem* item = table_->item(row, column);
        if (!item) {
            item = new QTableWidgetItem;
            if (column > 0) item->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
            table_->setItem(row, column, item);
        }
        item->setText(texts.value(column));
    }
}

} // namespace pelvan::desktop
