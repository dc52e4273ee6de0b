// One Modbus read for one row of the log set: request, exchange, value text, and how the controller
// answered. Neighbours may be read with one request; their readings are then those that single
// requests would have given. It knows neither the grid nor the log file.
#pragma once

#include <array>
#include <map>

#include "logging/log_set.h"
#include "protocols/modbus/modbus.h"
#include "registers/read_ahead.h"
#include "serial/careful_exchange.h"

namespace pelvan {

/// What became of a row in the last pass.
enum class RowState { NotPolled, Answered, Exception, Nothing, LineInUse };

struct LogReading {
    std::string value; // for the Value column and the log
    RowState state = RowState::Nothing;
    /// Bytes that nobody had asked for stood on the line before, or came beside the answer, or what
    /// came may answer another row.
    bool after_strays = false;
    /// What came answers another request, and was left out.
    bool of_another = false;
    bool operator==(const LogReading&) const = default;
};

class LogPoller {
  public:
    LogPoller(Link& link, Modbus& modbus) : link_(link), modbus_(modbus), ahead_(link, modbus) {}

    /// Forgets what earlier rows put into the value array, what was read ahead, and that the port
    /// did not open.
    void begin_pass();
    /// Blocks as `exchange_carefully` does, but not again in a pass in which it took time to find
    /// that the port does not open. No reading, and an empty value, for a whole reply that
    /// answers another request or may do so. 6 (overflow) for a command or value outside its
    /// integer range.
    ///
    /// `neighbours`: how many rows to come, this one included, ask for registers that follow one
    /// another and may be read with this one; 0 when each row is to be read for itself.
    [[nodiscard]] LogReading poll(const LogRow& row, int neighbours = 0);

  private:
    [[nodiscard]] LogReading read(const std::string& frame, int neighbours);
    [[nodiscard]] std::string transmit(const std::string& frame, float more_ms);
    [[nodiscard]] bool in_step(const std::string& frame);
    [[nodiscard]] CarefulReply exchange(const std::string& frame, float more_ms = 0);
    [[nodiscard]] CarefulReply try_port(const CarefulRequest& request);
    [[nodiscard]] CarefulReply exchange_with_neighbours(const std::string& frame, int neighbours);

    Link& link_;
    Modbus& modbus_;
    ReadAhead ahead_;
    std::map<char, int> silences_; // of an address, to reads by the sibling function
    bool gave_up_ = false;
    std::array<float, 3> values_{0, kValueListEnd, kValueListEnd};
};

} // namespace pelvan
