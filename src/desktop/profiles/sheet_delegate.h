// Edits the cells of a sheet in place: a box to type into, or a list where there are choices. A
// text that the sheet does not take stays in its box, with the focus, until it is mended or Escape
// gives it up.
#pragma once

#include <QPointer>
#include <QStyledItemDelegate>
#include <functional>

#include "desktop/profiles/sheet_model.h"

namespace pelvan::desktop {

class SheetDelegate : public QStyledItemDelegate {
  public:
    /// `say` shows what is wrong with what was typed; an empty text when it is mended.
    SheetDelegate(SheetModel& model, std::function<void(const QString&)> say, QObject* parent);

    QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem& option,
                          const QModelIndex& index) const override;
    void setEditorData(QWidget* editor, const QModelIndex& index) const override;
    void setModelData(QWidget* editor, QAbstractItemModel* model,
                      const QModelIndex& index) const override;
    /// Whether the open editor holds a text that the sheet does not take; it says why then, and
    /// gives the editor the focus.
    [[nodiscard]] bool keeps(QWidget& editor);

    void updateEditorGeometry(QWidget* editor, const QStyleOptionViewItem& option,
                              const QModelIndex& index) const override;

  protected:
    void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override;
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    static void keep_focus(QWidget& editor);

    SheetModel& model_;
    std::function<void(const QString&)> say_;
};

} // namespace pelvan::desktop
