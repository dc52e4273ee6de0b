#include "desktop/system/type_ahead.h"

#include <QCoreApplication>
#include <QMouseEvent>
#include <algorithm>

#include "platform/scope_guard.h"

namespace pelvan::desktop {
namespace {

/// Shorter pauses are no blocking: nobody reacts to the screen in less.
constexpr qint64 kBlockedMs = 150;
/// Stamps come in order; the system begins again at 0 after some weeks.
constexpr quint64 kWrappedMs = 60000;

} // namespace

TypeAhead::TypeAhead(std::function<qint64()> now_ms)
    : now_ms_(std::move(now_ms)), looked_at_(now_ms_()) {
    QCoreApplication::instance()->installEventFilter(this);
}

void TypeAhead::run(const std::function<void()>& handler) {
    looked_at_ = now_ms_();
    const ScopeGuard leave([this] { drop_typed_meanwhile(); });
    handler();
}

void TypeAhead::drop_typed_meanwhile() {
    const qint64 now = now_ms_();
    if (now - looked_at_ >= kBlockedMs) drop_until_ = now;
    looked_at_ = now;
}

bool TypeAhead::is_dropped(const QInputEvent& event) {
    const quint64 stamp = event.timestamp();
    if (stamp == 0) return false; // made by a program, which waits for answers
    if (stamp + kWrappedMs < last_stamp_) ahead_ = std::numeric_limits<qint64>::max();
    last_stamp_ = stamp;
    const qint64 now = now_ms_();
    ahead_ = std::min(ahead_, now - static_cast<qint64>(stamp));
    if (static_cast<qint64>(stamp) + ahead_ < drop_until_) return true;
    looked_at_ = now;
    return false;
}

bool TypeAhead::eventFilter(QObject* watched, QEvent* event) {
    switch (event->type()) {
    case QEvent::ShortcutOverride:
    case QEvent::KeyPress:
    case QEvent::Wheel:
        if (!is_dropped(*static_cast<QInputEvent*>(event))) break;
        event->accept(); // a shortcut is looked for no further
        return true;
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick: {
        const auto& mouse = *static_cast<QMouseEvent*>(event);
        dropped_buttons_.setFlag(mouse.button(), is_dropped(mouse));
        if (dropped_buttons_.testFlag(mouse.button())) return true;
        break;
    }
    case QEvent::MouseButtonRelease:
        if (dropped_buttons_.testFlag(static_cast<QMouseEvent*>(event)->button())) return true;
        break;
    default:
        break;
    }
    return QObject::eventFilter(watched, event);
}

} // namespace pelvan::desktop
