// A sheet as a table model for Qt. User's changes go to the sheet through the program's runner.
#pragma once

#include <QAbstractTableModel>
#include <QPoint>

#include "desktop/bindings/binding.h"
#include "profile/window/sheet.h"

namespace pelvan::desktop {

/// Role of a cell's choices, a list of texts.
inline constexpr int kChoicesRole = Qt::UserRole;

class SheetModel : public QAbstractTableModel {
  public:
    /// The sheet must outlive the model.
    SheetModel(Sheet& sheet, EventRunner run, QObject* parent);

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation,
                                      int role) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    [[nodiscard]] Qt::ItemFlags flags(const QModelIndex& index) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role) override;

    [[nodiscard]] Sheet& sheet() { return sheet_; }
    /// What is wrong with a text for the cell; empty when it can be entered.
    [[nodiscard]] QString problem(const QModelIndex& index, const QString& text) const;

  private:
    void follow();
    /// The sheet's cell; kept, because a view asks for ten roles of one after another.
    [[nodiscard]] const SheetCell& cell(const QModelIndex& index) const;

    Sheet& sheet_;
    EventRunner run_;
    int rows_;
    int columns_;
    mutable QPoint kept_{-1, -1}; // column and row of the cell below
    mutable SheetCell cell_;
    Subscription changes_;
};

} // namespace pelvan::desktop
