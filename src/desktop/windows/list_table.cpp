#include "desktop/windows/list_table.h"

#include <QAbstractTableModel>
#include <QHeaderView>
#include <QTableView>
#include <utility>

#include "desktop/bindings/qt_text.h"
#include "desktop/bindings/update_throttle.h"

namespace pelvan::desktop {
namespace {

class LineModel : public QAbstractTableModel {
  public:
    LineModel(const ListBox& list, QStringList titles, LineCutter cut, QObject* parent)
        : QAbstractTableModel(parent), titles_(std::move(titles)), list_(list), cut_(cut) {}

    [[nodiscard]] int rowCount(const QModelIndex& parent) const override {
        return parent.isValid() ? 0 : static_cast<int>(rows_.size());
    }
    [[nodiscard]] int columnCount(const QModelIndex& parent) const override {
        return parent.isValid() ? 0 : static_cast<int>(titles_.size());
    }
    [[nodiscard]] QVariant data(const QModelIndex& at, int role) const override {
        const std::vector<std::string>& row = rows_[static_cast<std::size_t>(at.row())];
        const auto column = static_cast<std::size_t>(at.column());
        const QString text = column < row.size() ? visible_line(row[column]) : QString();
        if (role == Qt::DisplayRole || role == Qt::ToolTipRole) return text;
        return {};
    }
    [[nodiscard]] QVariant headerData(int section, Qt::Orientation way, int role) const override {
        if (role != Qt::DisplayRole || way != Qt::Horizontal) return {};
        return titles_.value(section);
    }

    void reread() {
        beginResetModel();
        rows_.clear();
        for (int i = 0; i < list_.ListCount(); ++i)
            rows_.push_back(cut_(list_.List(i)));
        endResetModel();
    }

  private:
    QStringList titles_;
    const ListBox& list_;
    LineCutter cut_;
    std::vector<std::vector<std::string>> rows_;
};

class TableBinding : public QObject {
  public:
    TableBinding(const BindContext& context, ListBox& list, const QStringList& titles,
                 LineCutter cut, QTableView* view)
        : QObject(view), list_(list), view_(view), model_(new LineModel(list, titles, cut, this)),
          binding_(new Binding(context, list, view, [this] { show_selected(); })),
          throttle_(new UpdateThrottle(this, [this] {
              if (std::exchange(lines_changed_, false)) model_->reread();
              binding_->refresh();
          })) {
        view->setModel(model_);
        throttle_->request();
        connect(view->selectionModel(), &QItemSelectionModel::currentChanged, this,
                [this](const QModelIndex& current) {
                    if (!current.isValid()) return; // the lines are being read again
                    binding_->tell([this, row = current.row()] { list_.set_ListIndex(row); });
                });
        connect(view, &QTableView::doubleClicked, this, [this] {
            if (list_.DblClick) binding_->tell_later([this] { list_.DblClick(); });
        });
    }

  private:
    void show_selected() {
        const int row = list_.ListIndex();
        if (view_->model() != model_ || view_->currentIndex().row() == row) return;
        if (row < 0)
            view_->clearSelection();
        else if (row < model_->rowCount({}))
            view_->setCurrentIndex(model_->index(row, 0));
    }

    ListBox& list_;
    QTableView* view_;
    LineModel* model_;
    Binding* binding_;
    UpdateThrottle* throttle_;
    bool lines_changed_ = true;
    Subscription changes_ = list_.watch_lines([this](ListChange change, int) {
        lines_changed_ = lines_changed_ || change != ListChange::Selected;
        throttle_->request();
    });
};

} // namespace

QTableView* make_list_table(const BindContext& context, ListBox& list, const QStringList& titles,
                            LineCutter cut, int widest) {
    auto* view = new QTableView;
    view->setSelectionBehavior(QAbstractItemView::SelectRows);
    view->setSelectionMode(QAbstractItemView::SingleSelection);
    view->setTabKeyNavigation(false); // Tab leaves the table
    view->setWordWrap(false);
    view->setShowGrid(false);
    view->verticalHeader()->hide();
    view->verticalHeader()->setDefaultSectionSize(view->fontMetrics().height() + 4);
    new TableBinding(context, list, titles, cut, view);
    QHeaderView* header = view->horizontalHeader();
    header->setHighlightSections(false);
    header->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    header->setSectionResizeMode(QHeaderView::ResizeToContents);
    header->setSectionResizeMode(widest, QHeaderView::Stretch);
    return view;
}

} // namespace pelvan::desktop
