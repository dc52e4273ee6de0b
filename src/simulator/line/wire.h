// The wire between a host and a simulated controller: bytes take their time in both directions, as
// the baud rate would have it. Times are milliseconds of the owner's clock and never go back.
#pragma once

#include <deque>
#include <memory>
#include <string>
#include <string_view>

#include "simulator/slaves/responder.h"

namespace pelvan::simulator {

/// Bytes on their way, each with the moment of its arrival.
class PacedQueue {
  public:
    explicit PacedQueue(double char_ms) : char_ms_(char_ms) {}

    void set_char_ms(double char_ms) { char_ms_ = char_ms; }
    /// Sends bytes, the first not before `ready_ms` and not before what was sent earlier; returns
    /// when the last will have arrived.
    double send(double ready_ms, std::string_view bytes);
    /// Takes the bytes that have arrived.
    [[nodiscard]] std::string take(double now_ms);
    [[nodiscard]] bool empty() const { return bytes_.empty(); }
    /// When the next byte arrives; only while not empty.
    [[nodiscard]] double next_ms() const { return bytes_.front().arrives_ms; }

  private:
    struct Byte {
        double arrives_ms;
        char value;
    };
    double char_ms_;
    double free_ms_ = 0; // when the wire is free again
    std::deque<Byte> bytes_;
};

class Wire {
  public:
    Wire(std::shared_ptr<Station> station, double char_ms)
        : station_(std::move(station)), responder_(*station_), char_ms_(char_ms),
          to_host_(char_ms) {}

    /// For a host that changes its baud rate while it is connected.
    void set_char_ms(double char_ms);
    void host_writes(std::string_view bytes, double now_ms);
    /// What has reached the host by now.
    [[nodiscard]] std::string arrived(double now_ms);
    /// When something happens next; a negative number when nothing is under way.
    [[nodiscard]] double next_ms() const;

  private:
    struct Request {
        double arrives_ms;
        std::string bytes;
    };
    void deliver(double now_ms);
    [[nodiscard]] bool takes(const Request& request);
    void answer(const Request& request);

    std::shared_ptr<Station> station_;
    Responder responder_;
    double char_ms_;
    double host_free_ms_ = 0;
    double busy_until_ms_ = 0;
    std::deque<Request> to_controller_;
    PacedQueue to_host_;
    int line_length_ = 0; // of the text that comes, where XOFF is sent behind so many characters
    double stopped_until_ms_ = 0;
    int spare_ = 0; // characters may come while stopped
};

} // namespace pelvan::simulator
