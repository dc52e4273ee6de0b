// What goes wrong on a simulated line: each fault has a rate, and a seed makes the sequence of
// faults the same in every run and on every machine.
#pragma once

#include <cstdint>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace pelvan::simulator {

enum class ReplyKind { Modbus, Tellura, TelluraAck, FullPoll, FullAck, FullData, Text };

/// A reply as the slave means it.
struct Reply {
    ReplyKind kind = ReplyKind::Modbus;
    std::string bytes;
    /// The same reply as a device with another address would give it; empty where replies carry
    /// none.
    std::string from_another;
};

/// Rates from 0 (never) to 1 (always), and the times of those faults that are times.
struct FaultPlan {
    double lost = 0;      // no reply at all
    double flip = 0;      // one bit of the reply is inverted
    double crc = 0;       // the check at the end is wrong (Modbus, Tellura/AB)
    double gap = 0;       // a pause inside the reply
    double noise = 0;     // one to four stray bytes before the reply
    double late = 0;      // the reply begins late
    double other = 0;     // a device with another address answers
    double lost_ack = 0;  // Full, Tellura/AB: a request is not acknowledged
    double nak = 0;       // Full, Tellura/AB: NAK instead of ACK
    double no_etx = 0;    // Full: the response lacks its ETX
    double xoff = 0;      // Xon: XOFF, a pause and XON before the reply
    double echo_flip = 0; // on a line that echoes: one bit of the echo is inverted
    double echo_cut = 0;  // the echo lacks its last byte
    double gap_ms = 100;
    double late_ms = 400;
    double xoff_ms = 200;
    std::uint32_t only = 0; // the reply that they hit, counted from 1; 0 for any
    std::uint32_t seed = 1;
};

/// Bytes of a reply and how long the line is quiet before them.
struct Piece {
    double wait_ms = 0;
    std::string bytes;
};

class FaultSource {
  public:
    explicit FaultSource(const FaultPlan& plan) : plan_(plan), random_(plan.seed) {}

    /// What reaches the line of a reply; nothing when it is lost.
    [[nodiscard]] std::vector<Piece> apply(const Reply& reply);
    /// What comes back of bytes that the host sends on a line that echoes.
    [[nodiscard]] std::string echo_of(std::string_view bytes);

  private:
    [[nodiscard]] bool happens(double rate);
    [[nodiscard]] unsigned below(unsigned limit);
    void corrupt_ends(const Reply& reply, std::string& bytes);
    void flip_bit(std::string& bytes);

    FaultPlan plan_;
    std::mt19937 random_;
    std::uint32_t replies_ = 0;
};

} // namespace pelvan::simulator
