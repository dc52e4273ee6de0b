#include "desktop/bindings/binding.h"

#include <QFocusEvent>
#include <QKeyEvent>
#include <QScopedValueRollback>
#include <optional>

#include "desktop/bindings/qt_text.h"

namespace pelvan::desktop {
namespace {

/// Coming back from a menu, a dialog or another program is no arrival at a control.
bool is_arrival(const QFocusEvent& event) {
    return event.reason() != Qt::ActiveWindowFocusReason &&
           event.reason() != Qt::PopupFocusReason && event.reason() != Qt::MenuBarFocusReason;
}

std::optional<Key> form_key(int key) {
    switch (key) {
    case Qt::Key_Up:
        return Key::Up;
    case Qt::Key_Down:
        return Key::Down;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        return Key::Enter;
    case Qt::Key_Escape:
        return Key::Escape;
    default:
        return std::nullopt;
    }
}

} // namespace

bool hand_key(const Control& control, const QKeyEvent& event,
              const std::function<void(const std::function<void()>&)>& tell) {
    if (!control.KeyDown || (event.modifiers() & ~Qt::KeypadModifier) != Qt::NoModifier)
        return false;
    const auto key = form_key(event.key());
    bool handled = false;
    if (key) tell([&control, &handled, key] { handled = control.KeyDown(*key); });
    return handled;
}

Binding::Binding(const BindContext& context, Control& control, QWidget* widget,
                 std::function<void()> show_kind)
    : QObject(widget), context_(context), control_(control), widget_(widget),
      show_kind_(std::move(show_kind)) {
    widget->setObjectName(to_qt(control.Name()));
    widget->installEventFilter(this);
    changes_ = control.watch([this] { refresh(); });
    focus_ = control.watch_focus([this](bool& moved) { move_focus(moved); });
    refresh();
}

void Binding::refresh() {
    const QScopedValueRollback<bool> guard(refreshing_, true);
    show_common();
    if (show_kind_) show_kind_();
}

void Binding::show_common() {
    widget_->setEnabled(control_.Enabled());
    if (shown_visible_ != control_.Visible()) {
        shown_visible_ = control_.Visible();
        widget_->setVisible(shown_visible_);
    }
    const QString tip = plain_tip(control_.ToolTipText());
    if (widget_->toolTip() != tip) widget_->setToolTip(tip);
    const QString caption = without_marks(to_qt(control_.Caption()));
    const QString spoken = caption.isEmpty() ? to_qt(control_.ToolTipText()) : caption;
    if (!spoken.isEmpty() && widget_->accessibleName() != spoken)
        widget_->setAccessibleName(spoken);
}

void Binding::tell(const std::function<void()>& action) {
    if (refreshing_) return;
    const QPointer<Binding> self(this);
    const EventRunner run = context_.run; // outlives this, which the action may end
    run(action);
    if (self) refresh();
}

void Binding::tell_later(std::function<void()> action) {
    if (refreshing_) return;
    QMetaObject::invokeMethod(
        this, [this, action = std::move(action)] { tell(action); }, Qt::QueuedConnection);
}

void Binding::move_focus(bool& moved) {
    moved = true;
    if (widget_->hasFocus()) return;
    {
        const QScopedValueRollback<bool> guard(moving_focus_, true);
        widget_->setFocus(Qt::OtherFocusReason);
    }
    // Raised here and not from the widget's own event, so that an error in the handler ends the
    // handler that moved the focus.
    if (control_.GotFocus) control_.GotFocus();
}

bool Binding::eventFilter(QObject* watched, QEvent* event) {
    if (watched == widget_ && event->type() == QEvent::KeyPress)
        return hand_key(control_, *static_cast<QKeyEvent*>(event),
                        [this](const std::function<void()>& action) { tell(action); });
    if (watched == widget_ && event->type() == QEvent::FocusIn && !moving_focus_ &&
        control_.GotFocus && is_arrival(*static_cast<QFocusEvent*>(event)))
        tell_later([this] { control_.GotFocus(); });
    return QObject::eventFilter(watched, event);
}

} // namespace pelvan::desktop
