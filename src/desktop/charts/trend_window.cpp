#include "desktop/charts/trend_window.h"

#include <QBoxLayout>
#include <QChart>
#include <QDateTime>
#include <QFileDialog>
#include <QKeyEvent>
#include <QLabel>
#include <QMessageBox>
#include <QMouseEvent>
#include <QPushButton>
#include <QWheelEvent>
#include <algorithm>
#include <cmath>

#include "desktop/charts/trend_export.h"

namespace pelvan::desktop {
namespace {

constexpr int kLookEveryMs = 500;
constexpr double kZoomStep = 0.8;
constexpr double kPanStep = 0.1;
constexpr double kCursorStep = 0.01;

QString time_text(double calendar_ms) {
    return QDateTime::fromMSecsSinceEpoch(std::llround(calendar_ms), Qt::UTC)
        .toString(QStringLiteral("yyyy-MM-dd HH:mm:ss.zzz"));
}

} // namespace

TrendView::TrendView(Trend& trend, QWidget* parent)
    : QWidget(parent, Qt::Window), trend_(trend), chart_(new TrendChart),
      legend_(new TrendLegend([this] { refresh(); })), cursor_time_(new QLabel) {
    setObjectName(QStringLiteral("trend_window"));
    setWindowTitle(tr("Trend"));
    resize(1000, 600);
    lay_out();
    chart_->installEventFilter(this);
    chart_->viewport()->installEventFilter(this);
    connect(&timer_, &QTimer::timeout, this, [this] { look_for_news(); });
    timer_.start(kLookEveryMs);
    // The place of the curves follows the size of the window and of the axes' labels.
    connect(chart_->chart(), &QChart::plotAreaChanged, this, [this] { show_cursor(); });
    // The first drawing comes with the size that the window is shown at.
}

void TrendView::lay_out() {
    cursor_time_->setObjectName(QStringLiteral("trend_cursor"));
    auto* side = new QVBoxLayout;
    side->addWidget(cursor_time_);
    side->addWidget(legend_, 1);
    auto* middle = new QHBoxLayout;
    middle->addWidget(chart_, 1);
    middle->addLayout(side);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(middle, 1);
    layout->addLayout(make_buttons());
}

QBoxLayout* TrendView::make_buttons() {
    auto* buttons = new QHBoxLayout;
    const auto add = [&](const QString& text, const QString& tip, std::function<void()> action) {
        auto* button = new QPushButton(text);
        button->setToolTip(tip);
        button->setObjectName(QString(text).remove(QLatin1Char('&')).remove(QLatin1Char('.')));
        connect(button, &QPushButton::clicked, this, std::move(action));
        buttons->addWidget(button);
    };
    add(tr("Show &All"), tr("The whole span (Home)"), [this] { show_all(); });
    add(tr("&Follow"), tr("Keep the newest readings in sight (End)"), [this] { follow(); });
    add(tr("Save &PNG..."), tr("The picture as it stands"), [this] { ask_and_save(true); });
    add(tr("Save &CSV..."), tr("Every reading that is kept"), [this] { ask_and_save(false); });
    buttons->addStretch();
    return buttons;
}

void TrendView::look_for_news() {
    if (!isVisible() || trend_.passes() == seen_passes_) return;
    refresh();
}

void TrendView::refresh() {
    seen_passes_ = trend_.passes();
    range_.grow_to(trend_.span());
    legend_->show_rows(trend_);
    std::vector<bool> hidden;
    for (const int row : legend_->rows())
        hidden.push_back(legend_->is_hidden(row));
    chart_->draw(trend_, range_.span(), legend_->rows(), hidden);
    show_cursor();
}

void TrendView::zoom(double factor, double anchor_ms) {
    if (trend_.passes() == 0) return;
    range_.zoom(factor, anchor_ms, trend_.span());
    refresh();
}

void TrendView::pan(double share) {
    if (trend_.passes() == 0) return;
    range_.pan(share, trend_.span());
    refresh();
}

void TrendView::show_all() {
    range_.show_all();
    refresh();
}

void TrendView::follow() {
    if (trend_.passes() == 0) return show_all(); // there is no width to keep yet
    range_.follow();
    refresh();
}

void TrendView::set_cursor(double time_ms) {
    const TrendSpan all = trend_.span();
    cursor_ms_ = std::clamp(time_ms, all.from_ms, all.to_ms);
    show_cursor();
}

void TrendView::show_cursor() {
    if (legend_->rows().empty()) {
        chart_->hide_cursor();
        cursor_time_->clear();
        return;
    }
    const TrendSpan all = trend_.span();
    // Until somebody moves it the cursor stands at the newest reading.
    const double wanted = cursor_ms_ >= all.from_ms ? cursor_ms_ : all.to_ms;
    const double at = trend_.nearest(legend_->rows().front(), wanted).time_ms;
    chart_->show_cursor(range_.share_of(at));
    cursor_time_->setText(time_text(at));
    legend_->show_values(trend_, at);
}

void TrendView::ask_and_save(bool png) {
    const QString path = QFileDialog::getSaveFileName(
        this, png ? tr("Save PNG") : tr("Save CSV"),
        png ? QStringLiteral("trend.png") : QStringLiteral("trend.csv"),
        (png ? tr("Pictures (*.png)") : tr("Tables (*.csv)")) + tr(";;All Files (*)"));
    if (path.isEmpty()) return;
    const bool saved =
        png ? save_trend_picture(chart_->grab(), *legend_, cursor_time_->text(), path)
            : save_trend_csv(trend_, path, this);
    if (!saved)
        QMessageBox::warning(this, windowTitle(), tr("The file could not be written:\n") + path);
}

double TrendView::time_at(double x) const {
    return range_.time_at(chart_->share_at(x));
}

bool TrendView::eventFilter(QObject* watched, QEvent* event) {
    if (watched == chart_ && event->type() == QEvent::KeyPress) {
        const auto& key = *static_cast<QKeyEvent*>(event);
        if (key_pressed(key.key(), key.modifiers().testFlag(Qt::ShiftModifier))) return true;
    }
    if (watched != chart_ && mouse_used(event)) return true;
    return QWidget::eventFilter(watched, event);
}

bool TrendView::key_pressed(int key, bool shift) {
    const TrendSpan& visible = range_.span();
    const double anchor =
        std::clamp(cursor_ms_ > 0 ? cursor_ms_ : visible.to_ms, visible.from_ms, visible.to_ms);
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
            set_cursor(anchor + direction * kCursorStep * range_.width());
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
        pan((drag_from_ - x) / chart_->plot_width());
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
