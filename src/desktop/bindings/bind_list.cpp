#include <QAbstractListModel>
#include <QKeyEvent>
#include <QListView>
#include <QScopedValueRollback>
#include <QScrollBar>
#include <algorithm>
#include <utility>

#include "desktop/bindings/bind.h"
#include "desktop/bindings/qt_text.h"
#include "desktop/bindings/update_throttle.h"

namespace pelvan::desktop {
namespace {

constexpr int kMargin = 4;           // left and right of a line, pixels
constexpr int kScrollCharacters = 4; // that an arrow key moves a list with long lines

/// The control's lines, read where they are. Its own count lags behind the control's: lines that
/// were added come in when the throttle says so. All lines are as wide as the widest, so that the
/// view need not ask each one.
class LineModel : public QAbstractListModel {
  public:
    LineModel(const ListBox& list, const QWidget& view, QObject* parent)
        : QAbstractListModel(parent), list_(list), view_(view), count_(list.ListCount()) {
        measure(0);
    }

    [[nodiscard]] int rowCount(const QModelIndex& parent) const override {
        return parent.isValid() ? 0 : count_;
    }
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override {
        if (role == Qt::SizeHintRole) return QSize(widest_, view_.fontMetrics().height() + 2);
        if (role != Qt::DisplayRole || index.row() >= list_.ListCount()) return {};
        return visible_line(list_.List(index.row()));
    }

    [[nodiscard]] int count() const { return count_; }

    void line_inserted(int row) {
        beginInsertRows({}, row, row);
        ++count_;
        widen(row);
        endInsertRows();
    }
    /// Takes in the lines that were added at the end.
    void grow() {
        if (list_.ListCount() <= count_) return;
        const int first = count_;
        beginInsertRows({}, first, list_.ListCount() - 1);
        count_ = list_.ListCount();
        measure(first);
        endInsertRows();
    }
    void reread() {
        beginResetModel();
        count_ = list_.ListCount();
        measure(0);
        endResetModel();
    }
    /// Every line from `first` on; with 0 after a change of the font as well.
    void measure(int first) {
        if (first == 0) widest_ = 0;
        for (int row = first; row < count_; ++row)
            widen(row);
    }

  private:
    void widen(int row) {
        const QString line = visible_line(list_.List(row));
        widest_ = std::max(widest_, view_.fontMetrics().horizontalAdvance(line) + 2 * kMargin);
    }

    const ListBox& list_;
    const QWidget& view_;
    int count_;
    int widest_ = 0; // pixels
};

/// The selected rows of a view from top to bottom; what touches is one range.
std::vector<LineRange> selected_rows(const QItemSelectionModel& model) {
    std::vector<LineRange> rows;
    for (const QItemSelectionRange& range : model.selection())
        rows.push_back({range.top(), range.bottom()});
    std::sort(rows.begin(), rows.end(),
              [](const LineRange& a, const LineRange& b) { return a.first < b.first; });
    std::vector<LineRange> joined;
    for (const LineRange& range : rows) {
        if (joined.empty() || range.first > joined.back().last + 1)
            joined.push_back(range);
        else
            joined.back().last = std::max(joined.back().last, range.last);
    }
    return joined;
}

class ListBinding : public QObject {
  public:
    ListBinding(const BindContext& context, ListBox& list, QListView* view,
                std::function<bool()> held)
        : QObject(view), list_(list), view_(view), held_(std::move(held)),
          lines_(new LineModel(list, *view, this)),
          throttle_(new UpdateThrottle(this, [this] { catch_up(); })),
          binding_(new Binding(context, list, view, [this] { show_selected(); })) {
        view->setModel(lines_);
        binding_->refresh();
        connect_selection();
        connect(view, &QListView::doubleClicked, this, [this] {
            if (list_.DblClick) binding_->tell_later([this] { list_.DblClick(); });
        });
        view->installEventFilter(this);
    }

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (watched == view_ && event->type() == QEvent::KeyPress)
            return scroll_sideways(static_cast<QKeyEvent*>(event)->key());
        if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange) {
            lines_->measure(0);
            view_->doItemsLayout();
        }
        return QObject::eventFilter(watched, event);
    }

  private:
    void connect_selection() {
        QItemSelectionModel* model = view_->selectionModel();
        if (!list_.multi_select()) {
            connect(model, &QItemSelectionModel::currentChanged, this,
                    [this](const QModelIndex& current) {
                        binding_->tell([this, row = current.row()] { list_.set_ListIndex(row); });
                    });
            return;
        }
        const auto tell = [this] { tell_selected(); };
        connect(model, &QItemSelectionModel::selectionChanged, this, tell);
        connect(model, &QItemSelectionModel::currentChanged, this, tell);
    }

