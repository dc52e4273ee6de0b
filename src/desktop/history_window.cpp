#include <QFontDatabase>
#include <QScrollBar>
#include <QVBoxLayout>

#include "desktop/console_window.h"
#include "desktop/line_view.h"

namespace pelvan::desktop {
namespace {

constexpr int kTwipsPerPixel = 15;
constexpr int kPageTwips = 3000;

/// The list is drawn shifted to the left by what the model's scroll bar says: the bar counts
/// downwards in twips, the view's own (hidden) bar upwards in pixels.
void follow(QAbstractItemView* view, const ScrollBar& bar) {
    view->horizontalScrollBar()->setValue(-bar.Value() / kTwipsPerPixel);
}

} // namespace

QWidget* make_history(const BindContext& context, HistoryForm& form) {
    auto* content = new QWidget;
    auto* view = new LineView(content);
    view->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    view->setHorizontalScrollMode(QAbstractItemView::ScrollPerPixel);
    view->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    bind(context, form.list, view);

    auto* bar = new QScrollBar(Qt::Horizontal, content);
    bar->setPageStep(kPageTwips);
    bar->setSingleStep(kPageTwips / 10);
    form.hscrl_List.Change = [view, &form] { follow(view, form.hscrl_List); };
    bind(context, form.hscrl_List, bar);

    auto* layout = new QVBoxLayout(content);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(view);
    layout->addWidget(bar);
    return content;
}

} // namespace pelvan::desktop
