#include "desktop/profiles/sheet_model.h"

#include <QGuiApplication>
#include <QPalette>

#include "desktop/bindings/qt_text.h"

namespace pelvan::desktop {

SheetModel::SheetModel(Sheet& sheet, EventRunner run, QObject* parent)
    : QAbstractTableModel(parent), sheet_(sheet), run_(std::move(run)), rows_(sheet.rows()),
      columns_(sheet.columns()), changes_(sheet.changed.subscribe([this] { follow(); })) {}

/// A table of the same shape keeps its place, its selection and an open editor.
void SheetModel::follow() {
    kept_ = {-1, -1};
    const int rows = sheet_.rows();
    const int columns = sheet_.columns();
    if (rows == rows_ && columns == columns_ && rows > 0 && columns > 0) {
        Q_EMIT dataChanged(index(0, 0), index(rows - 1, columns - 1));
        Q_EMIT headerDataChanged(Qt::Horizontal, 0, columns - 1);
        return;
    }
    beginResetModel();
    rows_ = rows;
    columns_ = columns;
    endResetModel();
}

const SheetCell& SheetModel::cell(const QModelIndex& index) const {
    const QPoint wanted(index.column(), index.row());
    if (kept_ != wanted) cell_ = sheet_.cell(index.row(), index.column());
    kept_ = wanted;
    return cell_;
}

int SheetModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : rows_;
}

int SheetModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : columns_;
}

QVariant SheetModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (role != Qt::DisplayRole || section < 0) return {};
    if (orientation == Qt::Vertical) return section + 1;
    return section < columns_ ? to_qt(sheet_.heading(section)) : QVariant();
}

QVariant SheetModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.row() >= sheet_.rows()) return {};
    switch (role) {
    case Qt::DisplayRole:
        return visible_line(cell(index).text);
    case Qt::EditRole:
        return to_qt(cell(index).text);
    case Qt::ToolTipRole:
        return plain_tip(cell(index).tip);
    case Qt::BackgroundRole:
        if (!cell(index).absent) return {};
        return QGuiApplication::palette().color(QPalette::Window).darker(105);
    case kChoicesRole: {
        QStringList choices;
        for (const std::string& choice : cell(index).choices)
            choices += to_qt(choice);
        return choices;
    }
    default:
        return {};
    }
}

Qt::ItemFlags SheetModel::flags(const QModelIndex& index) const {
    Qt::ItemFlags flags = Qt::ItemIsSelectable | Qt::ItemIsEnabled;
    if (index.isValid() && index.row() < sheet_.rows() && cell(index).editable)
        flags |= Qt::ItemIsEditable;
    return flags;
}

bool SheetModel::setData(const QModelIndex& index, const QVariant& value, int role) {
    if (role != Qt::EditRole || !index.isValid()) return false;
    const std::string text = from_qt(value.toString());
    run_([this, &index, &text] { sheet_.enter(index.row(), index.column(), text); });
    return true;
}

QString SheetModel::problem(const QModelIndex& index, const QString& text) const {
    if (!index.isValid() || index.row() >= sheet_.rows()) return {};
    return to_qt(sheet_.problem(index.row(), index.column(), from_qt(text)));
}

} // namespace pelvan::desktop
