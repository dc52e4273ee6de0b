// The pool of millisecond countdowns on the platform's tick. A slot is consumed piece by piece at
// each check and frees itself when it reports its end; the tick's wrap-around is handled.
#pragma once

#include "platform/tick.h"
#include "serial/serial_state.h"

namespace pelvan {

class CountdownPool {
  public:
    CountdownPool(SerialState& state, TickSource& tick) : state_(state), tick_(tick) {}

    /// Takes the lowest free slot, or a new last one when all are busy.
    [[nodiscard]] std::int16_t start_countdown(float duration_ms);
    [[nodiscard]] bool countdown_expired(std::int16_t slot);
    void stop_countdown(std::int16_t slot);
    /// Also stores the tick in `gLastTick`.
    double read_tick();

    [[nodiscard]] TickSource& tick() { return tick_; }

    /// Blocks, without yielding, until the time has passed.
    void wait(float duration_ms);

  private:
    SerialState& state_;
    TickSource& tick_;
};

} // namespace pelvan
