// Work that waits until a window stands on the screen.
#pragma once

#include <QEvent>
#include <QTimer>
#include <QWidget>
#include <functional>
#include <utility>

namespace pelvan::desktop {

/// Runs `then` once, after the widget's first paint, or at the latest after a moment: a window that
/// starts minimized is never painted. Owned by the widget; ends itself.
class FirstPaint : public QObject {
  public:
    FirstPaint(QWidget& widget, std::function<void()> then)
        : QObject(&widget), then_(std::move(then)) {
        widget.installEventFilter(this);
        QTimer::singleShot(kLatestMs, this, [this] { hand_over(); });
    }

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::Paint)
            QMetaObject::invokeMethod(
                this, [this] { hand_over(); }, Qt::QueuedConnection);
        return QObject::eventFilter(watched, event);
    }

  private:
    static constexpr int kLatestMs = 250;

    void hand_over() {
        deleteLater();
        if (const auto work = std::exchange(then_, nullptr)) work();
    }

    std::function<void()> then_;
};

} // namespace pelvan::desktop
