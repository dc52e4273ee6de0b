#include <QHBoxLayout>
#include <QListView>
#include <QScrollBar>
#include <QVBoxLayout>

#include "desktop/windows/console_window.h"

namespace pelvan::desktop {
namespace {

constexpr int kTwipsPerPixel = 15;
constexpr int kPageTwips = 3000;

/// Takes no room. Switched off, the bar would have no range to scroll in.
class HiddenBar : public QScrollBar {
  public:
    using QScrollBar::QScrollBar;
    [[nodiscard]] QSize sizeHint() const override { return {0, 0}; }
};

/// The list is drawn shifted to the left by what the model's scroll bar says: the bar counts
/// downwards in twips, the view's own (hidden) bar upwards in pixels.
void follow(QAbstractItemView* view, const ScrollBar& bar) {
    view->horizontalScrollBar()->setValue(-bar.Value() / kTwipsPerPixel);
}

QListView* make_list(const BindContext& context, ListBox& model) {
    auto* view = new QListView;
    view->setHorizontalScrollBar(new HiddenBar(Qt::Horizontal));
    bind(context, model, view);
    return view;
}

/// The times, left of the lines that they belong to and scrolled with them.
QListView* make_times(const BindContext& context, ListBox& model, QListView* lines) {
    QListView* times = make_list(context, model);
    times->setFocusPolicy(Qt::NoFocus);
    times->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    times->setFixedWidth(times->fontMetrics().horizontalAdvance(QStringLiteral("00:00:00.0000")) +
                         2 * times->frameWidth());
    scroll_together(lines, times);
    return times;
}

} // namespace

QWidget* make_history(const BindContext& context, HistoryForm& form) {
    auto* content = new QWidget;
    QListView* view = make_list(context, form.list);
    QListView* times = make_times(context, form.lst_Times, view);

    auto* bar = new QScrollBar(Qt::Horizontal, content);
    bar->setAccessibleName(QStringLiteral("Scroll sideways"));
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
