#include "desktop/profiles/sheet_delegate.h"

#include <QComboBox>
#include <QKeyEvent>
#include <QLineEdit>
#include <QTimer>

namespace pelvan::desktop {
namespace {

constexpr char kIndex[] = "sheet_index";
constexpr int kMaxText = 200; // no cell takes more

QString text_of(QWidget& editor) {
    if (const auto* box = qobject_cast<QComboBox*>(&editor)) return box->currentText();
    const auto* line = qobject_cast<QLineEdit*>(&editor);
    return line ? line->text() : QString();
}

QModelIndex index_of(const QWidget& editor) {
    return editor.property(kIndex).toPersistentModelIndex();
}

bool accepts(const QEvent& event) {
    if (event.type() == QEvent::FocusOut) {
        const auto reason = static_cast<const QFocusEvent&>(event).reason();
        // A list that drops down, or another program: nobody is done with the cell.
        return reason != Qt::PopupFocusReason && reason != Qt::ActiveWindowFocusReason;
    }
    if (event.type() != QEvent::KeyPress) return false;
    switch (static_cast<const QKeyEvent&>(event).key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_Tab:
    case Qt::Key_Backtab:
        return true;
    default:
        return false;
    }
}

} // namespace

SheetDelegate::SheetDelegate(SheetModel& model, std::function<void(const QString&)> say,
                             QObject* parent)
    : QStyledItemDelegate(parent), model_(model), say_(std::move(say)) {}

QWidget* SheetDelegate::createEditor(QWidget* parent, const QStyleOptionViewItem&,
                                     const QModelIndex& index) const {
    const QStringList choices = index.data(kChoicesRole).toStringList();
    QWidget* editor = nullptr;
    if (choices.isEmpty()) {
        auto* line = new QLineEdit(parent);
        line->setFrame(false);
        line->setMaxLength(kMaxText);
        editor = line;
    } else {
        auto* box = new QComboBox(parent);
        box->addItems(choices);
        // A choice is made at once: nobody looks for a key that confirms it.
        connect(box, &QComboBox::activated, this, [this, box] {
            auto* self = const_cast<SheetDelegate*>(this);
            Q_EMIT self->commitData(box);
            Q_EMIT self->closeEditor(box);
        });
        editor = box;
    }
    editor->setProperty(kIndex, QVariant::fromValue(QPersistentModelIndex(index)));
    editor->setObjectName(QStringLiteral("cell_editor"));
    editor->setAccessibleName(
        model_.headerData(index.column(), Qt::Horizontal, Qt::DisplayRole).toString());
    return editor;
}

void SheetDelegate::setEditorData(QWidget* editor, const QModelIndex& index) const {
    const QString text = index.data(Qt::EditRole).toString();
    if (auto* box = qobject_cast<QComboBox*>(editor)) {
        box->setCurrentIndex(box->findText(text));
        return;
    }
    auto* line = qobject_cast<QLineEdit*>(editor);
    // What somebody is typing stays when the table changes meanwhile.
    if (line != nullptr && !line->isModified()) line->setText(text);
}

void SheetDelegate::setModelData(QWidget* editor, QAbstractItemModel* model,
                                 const QModelIndex& index) const {
    const QString text = text_of(*editor);
    // Also after the editor was left because its table went.
    if (!model_.problem(index, text).isEmpty()) return;
    if (text != index.data(Qt::EditRole).toString()) model->setData(index, text, Qt::EditRole);
}

void SheetDelegate::updateEditorGeometry(QWidget* editor, const QStyleOptionViewItem& option,
                                         const QModelIndex&) const {
    QRect place = option.rect;
    place.setWidth(std::max(place.width(), editor->minimumSizeHint().width()));
    editor->setGeometry(place);
}

bool SheetDelegate::keeps(QWidget& editor) {
    const QString problem = model_.problem(index_of(editor), text_of(editor));
    say_(problem);
    if (!problem.isEmpty()) keep_focus(editor);
    return !problem.isEmpty();
}

/// What is not there cannot be chosen either.
void SheetDelegate::initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const {
    QStyledItemDelegate::initStyleOption(option, index);
    if (index.data(Qt::BackgroundRole).isValid()) option->state &= ~QStyle::State_Selected;
}

void SheetDelegate::keep_focus(QWidget& editor) {
    QTimer::singleShot(0, &editor, [&editor] {
        editor.setFocus();
        if (auto* line = qobject_cast<QLineEdit*>(&editor)) line->selectAll();
    });
}

bool SheetDelegate::eventFilter(QObject* watched, QEvent* event) {
    auto* editor = qobject_cast<QWidget*>(watched);
    if (editor == nullptr) return QStyledItemDelegate::eventFilter(watched, event);
    const bool escape = event->type() == QEvent::KeyPress &&
                        static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape;
    if (escape) say_({});
    if (accepts(*event) && editor->isVisible() && keeps(*editor)) return true;
    return QStyledItemDelegate::eventFilter(watched, event);
}

} // namespace pelvan::desktop
