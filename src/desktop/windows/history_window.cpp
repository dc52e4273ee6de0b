#include <QHBoxLayout>
#include <QListView>
#include <QMenu>
#include <QPointer>
#include <QScrollBar>
#include <QVBoxLayout>

#include "desktop/windows/console_window.h"
#include "desktop/windows/first_show.h"

namespace pelvan::desktop {
namespace {

constexpr int kPageTwips = 3000;

/// Takes no room. Switched off, the bar would have no range to scroll in.
class HiddenBar : public QScrollBar {
  public:
    using QScrollBar::QScrollBar;
    [[nodiscard]] QSize sizeHint() const override { return {0, 0}; }
};

/// Opens the window's pop-up menu in a list; it is made when it is first asked for.
void add_pop_up(const BindContext& context, HistoryForm& form, QListView* view) {
    view->setContextMenuPolicy(Qt::CustomContextMenu);
    QObject::connect(view, &QListView::customContextMenuRequested, view,
                     [context, &form, view, menu = QPointer<QMenu>()](const QPoint& at) mutable {
                         if (!menu) menu = make_menu(context, form.mnuPopUp, view);
                         menu->popup(view->viewport()->mapToGlobal(at));
                     });
}

QListView* make_list(const BindContext& context, HistoryForm& form, ListBox& model) {
    auto* view = new QListView;
    view->setHorizontalScrollBar(new HiddenBar(Qt::Horizontal));
    bind(context, model, view);
    add_pop_up(context, form, view);
    return view;
}

/// A list left of the lines that it belongs to and scrolled with them, as wide as its widest text.
QListView* make_beside(const BindContext& context, HistoryForm& form, ListBox& model,
                       const char* widest, QListView* lines) {
    QListView* beside = make_list(context, form, model);
    beside->setFocusPolicy(Qt::NoFocus);
    beside->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    beside->setFixedWidth(beside->fontMetrics().horizontalAdvance(QLatin1String(widest)) +
                          2 * beside->frameWidth());
    scroll_together(lines, beside);
    return beside;
}

/// Most sessions speak one protocol and need no list of them.
class ProtocolsWhenNeeded : public QObject {
  public:
    ProtocolsWhenNeeded(const BindContext& context, HistoryForm& form, QListView* lines,
                        QBoxLayout* lists)
        : QObject(lines), shown_(form.lst_Protocols, [context, &form, lines, lists] {
              QListView* beside = make_beside(context, form, form.lst_Protocols, "Modbus  ", lines);
              lists->insertWidget(lists->indexOf(lines), beside);
          }) {}

  private:
    FirstShow shown_;
};

/// The bar counts downwards and always as far, the list's own (hidden) bar as many pixels as its
/// longest line needs: each follows the other.
void couple(const BindContext& context, HistoryForm& form, QListView* view) {
    QScrollBar* own = view->horizontalScrollBar();
    form.hscrl_List.Change = [own, &form] { own->setValue(form.scrolled_pixels(own->maximum())); };
    const auto tell = [context, own, &form] {
        context.run_unasked([own, &form] { form.list_scrolled(own->value(), own->maximum()); });
    };
    QObject::connect(own, &QScrollBar::valueChanged, view, tell);
    QObject::connect(own, &QScrollBar::rangeChanged, view, tell);
    tell();
}

} // namespace

QWidget* make_history(const BindContext& context, HistoryForm& form) {
    auto* content = new QWidget;
    QListView* view = make_list(context, form, form.list);
    auto* bar = new QScrollBar(Qt::Horizontal, content);
    bar->setAccessibleName(QStringLiteral("Scroll sideways"));
    bar->setPageStep(kPageTwips);
    bar->setSingleStep(kPageTwips / 10);
    bind(context, form.hscrl_List, bar);
    couple(context, form, view);

    auto* layout = new QVBoxLayout(content);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    auto* lists = new QHBoxLayout;
    lists->setSpacing(0);
    lists->addWidget(make_beside(context, form, form.lst_Times, "00:00:00.0000", view));
    lists->addWidget(view, 1);
    new ProtocolsWhenNeeded(context, form, view, lists);
    layout->addLayout(lists, 1);
    layout->addWidget(bar);
    return content;
}

} // namespace pelvan::desktop
