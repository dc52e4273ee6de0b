// The loop-back plug at the end of a served line: what a client writes comes back, or nothing while
// the jumper is out.
#pragma once

#include <string>
#include <string_view>

#include "simulator/line/device_text.h"
#include "simulator/line/wire.h"

namespace pelvan::simulator {

/// Has what a `Wire` has.
class Plug {
  public:
    Plug(bool jumper_in, double char_ms) : jumper_in_(jumper_in), echo_(char_ms) {}
    void set_char_ms(double char_ms) { echo_.set_char_ms(char_ms); }
    void host_writes(std::string_view bytes, double at_ms) {
        if (jumper_in_) echo_.send(at_ms, bytes);
    }
    [[nodiscard]] std::string arrived(double at_ms) { return echo_.take(at_ms); }
    [[nodiscard]] double next_ms() const { return echo_.empty() ? -1 : echo_.next_ms(); }

  private:
    bool jumper_in_;
    PacedQueue echo_;
};

/// "model 742 at address 1", for whoever is told what is served.
[[nodiscard]] std::string served_device_text(const SimulatedDevice& device);

} // namespace pelvan::simulator
