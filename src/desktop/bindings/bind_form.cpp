#include <QDropEvent>
#include <QEvent>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMimeData>
#include <QUrl>
#include <algorithm>

#include "desktop/bindings/activation.h"
#include "desktop/bindings/bind.h"
#include "desktop/bindings/qt_text.h"

namespace pelvan::desktop {
namespace {

Qt::WindowStates qt_state(WindowState state) {
    switch (state) {
    case WindowState::Minimized:
        return Qt::WindowMinimized;
    case WindowState::Maximized:
        return Qt::WindowMaximized;
    case WindowState::Normal:
        break;
    }
    return Qt::WindowNoState;
}

WindowState model_state(Qt::WindowStates states) {
    if (states.testFlag(Qt::WindowMinimized)) return WindowState::Minimized;
    return states.testFlag(Qt::WindowMaximized) ? WindowState::Maximized : WindowState::Normal;
}

int pixels(int twips, int dots_per_inch) {
    constexpr int kTwipsPerInch = 1440;
    return twips * dots_per_inch / kTwipsPerInch;
}

/// The path of a single file of this machine that is being dropped; empty for anything else.
QString dropped_file(const QDropEvent& event) {
    const QList<QUrl> urls = event.mimeData()->urls();
    return urls.size() == 1 && urls.constFirst().isLocalFile() ? urls.constFirst().toLocalFile()
                                                               : QString();
}

class FormBinding : public QObject {
  public:
    FormBinding(const BindContext& context, Form& form, QWidget* window)
        : QObject(window), context_(context), form_(form), window_(window) {
        window->setObjectName(to_qt(form.Name()));
        window->setAttribute(Qt::WA_DeleteOnClose, false);
        window->installEventFilter(this);
        window->setAcceptDrops(form.FileDropped != nullptr);
        if (form.Position() != TwipRect{}) move();
        refresh();
    }
    ~FormBinding() override {
        if (context_.activation != nullptr) context_.activation->forget(form_);
    }

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        switch (event->type()) {
        case QEvent::Close:
            event->ignore();
            context_.run([this] { form_.Unload(); });
            return true; // the window goes when the form has become invisible, or stays
        case QEvent::WindowStateChange:
            if (window_->isVisible()) form_.set_State(model_state(window_->windowState()));
            break;
        case QEvent::WindowActivate:
            // Child windows of the frame are told apart by the frame.
            if (is_top_level() && is_tracked()) context_.activation->entered(form_);
            break;
        case QEvent::DragEnter:
        case QEvent::Drop:
            return take_file(*static_cast<QDropEvent*>(event));
        default:
            break;
        }
        return QObject::eventFilter(watched, event);
    }

  private:
    /// The drop is over before anything is asked about it: the program that the file comes from
    /// waits meanwhile.
    bool take_file(QDropEvent& event) {
        const QString path = dropped_file(event);
        if (path.isEmpty() || !form_.FileDropped) return false;
        event.setDropAction(Qt::CopyAction);
        event.accept();
        if (event.type() == QEvent::Drop)
            QMetaObject::invokeMethod(
                this, [this, path] { context_.run([&] { form_.FileDropped(from_qt(path)); }); },
                Qt::QueuedConnection);
        return true;
    }

    [[nodiscard]] bool is_top_level() const {
        return qobject_cast<QMdiSubWindow*>(window_) == nullptr;
    }
    /// A modal window is a dialog: whoever closes it has not left the window below.
    [[nodiscard]] bool is_tracked() const {
        return context_.activation != nullptr && !window_->isModal();
    }

    void refresh() {
        QString caption = to_qt(form_.Caption());
        if (!form_.Note().empty()) caption += QStringLiteral(" (%1)").arg(to_qt(form_.Note()));
        if (window_->windowTitle() != caption) window_->setWindowTitle(caption);
        window_->setAccessibleName(caption);
        window_->setEnabled(form_.Enabled());
        if (form_.Pointer() == MousePointer::Hourglass)
            window_->setCursor(Qt::WaitCursor);
        else
            window_->unsetCursor();
        if (window_->isHidden() == form_.Visible()) show_or_hide();
        if (model_state(window_->windowState()) != form_.State())
            window_->setWindowState(qt_state(form_.State()));
    }

    void show_or_hide() {
        // A window that appears becomes active by itself: the program's doing, not the person's.
        if (form_.Visible() && is_tracked()) context_.activation->shown(form_);
        window_->setVisible(form_.Visible());
        if (!form_.Visible()) activate_other_child();
    }

    /// The area leaves no child active when the active one is hidden: the one used before it is.
    void activate_other_child() {
        auto* child = qobject_cast<QMdiSubWindow*>(window_);
        QMdiArea* area = child == nullptr ? nullptr : child->mdiArea();
        if (area == nullptr) return;
        const QList<QMdiSubWindow*> used = area->subWindowList(QMdiArea::ActivationHistoryOrder);
        const auto next = std::find_if(used.rbegin(), used.rend(),
                                       [](QMdiSubWindow* other) { return !other->isHidden(); });
        area->setActiveSubWindow(next == used.rend() ? nullptr : *next);
    }

    void move() {
        const TwipRect& to = form_.Position();
        const int across = window_->logicalDpiX();
        const int down = window_->logicalDpiY();
        window_->move(pixels(to.left, across), pixels(to.top, down));
        if (to.width > 0 && to.height > 0)
            window_->resize(pixels(to.width, across), pixels(to.height, down));
    }

    /// Whether the window was the active one before.
    bool come_forward() {
        const bool was_active = is_tracked() && context_.activation->shown(form_);
        if (form_.State() == WindowState::Minimized) form_.set_State(WindowState::Normal);
        window_->raise();
        if (is_top_level())
            window_->activateWindow();
        else
            window_->setFocus(Qt::ActiveWindowFocusReason);
        return was_active;
    }

    BindContext context_;
    Form& form_;
    QWidget* window_;
    Subscription changes_ = form_.watch([this] { refresh(); });
    Subscription moves_ = form_.watch_move([this] { move(); });
    Subscription shows_ =
        form_.watch_show([this](bool& was_active) { was_active = come_forward(); });
};

} // namespace

void bind(const BindContext& context, Form& model, QWidget* window) {
    new FormBinding(context, model, window);
}

} // namespace pelvan::desktop
