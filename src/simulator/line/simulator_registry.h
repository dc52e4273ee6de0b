// Keeps the simulated controllers while channels are rebuilt around them: a device text always
// leads to the same controller, so that a value written before a port was closed is read after it
// is opened again, and two ports with the same text reach the same controller.
#pragma once

#include <map>
#include <memory>
#include <string>

#include "platform/serial_line.h"
#include "platform/tick.h"
#include "simulator/line/device_text.h"
#include "simulator/line/simulated_line.h"

namespace pelvan::simulator {

class SimulatorRegistry {
  public:
    /// `tick` is borrowed and must outlive the registry and its lines.
    explicit SimulatorRegistry(TickSource& tick);

    /// Opens a device whose text begins with "simulated:"; 8002 when the rest is not understood.
    [[nodiscard]] std::unique_ptr<SerialLine> open(const std::string& device,
                                                   const LineSettings& settings);

    /// The jumper of the device "simulated:loopback" (in at first), also while it is open. A text
    /// with an option "jumper" keeps what that says.
    void set_jumper(bool in) { *jumper_in_ = in; }

  private:
    std::shared_ptr<LineClock> clock_;
    std::shared_ptr<bool> jumper_in_;
    std::map<std::string, std::shared_ptr<Station>> stations_;
};

/// A new controller for a device text's meaning.
[[nodiscard]] std::shared_ptr<Station> make_station(const SimulatedDevice& device);

} // namespace pelvan::simulator
