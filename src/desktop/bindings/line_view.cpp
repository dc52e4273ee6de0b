#include "desktop/bindings/line_view.h"

#include <QEvent>
#include <QPainter>
#include <QScrollBar>
#include <algorithm>

namespace pelvan::desktop {
namespace {

constexpr int kMargin = 4; // left and right of a line, pixels

} // namespace

LineView::LineView(QWidget* parent) : QAbstractItemView(parent) {
    setHorizontalScrollMode(ScrollPerPixel);
}

int LineView::row_count() const {
    return model() == nullptr ? 0 : model()->rowCount(rootIndex());
}

int LineView::row_height() const {
    return fontMetrics().height() + 2;
}

int LineView::rows_in_sight() const {
    return std::max(1, viewport()->height() / row_height());
}

int LineView::first_row() const {
    return verticalScrollBar()->value();
}

int LineView::horizontalOffset() const {
    return horizontalScrollBar()->value();
}

int LineView::verticalOffset() const {
    return first_row() * row_height();
}

bool LineView::isIndexHidden(const QModelIndex&) const {
    return false;
}

QRect LineView::visualRect(const QModelIndex& index) const {
    if (!index.isValid()) return {};
    return {-horizontalOffset(), (index.row() - first_row()) * row_height(),
            std::max(widest_, viewport()->width()), row_height()};
}

QModelIndex LineView::indexAt(const QPoint& point) const {
    const int row = first_row() + point.y() / row_height();
    if (point.y() < 0 || row >= row_count()) return {};
    return model()->index(row, 0, rootIndex());
}

void LineView::scrollTo(const QModelIndex& index, ScrollHint hint) {
    if (!index.isValid()) return;
    const int row = index.row();
    const int last_top = row - rows_in_sight() + 1;
    if (hint == PositionAtTop)
        verticalScrollBar()->setValue(row);
    else if (hint == PositionAtBottom)
        verticalScrollBar()->setValue(last_top);
    else if (hint == PositionAtCenter)
        verticalScrollBar()->setValue((row + last_top) / 2);
    else
        verticalScrollBar()->setValue(std::clamp(first_row(), last_top, row));
    viewport()->update();
}

void LineView::reset() {
    QAbstractItemView::reset();
    widest_ = 0;
    measure(0, row_count() - 1);
    updateGeometries();
}

void LineView::rowsInserted(const QModelIndex& parent, int first, int last) {
    QAbstractItemView::rowsInserted(parent, first, last);
    measure(first, last);
    updateGeometries();
    viewport()->update();
}

void LineView::measure(int first, int last) {
    for (int row = first; row <= last; ++row) {
        const QString line = model()->index(row, 0, rootIndex()).data().toString();
        widest_ = std::max(widest_, fontMetrics().horizontalAdvance(line) + 2 * kMargin);
    }
}

void LineView::updateGeometries() {
    QAbstractItemView::updateGeometries();
    verticalScrollBar()->setRange(0, std::max(0, row_count() - rows_in_sight()));
    verticalScrollBar()->setPageStep(rows_in_sight());
    horizontalScrollBar()->setRange(0, std::max(0, widest_ - viewport()->width()));
    horizontalScrollBar()->setPageStep(viewport()->width());
    horizontalScrollBar()->setSingleStep(fontMetrics().averageCharWidth() * 4);
}

QModelIndex LineView::moveCursor(CursorAction action, Qt::KeyboardModifiers) {
    const int last = row_count() - 1;
    int row = currentIndex().row(); // -1 when there is none: down then means the first line
    switch (action) {
    case MoveUp:
    case MovePrevious:
        --row;
        break;
    case MoveDown:
    case MoveNext:
        ++row;
        break;
    case MovePageUp:
        row -= rows_in_sight();
        break;
    case MovePageDown:
        row += rows_in_sight();
        break;
    case MoveHome:
        row = 0;
        break;
    case MoveEnd:
        row = last;
        break;
    case MoveLeft:
        horizontalScrollBar()->triggerAction(QAbstractSlider::SliderSingleStepSub);
        break;
    case MoveRight:
        horizontalScrollBar()->triggerAction(QAbstractSlider::SliderSingleStepAdd);
        break;
    }
    if (last < 0) return {};
    return model()->index(std::clamp(row, 0, last), 0, rootIndex());
}

void LineView::setSelection(const QRect& rect, QItemSelectionModel::SelectionFlags command) {
    const QModelIndex index = indexAt(rect.center());
    selectionModel()->select(QItemSelection(index, index), command);
}

QRegion LineView::visualRegionForSelection(const QItemSelection& selection) const {
    QRegion region;
    for (const QItemSelectionRange& range : selection)
        region += visualRect(range.topLeft()) | visualRect(range.bottomRight());
    return region & viewport()->rect();
}

void LineView::scrollContentsBy(int, int) {
    viewport()->update();
}

void LineView::verticalScrollbarValueChanged(int) {
    // Not the base's: it asks the display where the pointer is, for events that nobody takes, and
    // waits for the answer. A line that scrolls the list would cost twice what others cost.
}

void LineView::changeEvent(QEvent* event) {
    QAbstractItemView::changeEvent(event);
    if (event->type() != QEvent::FontChange && event->type() != QEvent::StyleChange) return;
    widest_ = 0;
    measure(0, row_count() - 1);
    updateGeometries();
}

void LineView::paintEvent(QPaintEvent*) {
    QPainter painter(viewport());
    QStyleOptionViewItem option;
    initViewItemOption(&option);
    if (!isActiveWindow()) option.state &= ~QStyle::State_Active;
    const QStyle::State common = option.state & ~(QStyle::State_HasFocus | QStyle::State_Selected);
    const int end = std::min(row_count(), first_row() + rows_in_sight() + 1);
    for (int row = first_row(); row < end; ++row) {
        const QModelIndex index = model()->index(row, 0, rootIndex());
        option.rect = visualRect(index);
        option.state = common;
        if (selectionModel()->isSelected(index)) option.state |= QStyle::State_Selected;
        if (hasFocus() && index == currentIndex()) option.state |= QStyle::State_HasFocus;
        itemDelegateForIndex(index)->paint(&painter, option, index);
    }
}

} // namespace pelvan::desktop
