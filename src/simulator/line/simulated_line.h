// Simulated devices as lines that a port object can open: a controller, and a plug whose transmit
// pin is (or is not) joined to its receive pin. Bytes take the time that the line's settings give
// them, by the injected tick.
#pragma once

#include <memory>
#include <string>

#include "platform/serial_line.h"
#include "platform/tick.h"
#include "simulator/line/wire.h"

namespace pelvan::simulator {

/// Milliseconds since it was made, across wraps of the tick.
class LineClock {
  public:
    explicit LineClock(TickSource& tick) : tick_(tick) { time_.start(tick.timeGetTime(), 0); }
    double now_ms() { return time_.at(tick_.timeGetTime()); }
    /// Sleeps until a moment (a negative one never comes), for `timeout_ms` at most.
    void sleep_until(double moment_ms, double timeout_ms);

  private:
    TickSource& tick_;
    SteadyTime time_;
};

class SimulatedLine : public SerialLine {
  public:
    SimulatedLine(std::shared_ptr<LineClock> clock, std::shared_ptr<Station> station,
                  const LineSettings& settings);

    bool read_into(std::string& buffer) override;
    void wait_for_input(double timeout_ms) override;
    void discard_input() override;
    void write(const std::string& bytes) override;
    void set_rts(bool) override {}
    void set_dtr(bool) override {}
    [[nodiscard]] int descriptor() const override { return -1; }

  private:
    std::shared_ptr<LineClock> clock_;
    Wire wire_;
    bool xon_xoff_;       // the system's driver would take these characters out
    bool foreign_parity_; // the controller throws away what it hears
};

class LoopbackLine : public SerialLine {
  public:
    /// `jumper_in` is looked at whenever something is sent, so it can be pulled meanwhile.
    LoopbackLine(std::shared_ptr<LineClock> clock, std::shared_ptr<const bool> jumper_in,
                 const LineSettings& settings);

    bool read_into(std::string& buffer) override;
    void wait_for_input(double timeout_ms) override;
    void discard_input() override;
    void write(const std::string& bytes) override;
    void set_rts(bool) override {}
    void set_dtr(bool) override {}
    [[nodiscard]] int descriptor() const override { return -1; }

  private:
    std::shared_ptr<LineClock> clock_;
    std::shared_ptr<const bool> jumper_in_;
    PacedQueue echo_;
};

} // namespace pelvan::simulator
