// Brings what changes many times a second, with every register of a transfer, to the screen at most
// five times a second: the serial line would wait for the painting. The first change is shown at
// once, those that follow within the pause together.
#pragma once

#include <QTimer>
#include <functional>
#include <utility>

namespace pelvan::desktop {

class UpdateThrottle : public QTimer {
  public:
    /// `show` brings the widget up to date; `parent` is the widget or dies with it.
    UpdateThrottle(QObject* parent, std::function<void()> show)
        : QTimer(parent), show_(std::move(show)) {
        setObjectName(QStringLiteral("update_throttle"));
        setSingleShot(true);
        setInterval(kPauseMs);
        connect(this, &QTimer::timeout, this, [this] {
            if (std::exchange(waiting_, false)) request();
        });
    }

    /// Shows the change now or at the end of the pause.
    void request() {
        waiting_ = isActive();
        if (waiting_) return;
        start();
        show_();
    }

  private:
    static constexpr int kPauseMs = 200;
    std::function<void()> show_;
    bool waiting_ = false;
};

} // namespace pelvan::desktop
