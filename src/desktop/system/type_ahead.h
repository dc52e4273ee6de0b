// Drops what was typed or clicked while an exchange kept the program from looking: it was meant for
// what stood on the screen then, and four presses of Enter on a silent line must not send a command
// four times, nor answer the box that says that nothing came. Input is told apart by the moment at
// which the system took it, not by the one at which the program comes to it.
#pragma once

#include <QObject>
#include <functional>
#include <limits>

class QInputEvent;

namespace pelvan::desktop {

class TypeAhead : public QObject {
  public:
    /// `now_ms` tells the time from any moment on. Looks at all input of the program.
    explicit TypeAhead(std::function<qint64()> now_ms);

    /// Runs a handler of the person's own action. When it has blocked, what was typed meanwhile is
    /// dropped. Handlers that the person did not start (timers, the line) are not to run here:
    /// somebody may be typing a text while they block.
    void run(const std::function<void()>& handler);

    /// The program is about to look at its input, in a box say: what was typed since it last did
    /// is dropped when that is long ago.
    void drop_typed_meanwhile();

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    bool is_dropped(const QInputEvent& event);

    std::function<qint64()> now_ms_;
    qint64 looked_at_ = 0;
    /// What the program's time is ahead of the input's: the least that was seen, because input may
    /// wait before the program comes to it.
    qint64 ahead_ = std::numeric_limits<qint64>::max();
    quint64 last_stamp_ = 0;
    qint64 drop_until_ = 0; // in the program's time
    Qt::MouseButtons dropped_buttons_;
};

} // namespace pelvan::desktop
