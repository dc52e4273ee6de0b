// Brings received bytes to the event loop: watches port objects for which a receive threshold is
// set and lets them raise their receive event. A hardware line is watched by its handle, a line
// without one (a simulated one) is asked every few milliseconds. A port is never asked while the
// answer to an earlier asking still runs, and never while its threshold is 0: a blocking exchange
// sets that aside and puts it back, after which one check is made, because bytes that came
// meanwhile announce themselves no more.
#pragma once

#include <QObject>
#include <map>
#include <memory>

#include "desktop/bindings/binding.h"
#include "platform/serial_port.h"

namespace pelvan::desktop {

class PortWatcher {
  public:
    explicit PortWatcher(EventRunner run);
    ~PortWatcher();

    /// Watches the port from now on.
    void watch(SerialPort& port);
    /// Ends watching; required before the port object ends.
    void forget(SerialPort& port);

  private:
    class Watch;
    EventRunner run_;
    std::map<SerialPort*, std::unique_ptr<Watch>> watches_;
};

} // namespace pelvan::desktop
