#include <QHBoxLayout>
#include <QScrollBar>
#include <QVBoxLayout>

#include "desktop/bindings/line_view.h"
#include "desktop/windows/console_window.h"

namespace pelvan::desktop {
namespace {

constexpr int kTwipsPerPixel = 15;
constexpr int kPageTwips = 3000;

/// The list is drawn shifted to the left by what the model's scroll bar says: the bar counts
/// downwards in twips, the view's own (hidden) bar upwards in pixels.
void follow(QAbstractItemView* view, const ScrollBar& bar) {
    view->horizontalScrollBar()->setValue(-bar.Value() / kTwipsPerPixel);
}

LineView* make_list(const BindContext& context, ListBox& model) {
    auto* view = new LineView;
    view->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    bind(context, model, view);
    return view;
}

/// The times, left of the lines that they belong to and scrolled with them.
LineView* make_times(const BindContext& context, ListBox& model, LineView* lines) {
    LineView* times = make_list(context, model);
    times->setFocusPolicy(Qt::NoFocus);
    times->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    times->setFixedWidth(times->fontMetrics().horizontalAdvance(QStringLiteral("00:00:00.0000")) +
                         2 * times->frameWidth());
    QScrollBar* down = lines->verticalScrollBar();
    QScrollBar* times_down = times->verticalScrollBar();
    const auto as_lines = [down, times_down] { times_down->setValue(down->value()); };
    QObject::connect(down, &QScrollBar::valueChanged, times, as_lines);
    QObject::connect(times_down, &QScrollBar::rangeChanged, times,
                     as_lines); // also when it appears
    QObject::connect(times_down, &QScrollBar::valueChanged, times, [times, down](int value) {
        if (times->isVisible()) down->setValue(value); // hidden, it has no height to go by
    });
    return times;
}

} // namespace

QWidget* make_history(const BindContext& context, HistoryForm& form) {
    auto* content = new QWidget;
    LineView* view = make_list(context, form.list);
    LineView* times = make_times(context, form.lst_Times, view);

    auto* bar = new QScrollBar(Qt::Horizontal, content);
    bar->setPageStep(kPageTwips);
    bar->setSingleStep(kPageTwips / 10);
    form.hscrl_List.Change = [view, &form] { follow(view, form.hscrl_List); };
    bind(context, form.hscrl_List, bar);

    auto* layout = new QVBoxLayout(content);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    auto* lists = new QHBoxLayout;
    lists->setSpacing(0);
    lists->addWidget(times);
    lists->addWidget(view, 1);
    layout->addLayout(lists, 1);
    layout->addWidget(bar);
    return content;
}

} // namespace pelvan::desktop
