// A list of text lines of equal height for 10,000 lines and more. Where the toolkit's own list lays
// out every line anew for one that is added, this one knows each line's place by its number alone,
// so that a line costs the same however many stand above it.
#pragma once

#include <QAbstractItemView>

namespace pelvan::desktop {

class LineView : public QAbstractItemView {
  public:
    explicit LineView(QWidget* parent = nullptr);

    [[nodiscard]] QRect visualRect(const QModelIndex& index) const override;
    void scrollTo(const QModelIndex& index, ScrollHint hint = EnsureVisible) override;
    [[nodiscard]] QModelIndex indexAt(const QPoint& point) const override;
    void reset() override;

  protected:
    void rowsInserted(const QModelIndex& parent, int first, int last) override;
    void updateGeometries() override;
    QModelIndex moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers) override;
    [[nodiscard]] int horizontalOffset() const override;
    [[nodiscard]] int verticalOffset() const override;
    [[nodiscard]] bool isIndexHidden(const QModelIndex& index) const override;
    void setSelection(const QRect& rect, QItemSelectionModel::SelectionFlags command) override;
    [[nodiscard]] QRegion visualRegionForSelection(const QItemSelection& selection) const override;
    void scrollContentsBy(int dx, int dy) override;
    void verticalScrollbarValueChanged(int) override;
    void paintEvent(QPaintEvent* event) override;
    void changeEvent(QEvent* event) override;

  private:
    [[nodiscard]] int row_count() const;
    [[nodiscard]] int row_height() const;
    [[nodiscard]] int rows_in_sight() const;
    [[nodiscard]] int first_row() const;
    void measure(int first, int last);

    int widest_ = 0; // pixels
};

} // namespace pelvan::desktop
