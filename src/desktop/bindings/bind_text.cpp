#include <QComboBox>
#include <QKeyEvent>
#include <QLineEdit>
#include <limits>

#include "desktop/bindings/bind.h"
#include "desktop/bindings/qt_text.h"

namespace pelvan::desktop {
namespace {

class TextMirror : public QObject {
  public:
    TextMirror(const BindContext& context, TextBox& model, QLineEdit* edit)
        : QObject(edit), model_(model), edit_(edit),
          mirror_(new Mirror(context, model, edit, [this] { show(); })) {
        connect(edit, &QLineEdit::textChanged, this, [this] { typed(); });
        connect(edit, &QLineEdit::selectionChanged, this, [this] { take_selection(); });
        connect(edit, &QLineEdit::cursorPositionChanged, this, [this] { take_selection(); });
    }

  private:
    void typed() {
        mirror_->tell([this] {
            typing_ = true;
            model_.set_Text(from_qt(edit_->text()));
        });
        typing_ = false;
    }

    void show() {
        edit_->setReadOnly(model_.Locked());
        const QString text = to_qt(model_.Text());
        if (edit_->text() != text) {
            typing_ = false;
            edit_->setText(text);
        }
        if (typing_) {
            // The new text has put the model's selection back to 0; the person's caret stays. The
            // Change handler, which comes next, finds the model's selection right.
            typing_ = false;
            model_selects_caret();
        }
        show_selection();
    }

    void show_selection() {
        const int start = to_qt_position(model_.Text(), model_.SelStart());
        const int end = to_qt_position(model_.Text(), model_.SelStart() + model_.SelLength());
        if (start == widget_start() && end - start == edit_->selectionLength()) return;
        if (start == end)
            edit_->setCursorPosition(start);
        else
            edit_->setSelection(start, end - start);
    }

    void take_selection() {
        if (edit_->text() == to_qt(model_.Text())) mirror_->tell([this] { model_selects_caret(); });
    }

    void model_selects_caret() {
        const int start = from_qt_position(model_.Text(), widget_start());
        const int end = from_qt_position(model_.Text(), widget_start() + edit_->selectionLength());
        if (start != model_.SelStart() || end - start != model_.SelLength())
            model_.select(start, end - start);
    }

    [[nodiscard]] int widget_start() const {
        return edit_->hasSelectedText() ? edit_->selectionStart() : edit_->cursorPosition();
    }

    TextBox& model_;
    QLineEdit* edit_;
    bool typing_ = false;
    Mirror* mirror_;
};

class KeyFilter : public QObject {
  public:
    KeyFilter(BindContext context, QWidget* widget, Qt::Key key, std::function<void()> handler)
        : QObject(widget), context_(std::move(context)), key_(key), handler_(std::move(handler)) {
        widget->installEventFilter(this);
    }

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() != QEvent::KeyPress) return QObject::eventFilter(watched, event);
        const auto& press = *static_cast<QKeyEvent*>(event);
        const Qt::KeyboardModifiers held = press.modifiers() & ~Qt::KeypadModifier;
        if (press.key() != key_ || held != Qt::NoModifier) return false;
        context_.run(handler_);
        return true;
    }

  private:
    BindContext context_;
    Qt::Key key_;
    std::function<void()> handler_;
};

void show_items(QComboBox& combo, const std::vector<std::string>& items) {
    bool same = combo.count() == static_cast<int>(items.size());
    for (int i = 0; same && i < combo.count(); ++i)
        same = combo.itemText(i) == to_qt(items[static_cast<std::size_t>(i)]);
    if (same) return;
    combo.clear();
    for (const std::string& item : items)
        combo.addItem(to_qt(item));
}

} // namespace

void bind(const BindContext& context, TextBox& model, QLineEdit* edit) {
    edit->setMaxLength(std::numeric_limits<int>::max());
    new TextMirror(context, model, edit);
}

void bind(const BindContext& context, ComboBox& model, QComboBox* combo) {
    combo->setEditable(model.editable());
    combo->setInsertPolicy(QComboBox::NoInsert);
    auto* mirror = new Mirror(context, model, combo, [&model, combo] {
        show_items(*combo, model.items());
        if (combo->currentIndex() != model.ListIndex()) combo->setCurrentIndex(model.ListIndex());
        const QString text = to_qt(model.Text());
        if (model.editable() && combo->currentText() != text) combo->setEditText(text);
    });
    QObject::connect(combo, &QComboBox::activated, mirror, [mirror, &model](int index) {
        mirror->tell([&model, index] { model.set_ListIndex(index); });
    });
    if (!model.editable()) return;
    combo->setCompleter(nullptr); // it would finish a text that nobody typed
    QObject::connect(combo->lineEdit(), &QLineEdit::textEdited, mirror,
                     [mirror, &model](const QString& text) {
                         mirror->tell([&model, typed = from_qt(text)] { model.set_Text(typed); });
                     });
}

void on_key(const BindContext& context, QWidget* widget, Qt::Key key,
            std::function<void()> handler) {
    new KeyFilter(context, widget, key, std::move(handler));
}

} // namespace pelvan::desktop
