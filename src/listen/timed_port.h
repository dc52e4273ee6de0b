// A port that tells whenever bytes are taken from it: the collector of a burst joins what it reads,
// and whoever wants to know when which part of it was there hands it one of these.
#pragma once

#include <functional>
#include <utility>

#include "platform/forwarding_port.h"

namespace pelvan {

class TimedPort : public ForwardingPort {
  public:
    /// `port` is borrowed; `taken` is called with the number of bytes, if any.
    TimedPort(SerialPort& port, std::function<void(std::size_t)> taken)
        : ForwardingPort(port), taken_(std::move(taken)) {}

    std::string Input() override {
        std::string bytes = port().Input();
        if (!bytes.empty()) taken_(bytes.size());
        return bytes;
    }

  private:
    std::function<void(std::size_t)> taken_;
};

} // namespace pelvan
