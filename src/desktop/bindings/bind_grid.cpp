#include <QAbstractTableModel>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QTableView>

#include "desktop/bindings/bind.h"
#include "desktop/bindings/qt_text.h"

namespace pelvan::desktop {
namespace {

/// The grid's cells, read where they are; the view's row 0 is the grid's row 1.
class CellModel : public QAbstractTableModel {
  public:
    CellModel(const Grid& grid, CellLook look, QObject* parent)
        : QAbstractTableModel(parent), grid_(grid), look_(std::move(look)) {}

    [[nodiscard]] int rowCount(const QModelIndex& parent) const override {
        return parent.isValid() ? 0 : grid_.Rows() - 1;
    }
    [[nodiscard]] int columnCount(const QModelIndex& parent) const override {
        return parent.isValid() ? 0 : grid_.Cols();
    }
    [[nodiscard]] QVariant data(const QModelIndex& at, int role) const override {
        QVariant own = look_ ? look_(at.row() + 1, at.column(), role) : QVariant();
        if (own.isValid() || role != Qt::DisplayRole) return own;
        return visible_line(grid_.TextMatrix(at.row() + 1, at.column()));
    }
    [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation,
                                      int role) const override {
        if (role != Qt::DisplayRole) return {};
        if (orientation == Qt::Vertical) return section + 1;
        return visible_line(grid_.TextMatrix(0, section));
    }

    void cell_changed(int row, int column) {
        if (column < 0) return; // the row's data word is not shown
        if (row == 0)
            Q_EMIT headerDataChanged(Qt::Horizontal, column, column);
        else
            Q_EMIT dataChanged(index(row - 1, column), index(row - 1, column));
    }

  private:
    const Grid& grid_;
    CellLook look_;
};

class GridBinding : public QObject {
  public:
    GridBinding(const BindContext& context, Grid& grid, QTableView* view, CellLook look)
        : QObject(view), grid_(grid), view_(view), viewport_(view->viewport()),
          cells_(new CellModel(grid, std::move(look), this)),
          binding_(new Binding(context, grid, view, [this] { show_current(); })) {
        view->setModel(cells_);
        binding_->refresh();
        connect(view->selectionModel(), &QItemSelectionModel::currentChanged, this,
                [this](const QModelIndex& at) { moved_to(at); });
        view->installEventFilter(this);
        view->viewport()->installEventFilter(this);
    }

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (watched == viewport_ && event->type() == QEvent::MouseButtonRelease) {
            const auto& mouse = *static_cast<QMouseEvent*>(event);
            pressed(view_->indexAt(mouse.position().toPoint()), mouse.button() == Qt::LeftButton);
        }
        if (watched == view_ && event->type() == QEvent::KeyPress)
            return key_pressed(static_cast<QKeyEvent*>(event)->key());
        return QObject::eventFilter(watched, event);
    }

  private:
    void show_current() {
        if (view_->model() != cells_ || grid_.Row() == 0) return;
        const QModelIndex at = cells_->index(grid_.Row() - 1, grid_.Col());
        if (view_->currentIndex() != at) view_->setCurrentIndex(at);
    }

    void moved_to(const QModelIndex& at) {
        if (!at.isValid()) return;
        binding_->tell(
            [this, row = at.row() + 1, column = at.column()] { grid_.set_cell(row, column); });
    }

    /// Told after the view has dealt with the event: the handler may ask for a value.
    void pressed(const QModelIndex& at, bool left) {
        if (!at.isValid()) return;
        binding_->tell_later([this, row = at.row() + 1, column = at.column(), left] {
            grid_.set_cell(row, column);
            if (grid_.MouseUp) grid_.MouseUp(left);
        });
    }

    bool key_pressed(int key) {
        const bool left = key == Qt::Key_Return || key == Qt::Key_Enter || key == Qt::Key_Space;
        if (!left && key != Qt::Key_Menu) return false;
        pressed(view_->currentIndex(), left);
        return true;
    }

    Grid& grid_;
    QTableView* view_;
    QWidget* viewport_; // events reach it while the view is ending
    CellModel* cells_;
    Binding* binding_;
    Subscription changes_ =
        grid_.watch_cells([this](int row, int column) { cells_->cell_changed(row, column); });
};

} // namespace

void bind(const BindContext& context, Grid& model, QTableView* view, CellLook look) {
    view->setEditTriggers(QAbstractItemView::NoEditTriggers);
    view->setSelectionMode(QAbstractItemView::SingleSelection);
    new GridBinding(context, model, view, std::move(look));
}

} // namespace pelvan::desktop
