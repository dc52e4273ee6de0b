#include "desktop/charts/trend_window.h"

#include <QBoxLayout>
#include <QChart>
#include <QChartView>
#include <QDateTime>
#include <QDateTimeAxis>
#include <QFileDialog>
#include <QGraphicsLineItem>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QMessageBox>
#include <QMouseEvent>
#include <QPushButton>
#include <QSignalBlocker>
#include <QTableWidget>
#include <QValueAxis>
#include <QWheelEvent>
#include <algorithm>
#include <cmath>
#include <limits>

#include "desktop/charts/trend_export.h"

namespace pelvan::desktop {
namespace {

constexpr int kLookEveryMs = 500;
constexpr std::size_t kPointBudget = 10000; // over all curves: more only slows the picture
constexpr std::size_t kFewestBuckets = 50;
constexpr double kShortestMs = 2000;
constexpr double kZoomStep = 0.8;
constexpr double kPanStep = 0.1;
constexpr double kCursorStep = 0.01;
constexpr int kLegendWidth = 300;

/// Calendar time as the chart counts it. The chart shows the machine's local time.
qint64 chart_time(double calendar_ms) {
    const QDateTime as_utc = QDateTime::fromMSecsSinceEpoch(std::llround(calendar_ms), Qt::UTC);
    return QDateTime(as_utc.date(), as_utc.time(), Qt::LocalTime).toMSecsSinceEpoch();
}

QString time_text(double calendar_ms) {
    return QDateTime::fromMSecsSinceEpoch(std::llround(calendar_ms), Qt::UTC)
        .toString(QStringLiteral("yyyy-MM-dd HH:mm:ss.zzz"));
}

/// The table's cell, made when it is not there.
QTableWidgetItem& cell(QTableWidget& table, int row, int column) {
    if (table.item(row, column) == nullptr) table.setItem(row, column, new QTableWidgetItem);
    return *table.item(row, column);
}

} // namespace

TrendView::TrendView(Trend& trend, QWidget* parent) : QWidget(parent, Qt::Window), trend_(trend) {
    setObjectName(QStringLiteral("trend_window"));
    setWindowTitle(tr("Trend"));
    resize(1000, 600);
    build();
    connect(&timer_, &QTimer::timeout, this, [this] { look_for_news(); });
    timer_.start(kLookEveryMs);
    // The place of the curves follows the size of the window and of the axes' labels.
    connect(chart_, &QChart::plotAreaChanged, this, [this] { show_cursor(); });
    // The first drawing comes with the size that the window is shown at.
}

void TrendView::build() {
    chart_ = new QChart;
    chart_->setMargins({4, 4, 4, 4});
    times_ = new QDateTimeAxis(chart_);
    times_->setFormat(QStringLiteral("HH:mm:ss"));
    values_ = new QValueAxis(chart_);
    chart_->addAxis(times_, Qt::AlignBottom);
    chart_->addAxis(values_, Qt::AlignLeft);
    view_ = new QChartView(chart_);
    view_->setObjectName(QStringLiteral("trend_chart"));
    view_->setAccessibleName(tr("Trend"));
    view_->setToolTip(tr("Wheel or + - zoom, drag or Shift+arrows pan, arrows move the cursor, "
                         "Home shows everything, End follows."));
    view_->setFocusPolicy(Qt::StrongFocus);
    view_->setMouseTracking(true);
    view_->viewport()->setMouseTracking(true);
    view_->installEventFilter(this);
    view_->viewport()->installEventFilter(this);
    line_ = new QGraphicsLineItem(chart_);
    line_->setPen(QPen(Qt::darkGray, 1, Qt::DashLine));
    line_->setZValue(10);

    chart_->legend()->hide(); // the table beside it names every row
    curves_ = std::make_unique<TrendCurves>(chart_, times_, values_);
    build_legend();

    auto* buttons = new QHBoxLayout;
    add_button(*buttons, tr("Show &All"), tr("The whole span (Home)"), [this] { show_all(); });
    add_button(*buttons, tr("&Follow"), tr("Keep the newest readings in sight (End)"),
               [this] { follow(); });
    add_button(*buttons, tr("Save &PNG..."), tr("The picture as it stands"),
               [this] { ask_and_save(true); });
    add_button(*buttons, tr("Save &CSV..."), tr("Every reading that is kept"),
               [this] { ask_and_save(false); });
    buttons->addStretch();
    auto* side = new QVBoxLayout;
    side->addWidget(cursor_time_);
    side->addWidget(legend_, 1);
    auto* middle = new QHBoxLayout;
    middle->addWidget(view_, 1);
    middle->addLayout(side);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(middle, 1);
    layout->addLayout(buttons);
}

void TrendView::build_legend() {
    legend_ = new QTableWidget(0, 2);
    legend_->setObjectName(QStringLiteral("trend_legend"));
    legend_->setAccessibleName(tr("Values at the cursor"));
    legend_->setHorizontalHeaderLabels({tr("Row"), tr("Value")});
    legend_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    legend_->setTabKeyNavigation(false);
    legend_->setToolTip(tr("A row without its tick is not drawn, and the scale fits the others."));
    connect(legend_, &QTableWidget::itemChanged, this,
            [this](const QTableWidgetItem* item) { take_tick(*item); });
    legend_->verticalHeader()->hide();
    legend_->horizontalHeader()->setSectionResizeMode(0, QHeaderView::Stretch);
    legend_->setFixedWidth(kLegendWidth);
    cursor_time_ = new QLabel;
    cursor_time_->setObjectName(QStringLiteral("trend_cursor"));
}

void TrendView::add_button(QLayout& layout, const QString& text, const QString& tip,
                           const std::function<void()>& action) {
    auto* button = new QPushButton(text);
    button->setToolTip(tip);
    button->setObjectName(QString(text).remove(QLatin1Char('&')).remove(QLatin1Char('.')));
    connect(button, &QPushButton::clicked, this, action);
    layout.addWidget(button);
}

void TrendView::look_for_news() {
    if (!isVisible() || trend_.passes() == seen_passes_) return;
    refresh();
}

void TrendView::refresh() {
    seen_passes_ = trend_.passes();
    const TrendSpan all = trend_.span();
    if (whole_ || visible_.to_ms <= visible_.from_ms)
        visible_ = {all.from_ms, std::max(all.to_ms, all.from_ms + kShortestMs)};
    else if (following_)
        visible_ = {visible_.from_ms + all.to_ms - visible_.to_ms, all.to_ms};
    show_rows();
    draw_curves();
    show_cursor();
}

void TrendView::show_rows() {
    const QSignalBlocker quiet(legend_);
    shown_ = trend_.rows();
    curves_->keep(shown_);
    legend_->setRowCount(static_cast<int>(shown_.size()));
    for (int i = 0; i < legend_->rowCount(); ++i) {
        const int row = shown_[static_cast<std::size_t>(i)];
        QTableWidgetItem& item = cell(*legend_, i, 0);
        item.setText(QString::fromStdString(trend_.name(row)));
        item.setData(Qt::DecorationRole, TrendCurves::color(row));
        item.setData(Qt::UserRole, row);
        item.setCheckState(hidden_.count(row) ? Qt::Unchecked : Qt::Checked);
    }
}

void TrendView::take_tick(const QTableWidgetItem& item) {
    if (item.column() != 0) return;
    const int row = item.data(Qt::UserRole).toInt();
    if (item.checkState() == Qt::Checked)
        hidden_.erase(row);
    else
        hidden_.insert(row);
    refresh();
}

void TrendView::draw_curves() {
    const auto width = static_cast<std::size_t>(std::max(view_->width(), 100));
    const std::size_t buckets = std::clamp(
        kPointBudget / 2 / std::max<std::size_t>(shown_.size(), 1), kFewestBuckets, width);
    const double shift =
        static_cast<double>(chart_time(visible_.to_ms)) - std::round(visible_.to_ms);
    double low = std::numeric_limits<double>::max();
    double high = std::numeric_limits<double>::lowest();
    std::vector<QList<QPointF>> curves;
    for (const int row : shown_) {
        QList<QPointF>& points = curves.emplace_back();
        if (hidden_.count(row)) continue;
        for (const TrendPoint& point : trend_.points(row, visible_, buckets)) {
            points.append({point.time_ms + shift, point.value});
            if (std::isnan(point.value)) continue;
            low = std::min(low, point.value);
            high = std::max(high, point.value);
        }
    }
    curves_->clear();
    times_->setRange(QDateTime::fromMSecsSinceEpoch(chart_time(visible_.from_ms)),
                     QDateTime::fromMSecsSinceEpoch(chart_time(visible_.to_ms)));
    scale_values(low, high);
    for (std::size_t i = 0; i < curves.size(); ++i)
        curves_->draw(shown_[i], curves[i]);
}

void TrendView::scale_values(double low, double high) {
    if (low > high) low = high = 0;
    const double margin = high > low ? (high - low) * 0.05 : std::max(std::abs(high) * 0.1, 1.0);
    values_->setRange(low - margin, high + margin);
}

void TrendView::zoom(double factor, double anchor_ms) {
    if (trend_.passes() == 0) return;
    const TrendSpan all = trend_.span();
    const double width = visible_.to_ms - visible_.from_ms;
    const double wanted =
        std::clamp(width * factor, kShortestMs, std::max(all.to_ms - all.from_ms, kShortestMs));
    const double share = std::clamp((anchor_ms - visible_.from_ms) / width, 0.0, 1.0);
    visible_.from_ms = anchor_ms - share * wanted;
    visible_.to_ms = visible_.from_ms + wanted;
    whole_ = following_ = false;
    refresh();
}

void TrendView::pan(double share) {
    if (trend_.passes() == 0) return;
    const TrendSpan all = trend_.span();
    const double width = visible_.to_ms - visible_.from_ms;
    const double latest = std::max(all.to_ms - width, all.from_ms);
    const double from = std::clamp(visible_.from_ms + share * width, all.from_ms, latest);
    visible_ = {from, from + width};
    whole_ = following_ = false;
    refresh();
}

void TrendView::show_all() {
    whole_ = true;
    following_ = false;
    refresh();
}

void TrendView::follow() {
    if (trend_.passes() == 0) return show_all(); // there is no width to keep yet
    whole_ = false;
    following_ = true;
    refresh();
}

void TrendView::set_cursor(double time_ms) {
    const TrendSpan all = trend_.span();
    cursor_ms_ = std::clamp(time_ms, all.from_ms, all.to_ms);
    show_cursor();
}

void TrendView::show_cursor() {
    if (shown_.empty()) {
        line_->setVisible(false);
        cursor_time_->clear();
        return;
    }
    const TrendSpan all = trend_.span();
    // Until somebody moves it the cursor stands at the newest reading.
    const double wanted = cursor_ms_ >= all.from_ms ? cursor_ms_ : all.to_ms;
    const double at = trend_.nearest(shown_.front(), wanted).time_ms;
    const QRectF plot = chart_->plotArea();
    const double share = (at - visible_.from_ms) / (visible_.to_ms - visible_.from_ms);
    const double x = plot.left() + share * plot.width();
    line_->setVisible(share >= 0 && share <= 1);
    line_->setLine(x, plot.top(), x, plot.bottom());
    cursor_time_->setText(time_text(at));
    const QSignalBlocker quiet(legend_);
    for (int i = 0; i < legend_->rowCount(); ++i) {
        const double value = trend_.nearest(shown_[static_cast<std::size_t>(i)], at).value;
        cell(*legend_, i, 1)
            .setText(std::isnan(value) ? tr("no value") : QString::number(value, 'g', 15));
    }
}

void TrendView::ask_and_save(bool png) {
    const QString path = QFileDialog::getSaveFileName(
        this, png ? tr("Save PNG") : tr("Save CSV"),
        png ? QStringLiteral("trend.png") : QStringLiteral("trend.csv"),
        (png ? tr("Pictures (*.png)") : tr("Tables (*.csv)")) + tr(";;All Files (*)"));
    if (path.isEmpty()) return;
    const bool saved = png ? save_trend_picture(view_->grab(), *legend_, cursor_time_->text(), path)
                           : save_trend_csv(trend_, path, this);
    if (!saved)
        QMessageBox::warning(this, windowTitle(), tr("The file could not be written:\n") + path);
}

double TrendView::time_at(double x) const {
    const QRectF plot = chart_->plotArea();
    const double share = (x - plot.left()) / std::max(plot.width(), 1.0);
    return visible_.from_ms + share * (visible_.to_ms - visible_.from_ms);
}

bool TrendView::eventFilter(QObject* watched, QEvent* event) {
    if (watched == view_ && event->type() == QEvent::KeyPress) {
        const auto& key = *static_cast<QKeyEvent*>(event);
        if (key_pressed(key.key(), key.modifiers().testFlag(Qt::ShiftModifier))) return true;
    }
    if (watched != view_ && mouse_used(event)) return true;
    return QWidget::eventFilter(watched, event);
}

bool TrendView::key_pressed(int key, bool shift) {
    const double width = visible_.to_ms - visible_.from_ms;
    const double anchor =
        std::clamp(cursor_ms_ > 0 ? cursor_ms_ : visible_.to_ms, visible_.from_ms, visible_.to_ms);
    const double direction = key == Qt::Key_Left ? -1 : 1;
    switch (key) {
    case Qt::Key_Plus:
    case Qt::Key_Equal:
        zoom(kZoomStep, anchor);
        return true;
    case Qt::Key_Minus:
        zoom(1 / kZoomStep, anchor);
        return true;
    case Qt::Key_Left:
    case Qt::Key_Right:
        if (shift)
            pan(direction * kPanStep);
        else
            set_cursor(anchor + direction * kCursorStep * width);
        return true;
    case Qt::Key_Home:
        show_all();
        return true;
    case Qt::Key_End:
        follow();
        return true;
    default:
        return false;
    }
}

bool TrendView::mouse_used(QEvent* event) {
    switch (event->type()) {
    case QEvent::Wheel: {
        const auto& wheel = *static_cast<QWheelEvent*>(event);
        if (wheel.angleDelta().y() == 0) return false;
        zoom(wheel.angleDelta().y() > 0 ? kZoomStep : 1 / kZoomStep, time_at(wheel.position().x()));
        return true;
    }
    case QEvent::MouseButtonPress:
        drag_from_ = static_cast<QMouseEvent*>(event)->position().x();
        return false;
    case QEvent::MouseButtonRelease:
        drag_from_ = -1;
        return false;
    case QEvent::MouseMove: {
        const double x = static_cast<QMouseEvent*>(event)->position().x();
        if (drag_from_ < 0) {
            set_cursor(time_at(x));
            return false;
        }
        pan((drag_from_ - x) / std::max(chart_->plotArea().width(), 1.0));
        drag_from_ = x;
        return true;
    }
    default:
        return false;
    }
}

void TrendView::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    refresh();
}

} // namespace pelvan::desktop
