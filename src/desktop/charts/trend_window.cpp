#include "desktop/charts/trend_window.h"

#include <QBoxLayout>
#include <QComboBox>
#include <QDateTime>
#include <QFileDialog>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QScreen>
#include <QSplitter>
#include <algorithm>
#include <cmath>

#include "desktop/charts/trend_export.h"

namespace pelvan::desktop {
namespace {

constexpr int kLookEveryMs = 500;
constexpr QSize kSize(1000, 600);
constexpr double kMostOfScreen = 0.9;
constexpr int kSideWidth = 300;

QString time_text(double calendar_ms) {
    return QDateTime::fromMSecsSinceEpoch(std::llround(calendar_ms), Qt::UTC)
        .toString(QStringLiteral("yyyy-MM-dd HH:mm:ss.zzz"));
}

} // namespace

TrendView::TrendView(Trend& trend, QWidget* parent)
    : QWidget(parent, Qt::Window), trend_(trend), chart_(new TrendChart),
      legend_(new TrendLegend([this] { refresh(); })), cursor_time_(new QLabel),
      scales_(new QComboBox) {
    setObjectName(QStringLiteral("trend_window"));
    setWindowTitle(tr("Trend"));
    resize(kSize.boundedTo(screen()->availableSize() * kMostOfScreen));
    lay_out();
    chart_->installEventFilter(this);
    connect(&timer_, &QTimer::timeout, this, [this] { look_for_news(); });
    timer_.start(kLookEveryMs);
    // The first drawing comes with the size that the chart is shown at.
}

void TrendView::lay_out() {
    cursor_time_->setObjectName(QStringLiteral("trend_cursor"));
    cursor_time_->setAccessibleName(tr("Time at the cursor"));
    auto* side = new QWidget;
    auto* column = new QVBoxLayout(side);
    column->setContentsMargins(0, 0, 0, 0);
    column->addWidget(cursor_time_);
    column->addWidget(legend_, 1);
    auto* splitter = new QSplitter;
    splitter->setObjectName(QStringLiteral("trend_splitter"));
    splitter->setChildrenCollapsible(false);
    splitter->addWidget(chart_);
    splitter->addWidget(side);
    splitter->setStretchFactor(0, 1);
    splitter->setSizes({kSize.width() - kSideWidth, kSideWidth});
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(splitter, 1);
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
    add(tr("Fit &All"), tr("The whole span, and all values in it (Home)"), [this] { show_all(); });
    add(tr("&Follow"), tr("Keep the newest readings in sight (End)"), [this] { follow(); });
    scales_->setObjectName(QStringLiteral("trend_scales"));
    scales_->addItems({tr("As needed"), tr("One for all"), tr("One a curve")});
    scales_->setToolTip(tr("As needed: curves of one unit and of like size share a scale."));
    connect(scales_, &QComboBox::currentIndexChanged, this, [this](int index) {
        chart_->scales().set_mode(static_cast<ScaleMode>(index));
        refresh();
    });
    auto* label = new QLabel(tr("&Scales"));
    label->setBuddy(scales_);
    scales_->setAccessibleName(tr("Scales"));
    buttons->addWidget(label);
    buttons->addWidget(scales_);
    add(tr("Save &PNG..."), tr("The picture as it stands"), [this] { ask_and_save(true); });
    add(tr("Save &CSV..."), tr("Every reading that is kept"), [this] { ask_and_save(false); });
    buttons->addStretch();
    buttons->addWidget(new QLabel(tr("Keys and mouse: F1")));
    return buttons;
}

void TrendView::look_for_news() {
    if (!isVisible() || trend_.changes() == seen_changes_) return;
    refresh();
}

void TrendView::refresh() {
    seen_changes_ = trend_.changes();
    range_.grow_to(trend_.span());
    legend_->show_rows(trend_);
    chart_->draw(trend_, range_.span(), legend_->drawn(), legend_->current());
    show_cursor();
}

void TrendView::zoom(double factor, double anchor_ms) {
    if (legend_->empty()) return;
    range_.zoom(factor, anchor_ms, trend_.span());
    refresh();
}

void TrendView::pan(double share) {
    if (legend_->empty()) return;
    range_.pan(share, trend_.span());
    refresh();
}

void TrendView::zoom_values(double factor, double share) {
    chart_->scales().zoom(factor, share);
    chart_->rescale();
}

void TrendView::pan_values(double share) {
    chart_->scales().pan(share);
    chart_->rescale();
}

void TrendView::zoom_into(const QRectF& frame) {
    const double height = frame.height() / chart_->plot().height();
    if (legend_->empty() || height >= 1 || height <= 0) return;
    const double bottom = chart_->up(frame.bottom());
    // The share of the height that stays where it is while the frame grows to all of it.
    chart_->scales().zoom(height, bottom / (1 - height));
    const double width = frame.width() / chart_->plot().width();
    const double left = chart_->across(frame.left());
    if (width < 1) range_.zoom(width, range_.time_at(left / (1 - width)), trend_.span());
    refresh();
}

void TrendView::show_all() {
    range_.show_all();
    chart_->scales().fit();
    refresh();
}

void TrendView::follow() {
    if (legend_->empty()) return show_all(); // there is no width to keep yet
    range_.follow();
    refresh();
}

void TrendView::set_cursor(double time_ms) {
    const TrendSpan all = trend_.span();
    cursor_ms_ = std::clamp(time_ms, all.from_ms, all.to_ms);
    show_cursor();
}

void TrendView::show_cursor() {
    const std::vector<int> drawn = legend_->drawn();
    if (drawn.empty()) {
        chart_->hide_cursor();
        cursor_time_->clear();
        return;
    }
    const TrendSpan all = trend_.span();
    // Until somebody moves it the cursor stands at the newest reading.
    const double wanted = cursor_ms_ >= all.from_ms && cursor_ms_ > 0 ? cursor_ms_ : all.to_ms;
    const double at = trend_.nearest(drawn.front(), wanted).time_ms;
    std::vector<TrendChart::Mark> marks;
    for (const int row : drawn)
        if (const double value = trend_.nearest(row, at).value; !std::isnan(value))
            marks.push_back({row, value});
    chart_->show_cursor(at, std::move(marks));
    cursor_time_->setText(time_text(at));
    legend_->show_values(trend_, at);
}

void TrendView::ask_and_save(bool png) {
    QFileDialog dialog(this, png ? tr("Save PNG") : tr("Save CSV"), QString(),
                       (png ? tr("Pictures (*.png)") : tr("Tables (*.csv)")) +
                           tr(";;All Files (*)"));
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setDefaultSuffix(png ? QStringLiteral("png") : QStringLiteral("csv"));
    dialog.selectFile(png ? QStringLiteral("trend.png") : QStringLiteral("trend.csv"));
    if (dialog.exec() != QDialog::Accepted) return;
    const QString path = dialog.selectedFiles().value(0);
    chart_->clearFocus(); // its frame is no part of the picture
    const bool saved =
        png ? save_trend_picture(chart_->grab(), *legend_, cursor_time_->text(), path)
            : save_trend_csv(trend_, path, this);
    chart_->setFocus();
    if (!saved)
        QMessageBox::warning(this, windowTitle(), tr("The file could not be written:\n") + path);
}

double TrendView::time_at(double x) const {
    return range_.time_at(chart_->across(x));
}

} // namespace pelvan::desktop