    void tell_selected() {
        if (showing_) return;
        binding_->tell(
            [this, rows = selected_rows(*view_->selectionModel()),
             current = view_->currentIndex().row()] { list_.set_Selected(rows, current); });
    }

    bool scroll_sideways(int key) {
        if (key != Qt::Key_Left && key != Qt::Key_Right) return false;
        const int step = kScrollCharacters * view_->fontMetrics().averageCharWidth();
        QScrollBar* bar = view_->horizontalScrollBar();
        bar->setValue(bar->value() + (key == Qt::Key_Left ? -step : step));
        return true;
    }

    void changed(ListChange change, int index) {
        const bool all_others_shown = lines_->count() + 1 == list_.ListCount();
        if (change == ListChange::Inserted && all_others_shown)
            lines_->line_inserted(index);
        else if (change == ListChange::Inserted || change == ListChange::Cleared)
            lines_->reread();
        scroll_wanted_ = scroll_wanted_ || change == ListChange::Selected;
        throttle_->request();
    }

    void catch_up() {
        const bool stands_still = stays();
        lines_->grow();
        view_->setAutoScroll(!stands_still);
        binding_->refresh();
        view_->setAutoScroll(true);
        if (stands_still) scroll_wanted_ = false;
        // A view scrolls to what becomes its current line; to what is already, it must be told.
        if (std::exchange(scroll_wanted_, false) && list_.ListIndex() >= 0)
            view_->scrollTo(lines_->index(list_.ListIndex(), 0));
    }

    [[nodiscard]] bool stays() const {
        const QScrollBar& bar = *view_->verticalScrollBar();
        return held_ && (held_() || bar.value() < bar.maximum());
    }

    void show_selected() {
        if (view_->model() != lines_ || list_.ListIndex() >= lines_->count()) return;
        if (list_.multi_select()) {
            show_several();
            return;
        }
        const int row = view_->currentIndex().row(); // -1 when there is none
        if (row == list_.ListIndex()) return;
        if (list_.ListIndex() < 0)
            view_->selectionModel()->clear();
        else
            view_->setCurrentIndex(lines_->index(list_.ListIndex(), 0));
    }

    /// Several lines: what is selected, and which of them the keyboard moves.
    void show_several() {
        const QScopedValueRollback<bool> guard(showing_, true);
        QItemSelectionModel& model = *view_->selectionModel();
        if (selected_rows(model) != list_.Selected()) {
            QItemSelection wanted;
            for (const LineRange& range : list_.Selected())
                wanted.select(lines_->index(range.first, 0), lines_->index(range.last, 0));
            model.select(wanted, QItemSelectionModel::ClearAndSelect);
        }
        if (view_->currentIndex().row() != list_.ListIndex())
            model.setCurrentIndex(lines_->index(list_.ListIndex(), 0),
                                  QItemSelectionModel::NoUpdate);
    }

    ListBox& list_;
    QListView* view_;
    std::function<bool()> held_;
    LineModel* lines_;
    UpdateThrottle* throttle_;
    Binding* binding_;
    bool scroll_wanted_ = false;
    bool showing_ = false;
    Subscription changes_ =
        list_.watch_lines([this](ListChange change, int index) { changed(change, index); });
};

} // namespace

void bind(const BindContext& context, ListBox& model, QListView* view, std::function<bool()> held) {
    view->setEditTriggers(QAbstractItemView::NoEditTriggers);
    view->setSelectionMode(model.multi_select() ? QAbstractItemView::ExtendedSelection
                                                : QAbstractItemView::SingleSelection);
    view->setUniformItemSizes(true);
    view->setHorizontalScrollMode(QAbstractItemView::ScrollPerPixel);
    new ListBinding(context, model, view, std::move(held));
}

void scroll_together(QListView* lines, QListView* beside) {
    QScrollBar* leader = lines->verticalScrollBar();
    QScrollBar* follower = beside->verticalScrollBar();
    const auto follow = [leader, follower] { follower->setValue(leader->value()); };
    QObject::connect(leader, &QScrollBar::valueChanged, beside, follow);
    // Also when it appears; hidden, it has no height to go by.
    QObject::connect(follower, &QScrollBar::rangeChanged, beside, follow);
    QObject::connect(follower, &QScrollBar::valueChanged, beside, [beside, leader](int value) {
        if (beside->isVisible()) leader->setValue(value);
    });
}

} // namespace pelvan::desktop
