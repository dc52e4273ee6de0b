#include "desktop/system/port_watcher.h"

#include <QPointer>
#include <QSocketNotifier>
#include <QTimer>

namespace pelvan::desktop {
namespace {

constexpr int kAskEveryMs = 5;

/// Ends a notifier that may be the one whose signal is being handled.
struct EndNotifier {
    void operator()(QSocketNotifier* notifier) const {
        notifier->setEnabled(false);
        notifier->deleteLater();
    }
};

} // namespace

class PortWatcher::Watch : public QObject {
  public:
    Watch(EventRunner run, SerialPort& port) : run_(std::move(run)), port_(port) {
        timer_.setInterval(kAskEveryMs);
        connect(&timer_, &QTimer::timeout, this, [this] { check(); });
        changed();
    }

  private:
    [[nodiscard]] bool wanted() const { return port_.PortOpen() && port_.RThreshold() > 0; }

    void changed() {
        follow();
        if (!wanted() || check_queued_) return;
        check_queued_ = true;
        QMetaObject::invokeMethod(
            this,
            [this] {
                check_queued_ = false;
                check();
            },
            Qt::QueuedConnection);
    }

    /// Watches what is to be watched now; nothing while a check runs, for a handle that stays
    /// readable would turn the event loop of a dialog into a spin.
    void follow() {
        const int handle = wanted() && !checking_ ? port_.CommID() : -1;
        if (notifier_ && notifier_->socket() != handle) notifier_.reset();
        if (handle >= 0 && !notifier_) {
            notifier_.reset(new QSocketNotifier(handle, QSocketNotifier::Read));
            connect(notifier_.get(), &QSocketNotifier::activated, this, [this] { check(); });
        }
        if (wanted() && !checking_ && handle < 0)
            timer_.start();
        else
            timer_.stop();
    }

    void check() {
        if (checking_ || !wanted()) return;
        const QPointer<Watch> self(this);
        checking_ = true;
        follow();
        const EventRunner run = run_; // outlives this, which the handler may end
        run([this] { port_.check_receive(); });
        if (!self) return; // the handler has ended the port
        checking_ = false;
        follow();
    }

    EventRunner run_;
    SerialPort& port_;
    QTimer timer_;
    std::unique_ptr<QSocketNotifier, EndNotifier> notifier_;
    bool checking_ = false;
    bool check_queued_ = false;
    Subscription changes_ = port_.watch_changed.subscribe([this] { changed(); });
};

PortWatcher::PortWatcher(EventRunner run) : run_(std::move(run)) {}

PortWatcher::~PortWatcher() = default;

void PortWatcher::watch(SerialPort& port) {
    watches_[&port] = std::make_unique<Watch>(run_, port);
}

void PortWatcher::forget(SerialPort& port) {
    watches_.erase(&port);
}

} // namespace pelvan::desktop
