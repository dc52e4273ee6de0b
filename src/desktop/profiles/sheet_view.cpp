#include "desktop/profiles/sheet_view.h"

#include <QHeaderView>
#include <QKeyEvent>
#include <QScopedValueRollback>
#include <algorithm>

#include "desktop/profiles/sheet_delegate.h"

namespace pelvan::desktop {
namespace {

constexpr int kRowRoom = 6;
constexpr int kMinColumn = 34;
constexpr int kFitMs = 100;

} // namespace

SheetView::SheetView(Sheet& sheet, const EventRunner& run, std::function<void(const QString&)> say)
    : sheet_(sheet), run_(run), model_(new SheetModel(sheet, run, this)),
      delegate_(new SheetDelegate(*model_, std::move(say), this)) {
    setModel(model_);
    setItemDelegate(delegate_);
    setSelectionBehavior(QAbstractItemView::SelectRows);
    setSelectionMode(QAbstractItemView::SingleSelection);
    setEditTriggers(QAbstractItemView::DoubleClicked | QAbstractItemView::SelectedClicked |
                    QAbstractItemView::EditKeyPressed | QAbstractItemView::AnyKeyPressed);
    setTabKeyNavigation(false); // Tab leaves the table; the arrow keys move in it
    setHorizontalScrollMode(QAbstractItemView::ScrollPerPixel);
    verticalHeader()->setDefaultSectionSize(fontMetrics().height() + kRowRoom);
    verticalHeader()->hide();
    horizontalHeader()->setHighlightSections(false);
    horizontalHeader()->setMinimumSectionSize(kMinColumn);
    fitting_.setSingleShot(true);
    fitting_.setInterval(kFitMs);
    connect(&fitting_, &QTimer::timeout, this, [this] { fit_columns(); });
    changes_ = sheet.changed.subscribe([this] { follow(); });
    choices_ = sheet.chosen_moved.subscribe([this] { show_chosen(); });
    follow();
    fit_columns();
}

void SheetView::hide_unused_columns() {
    hides_unused_ = true;
    follow();
    fit_columns();
}

void SheetView::on_activated(std::function<void()> handler) {
    const auto told = [run = run_, handler = std::move(handler)] { run(handler); };
    connect(this, &QAbstractItemView::clicked, this, told);
    connect(this, &QAbstractItemView::activated, this, told);
}

void SheetView::follow() {
    const QScopedValueRollback<bool> showing(showing_, true);
    for (int column = 0; hides_unused_ && column < sheet_.columns(); ++column)
        if (const bool hidden = !sheet_.column_used(column); hidden != isColumnHidden(column))
            setColumnHidden(column, hidden);
    fitting_.start();
    show_chosen();
}

/// As wide as what stands in them; the last one takes what is left.
void SheetView::fit_columns() {
    if (state() == QAbstractItemView::EditingState) return;
    resizeColumnsToContents();
}

void SheetView::show_chosen() {
    const int row = sheet_.chosen();
    if (row < 0 || row >= model_->rowCount()) return;
    const QScopedValueRollback<bool> showing(showing_, true);
    const int column = std::max(currentIndex().column(), 0);
    if (currentIndex().row() != row) setCurrentIndex(model_->index(row, column));
    if (!selectionModel()->isRowSelected(row)) selectRow(row);
}

void SheetView::currentChanged(const QModelIndex& current, const QModelIndex& previous) {
    QTableView::currentChanged(current, previous);
    if (showing_ || !current.isValid() || current.row() == sheet_.chosen()) return;
    run_([this, row = current.row()] { sheet_.choose(row); });
}

void SheetView::mousePressEvent(QMouseEvent* event) {
    // The view would close the editor, and what was typed would be gone.
    if (state() == QAbstractItemView::EditingState)
        if (auto* editor = viewport()->findChild<QWidget*>(QStringLiteral("cell_editor")))
            if (delegate_->keeps(*editor)) return;
    QTableView::mousePressEvent(event);
}

void SheetView::keyPressEvent(QKeyEvent* event) {
    const bool enter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (enter && state() != QAbstractItemView::EditingState &&
        currentIndex().flags().testFlag(Qt::ItemIsEditable)) {
        edit(currentIndex());
        return;
    }
    QTableView::keyPressEvent(event);
}

} // namespace pelvan::desktop
