#include <QComboBox>
#include <QKeyEvent>
#include <QLineEdit>
#include <limits>

#include "desktop/bindings/bind.h"
#include "desktop/bindings/qt_text.h"

namespace pelvan::desktop {
namespace {

void show_text(const TextBox& model, QLineEdit& edit) {
    edit.setReadOnly(model.Locked());
    const QString text = to_qt(model.Text());
    if (edit.text() == text) return; // the person's caret and selection stay
    edit.setText(text);
    edit.setCursorPosition(0);
}

/// A box whose widget can be told to select everything.
class TextBinding : public Binding {
  public:
    TextBinding(const BindContext& context, TextBox& model, QLineEdit* edit)
        : Binding(context, model, edit, [&model, edit] { show_text(model, *edit); }),
          select_all_(model.watch_select_all([edit] { edit->selectAll(); })) {
        connect(edit, &QLineEdit::textChanged, this, [this, &model](const QString& text) {
            tell([&model, typed = from_qt(text)] { model.set_Text(typed); });
        });
    }

  private:
    Subscription select_all_;
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

void show_combo(const ComboBox& model, QComboBox& combo) {
    const int caret = model.editable() ? combo.lineEdit()->cursorPosition() : 0;
    show_items(combo, model.items());
    if (combo.currentIndex() != model.ListIndex()) combo.setCurrentIndex(model.ListIndex());
    const QString text = to_qt(model.Text());
    if (!model.editable() || combo.currentText() == text) return;
    combo.setEditText(text);
    combo.lineEdit()->setCursorPosition(caret); // where the person is typing
}

/// A box whose widget can be told to select the text that is typed in it.
class ComboBinding : public Binding {
  public:
    ComboBinding(const BindContext& context, ComboBox& model, QComboBox* combo)
        : Binding(context, model, combo, [&model, combo] { show_combo(model, *combo); }),
          select_all_(model.watch_select_all([combo] {
              if (combo->lineEdit()) combo->lineEdit()->selectAll();
          })) {}

  private:
    Subscription select_all_;
};

} // namespace

void bind(const BindContext& context, TextBox& model, QLineEdit* edit) {
    edit->setMaxLength(std::numeric_limits<int>::max());
    new TextBinding(context, model, edit);
}

void bind(const BindContext& context, ComboBox& model, QComboBox* combo) {
    combo->setEditable(model.editable());
    combo->setInsertPolicy(QComboBox::NoInsert);
    auto* binding = new ComboBinding(context, model, combo);
    QObject::connect(combo, &QComboBox::activated, binding, [binding, &model](int index) {
        binding->tell([&model, index] { model.set_ListIndex(index); });
    });
    if (!model.editable()) return;
    combo->setCompleter(nullptr); // it would finish a text that nobody typed
    QObject::connect(combo->lineEdit(), &QLineEdit::textEdited, binding,
                     [binding, &model](const QString& text) {
                         binding->tell([&model, typed = from_qt(text)] { model.set_Text(typed); });
                     });
}

void on_key(const BindContext& context, QWidget* widget, Qt::Key key,
            std::function<void()> handler) {
    new KeyFilter(context, widget, key, std::move(handler));
}

} // namespace pelvan::desktop
