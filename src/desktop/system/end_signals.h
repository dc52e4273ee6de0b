// The signals that ask the program to end: logging out, a shutdown, Ctrl+C in the terminal that it
// was started from. They arrive as an event, so that what was gathered is written first.
#pragma once

#include <QObject>
#include <functional>

namespace pelvan::desktop {

class EndSignals : public QObject {
  public:
    /// From now on SIGTERM, SIGINT and SIGHUP run `end` from the event loop, once; a second one
    /// ends the process at once. Signals that are ignored stay so. One object at a time.
    explicit EndSignals(std::function<void()> end);
    ~EndSignals() override;

    /// Whether a signal came, also before its event: for work that lets no events run.
    [[nodiscard]] static bool pending();
};

} // namespace pelvan::desktop
