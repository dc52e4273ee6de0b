#include <QAbstractItemView>
#include <QAbstractListModel>
#include <QListView>

#include "desktop/bind.h"
#include "desktop/paint_pacer.h"
#include "desktop/qt_text.h"

namespace pelvan::desktop {
namespace {

/// The control's lines, read where they are. Its own count lags behind the control's while a change
/// is being announced, as Qt's models must.
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

    void line_added(int row) {
        beginInsertRows({}, row, row);
        ++count_;
        endInsertRows();
    }
    void cleared() {
        beginResetModel();
        count_ = 0;
        endResetModel();
    }

  private:
    const ListBox& list_;
    int count_;
};

class ListMirror : public QObject {
  public:
    ListMirror(const BindContext& context, ListBox& list, QAbstractItemView* view)
        : QObject(view), list_(list), view_(view), pacer_(new PaintPacer(view)),
          lines_(new LineModel(list, this)),
          mirror_(new Mirror(context, list, view, [this] { show_selected(); })) {
        view->setModel(lines_);
        list.watch_lines([this](ListChange change, int index) { changed(change, index); });
        mirror_->refresh();
        connect(view->selectionModel(), &QItemSelectionModel::currentChanged, this,
                [this](const QModelIndex& current) {
                    mirror_->tell([this, row = current.row()] { list_.set_ListIndex(row); });
                });
    }
    ~ListMirror() override { list_.watch_lines({}); }

  private:
    void changed(ListChange change, int index) {
        pacer_->change();
        switch (change) {
        case ListChange::Added:
        case ListChange::Inserted:
            lines_->line_added(index);
            break;
        case ListChange::Cleared:
            lines_->cleared();
            break;
        case ListChange::Selected: {
            // A view scrolls to what becomes its current line; to what is already, it must be told.
            const bool already = view_->currentIndex().row() == index;
            mirror_->refresh();
            if (already && index >= 0) view_->scrollTo(lines_->index(index, 0));
            break;
        }
        }
    }

    void show_selected() {
        if (view_->model() != lines_) return;
        const int row = view_->currentIndex().row(); // -1 when there is none
        if (row == list_.ListIndex()) return;
        if (list_.ListIndex() < 0)
            view_->selectionModel()->clear();
        else
            view_->setCurrentIndex(lines_->index(list_.ListIndex(), 0));
    }

    ListBox& list_;
    QAbstractItemView* view_;
    PaintPacer* pacer_;
    LineModel* lines_;
    Mirror* mirror_;
};

} // namespace

void bind(const BindContext& context, ListBox& model, QAbstractItemView* view) {
    view->setEditTriggers(QAbstractItemView::NoEditTriggers);
    view->setSelectionMode(QAbstractItemView::SingleSelection);
    if (auto* list = qobject_cast<QListView*>(view)) list->setUniformItemSizes(true);
    new ListMirror(context, model, view);
}

} // namespace pelvan::desktop
