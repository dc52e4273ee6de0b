#include "desktop/windows/focus_keeper.h"

#include <QApplication>
#include <QMdiSubWindow>

#include "desktop/windows/focus_ring.h"

namespace pelvan::desktop {
namespace {

QMdiSubWindow* child_of(QWidget* widget) {
    while (widget != nullptr && qobject_cast<QMdiSubWindow*>(widget) == nullptr)
        widget = widget->parentWidget();
    return qobject_cast<QMdiSubWindow*>(widget);
}

/// Somebody is pressing the mouse there.
bool is_clicked(const QWidget& widget) {
    if (QGuiApplication::mouseButtons() == Qt::NoButton) return false;
    const QWidget* under = QApplication::widgetAt(QCursor::pos());
    return under == &widget || (under != nullptr && widget.isAncestorOf(under));
}

} // namespace

FocusKeeper::FocusKeeper(QMdiArea& area) : area_(area) {
    connect(qApp, &QApplication::focusChanged, this,
            [this](QWidget*, QWidget* now) { focus_moved(now); });
    connect(&area, &QMdiArea::subWindowActivated, this,
            [this](QMdiSubWindow* child) { give_back(child); });
}

void FocusKeeper::watch(QMdiSubWindow* child) {
    child->installEventFilter(this);
}

/// A window that changes its size (to the whole area, and back) is hidden meanwhile, and the focus
/// is pushed on to some control: not where somebody has put it.
bool FocusKeeper::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::Hide) hidden_.insert(watched);
    if (event->type() == QEvent::Show)
        QMetaObject::invokeMethod(
            watched,
            [this, watched] {
                hidden_.erase(watched);
                give_back(qobject_cast<QMdiSubWindow*>(watched));
            },
            Qt::QueuedConnection);
    return QObject::eventFilter(watched, event);
}

void FocusKeeper::focus_moved(QWidget* now) {
    delete ring_;
    if (now == nullptr) return;
    show_focus(*now);
    QMdiSubWindow* child = child_of(now);
    if (child == nullptr || child->mdiArea() != &area_) return;
    if (now == child) {
        // Nobody types into a bare window; the area puts the focus there when its sizes change.
        QMetaObject::invokeMethod(
            child, [this, child] { give_back(child); }, Qt::QueuedConnection);
        return;
    }
    // A window that becomes active gets the focus somewhere before the area says so.
    const bool settled = child == area_.activeSubWindow() && hidden_.count(child) == 0;
    if (settled || is_clicked(*now)) kept_[child] = now;
}

/// In whatever way it came there, not after the Tab key alone.
void FocusKeeper::show_focus(QWidget& now) {
    now.window()->setAttribute(Qt::WA_KeyboardFocusChange);
    now.update();
    auto* list = qobject_cast<QAbstractScrollArea*>(&now);
    const bool is_pop_up = now.window()->windowType() == Qt::Popup;
    if (list != nullptr && list != &area_ && !is_pop_up) ring_ = new FocusRing(list);
}

void FocusKeeper::give_back(QMdiSubWindow* child) {
    if (child == nullptr || child != area_.activeSubWindow() || !child->isActiveWindow()) return;
    QWidget* focus = QApplication::focusWidget();
    const auto found = kept_.find(child);
    if (found == kept_.end() || found->second.isNull() || found->second == focus) return;
    QWidget* kept = found->second;
    if (kept->isVisible() && kept->isEnabled() && child->isAncestorOf(kept))
        kept->setFocus(Qt::ActiveWindowFocusReason);
}

} // namespace pelvan::desktop
