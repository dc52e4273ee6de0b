// XON/XOFF by the program itself, for adapters that leave it alone: a device that cannot take more
// sends XOFF, and XON when it can. Sending goes byte by byte, each as long as it is on the line, so
// that it stops within one character.
#pragma once

#include <string>
#include <string_view>

#include "platform/serial_port.h"
#include "platform/tick.h"

namespace pelvan {

class Handshake {
  public:
    /// Of bytes that came, those that are neither XON nor XOFF; the last of these counts.
    [[nodiscard]] std::string receive(std::string_view bytes);

    struct Pace {
        double character_ms;
        double timeout_ms; // for which the device may keep it waiting in all
    };
    /// Sends through a port whose input goes through `receive`. How many bytes went out: fewer than
    /// all when the device had stopped it for too long, which is forgotten then, for its XON may
    /// have been lost. Blocks for the bytes and the waiting; raises the port's errors.
    [[nodiscard]] std::size_t send(SerialPort& port, TickSource& tick, std::string_view bytes,
                                   const Pace& pace);

  private:
    bool stopped_ = false;
};

} // namespace pelvan
