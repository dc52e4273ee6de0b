#include <QAbstractItemView>
#include <QAbstractListModel>
#include <QListView>
#include <utility>

#include "desktop/bindings/bind.h"
#include "desktop/bindings/qt_text.h"
#include "desktop/bindings/update_throttle.h"

namespace pelvan::desktop {
namespace {

/// The control's lines, read where they are. Its own count lags behind the control's: lines that
/// were added come in when the throttle says so.
class LineModel : public QAbstractListModel {
  public:
    LineModel(const ListBox& list, QObject* parent)
        : QAbstractListModel(parent), list_(list), count_(list.ListCount()) {}

    [[nodiscard]] int rowCount(const QModelIndex& parent) const override {
        return parent.isValid() ? 0 : count_;
    }
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override {
        if (role != Qt::DisplayRole || index.row() >= list_.ListCount()) return {};
        return visible_line(list_.List(index.row()));
    }

    [[nodiscard]] int count() const { return count_; }

    void line_inserted(int row) {
        beginInsertRows({}, row, row);
        ++count_;
        endInsertRows();
    }
    /// Takes in the lines that were added at the end.
    void grow() {
        if (list_.ListCount() <= count_) return;
        beginInsertRows({}, count_, list_.ListCount() - 1);
        count_ = list_.ListCount();
        endInsertRows();
    }
    void reread() {
        beginResetModel();
        count_ = list_.ListCount();
        endResetModel();
    }

  private:
    const ListBox& list_;
    int count_;
};

class ListBinding : public QObject {
  public:
    ListBinding(const BindContext& context, ListBox& list, QAbstractItemView* view)
        : QObject(view), list_(list), view_(view), lines_(new LineModel(list, this)),
          throttle_(new UpdateThrottle(this, [this] { catch_up(); })),
          binding_(new Binding(context, list, view, [this] { show_selected(); })) {
        view->setModel(lines_);
        binding_->refresh();
        connect(view->selectionModel(), &QItemSelectionModel::currentChanged, this,
                [this](const QModelIndex& current) {
                    binding_->tell([this, row = current.row()] { list_.set_ListIndex(row); });
                });
    }

  private:
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
        lines_->grow();
        binding_->refresh();
        // A view scrolls to what becomes its current line; to what is already, it must be told.
        if (std::exchange(scroll_wanted_, false) && list_.ListIndex() >= 0)
            view_->scrollTo(lines_->index(list_.ListIndex(), 0));
    }

    void show_selected() {
        if (view_->model() != lines_ || list_.ListIndex() >= lines_->count()) return;
        const int row = view_->currentIndex().row(); // -1 when there is none
        if (row == list_.ListIndex()) return;
        if (list_.ListIndex() < 0)
            view_->selectionModel()->clear();
        else
            view_->setCurrentIndex(lines_->index(list_.ListIndex(), 0));
    }

    ListBox& list_;
    QAbstractItemView* view_;
    LineModel* lines_;
    UpdateThrottle* throttle_;
    Binding* binding_;
    bool scroll_wanted_ = false;
    Subscription changes_ =
        list_.watch_lines([this](ListChange change, int index) { changed(change, index); });
};

} // namespace

void bind(const BindContext& context, ListBox& model, QAbstractItemView* view) {
    view->setEditTriggers(QAbstractItemView::NoEditTriggers);
    view->setSelectionMode(QAbstractItemView::SingleSelection);
    if (auto* list = qobject_cast<QListView*>(view)) list->setUniformItemSizes(true);
    new ListBinding(context, model, view);
}

} // namespace pelvan::desktop
