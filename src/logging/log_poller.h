// One Modbus read for one row of the log set: request, exchange, value text, and how the controller
// answered. It knows neither the grid nor the log file.
#pragma once

#include <array>

#include "logging/log_set.h"
#include "protocols/modbus/modbus.h"
#include "serial/link.h"

namespace pelvan {

/// What became of a row in the last pass.
enum class RowState { NotPolled, Answered, Exception, Nothing, LineInUse };

struct LogReading {
    std::string value; // for the Value column and the log
    RowState state = RowState::Nothing;
    bool after_strays = false; // bytes that nobody had asked for stood on the line before
    bool operator==(const LogReading&) const = default;
};

class LogPoller {
  public:
    LogPoller(Link& link, Modbus& modbus) : link_(link), modbus_(modbus) {}

    /// Forgets what earlier rows put into the value array.
    void begin_pass();
    /// Blocks as `exchange_carefully` does. No reading, and an empty value, for a whole reply that
    /// answers another request or may do so. 6 (overflow) for a command or value outside its
    /// integer range.
    [[nodiscard]] LogReading poll(const LogRow& row);

  private:
    [[nodiscard]] LogReading exchange(const std::string& frame);

    Link& link_;
    Modbus& modbus_;
    std::array<float, 3> values_{0, kValueListEnd, kValueListEnd};
};

} // namespace pelvan
