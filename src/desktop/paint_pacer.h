// Painting of a widget that changes many times a second: with every register of a transfer, say. As
// often painted, the serial line would wait for the screen. The first change is painted at once,
// those that follow within a fifth of a second together.
#pragma once

#include <QTimer>
#include <QWidget>

namespace pelvan::desktop {

class PaintPacer : public QTimer {
  public:
    explicit PaintPacer(QWidget* widget) : QTimer(widget), widget_(widget) {
        setSingleShot(true);
        setInterval(kPauseMs);
        connect(this, &QTimer::timeout, this, [this] { paint_changes(); });
    }

    /// To be called before each change.
    void change() {
        if (isActive())
            widget_->setUpdatesEnabled(false);
        else
            start();
    }

  private:
    static constexpr int kPauseMs = 200;

    void paint_changes() {
        if (widget_->updatesEnabled()) return;
        widget_->setUpdatesEnabled(true);
        start();
    }

    QWidget* widget_;
};

} // namespace pelvan::desktop
