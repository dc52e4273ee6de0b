// Exchanges that end with the last byte of the reply's own frame, for channels that are set to
// them, instead of with a pause on the line. Waiting sleeps until bytes come. Whether the bytes so
// far are a whole frame is the protocol's to say; its answer is handed in as a value.
//
// A pause shows a reply that comes twice, because both are heard before the next request. What
// stands in for it here: bytes that come in the distance to the next request are counted and keep
// it back, and a reply that comes much sooner than any before is listened behind.
#pragma once

#include <algorithm>
#include <functional>
#include <limits>
#include <string>
#include <string_view>

#include "platform/serial_port.h"
#include "platform/tick.h"
#include "serial/echo_filter.h"
#include "serial/handshake.h"

namespace pelvan {

/// Whether the bytes of a reply so far are one whole frame and nothing else; any bytes will do.
using IsWhole = std::function<bool(std::string_view received)>;

/// Adapters deliver in lumps of up to 16 ms, networks when they come to it: a shorter silence does
/// not end what is not whole.
inline constexpr double kAdapterSilenceMs = 20;
inline constexpr double kNetworkSilenceMs = 300;

/// How a channel exchanges.
struct ExchangeWay {
    /// Replies end with their frame, not with a pause.
    bool complete = false;
    /// The line gives back what is sent, and that is taken out of what comes.
    bool echo = false;
    /// XON and XOFF are the program's work, and not the driver's.
    bool own_handshake = false;
    double character_ms = 0;
    /// Silence that a request keeps from what was on the line before it.
    double distance_ms = 0;
    /// Silence that ends a reply whose frame is not whole, unless the pause is longer.
    double silence_ms = kAdapterSilenceMs;
};

/// The way of a channel with these values of its keys and these settings. Anything but "COMPLETE"
/// is the pause, anything but "YES" no echo, and so is everything with settings that no port opens
/// with.
[[nodiscard]] ExchangeWay exchange_way(const std::string& exchange, const std::string& settings,
                                       const std::string& echo = {});

/// What is remembered of a port from one exchange to the next. Moments are those of
/// `TickSource::precise_ms`.
struct LineRecord {
    /// When its last byte came or went out.
    double last_byte_ms = -std::numeric_limits<double>::infinity();
    /// The shortest time from a request to the end of its reply; 0 while none is known.
    double fastest_ms = 0;
    std::size_t last_reply = 0; // bytes
    bool lost = false;          // its device went, and no opening has succeeded since
    EchoFilter echo;
    Handshake handshake;
    // What came, and nobody has taken yet, without XON and XOFF, and without echoes.
    std::string unread_by_echo;
    std::string unread_by_handshake;
};

/// In which pieces the bytes of replies came.
struct Lumps {
    std::size_t bytes = 0; // most that came at once
    double gap_ms = 0;     // longest pause inside a reply, where it was timed
    void add(const Lumps& other) {
        bytes = std::max(bytes, other.bytes);
        gap_ms = std::max(gap_ms, other.gap_ms);
    }
    /// More at once than a serial chip gathers: an adapter delivers them so.
    [[nodiscard]] bool seen() const { return bytes > 16; }
};

/// One exchange on an open port. Raises the port's errors.
class FrameExchange {
  public:
    FrameExchange(SerialPort& port, TickSource& tick, LineRecord& record, const ExchangeWay& way)
        : port_(port), tick_(tick), record_(record), way_(way) {}

    /// Waits until the line is far enough from its last byte, for 1 s at most. Takes what stands
    /// there and what comes meanwhile; the number of these bytes. No discarding follows: what comes
    /// a moment later belongs to the reply, which it makes no frame, and is not lost unseen.
    [[nodiscard]] std::size_t keep_distance();
    /// The request has been handed to the port.
    void sent(std::size_t bytes);
    /// The reply: a whole frame, or what came until `quiet_ms` (20 ms at least) passed without a
    /// byte. It must begin within `timeout_ms`, and then has the time of the longest frame more.
    [[nodiscard]] std::string collect(double timeout_ms, double quiet_ms, const IsWhole& is_whole);

    [[nodiscard]] const Lumps& lumps() const { return lumps_; }
    /// Whether bytes were still coming when the last `collect` ended, behind no whole frame.
    [[nodiscard]] bool cut_off() const { return cut_off_; }

  private:
    [[nodiscard]] std::size_t counted() { return static_cast<std::size_t>(port_.InBufferCount()); }
    void take(std::string& bytes, std::size_t counted);
    [[nodiscard]] std::size_t bytes_waiting(const std::string& reply);
    [[nodiscard]] double listening_ms() const;

    SerialPort& port_;
    TickSource& tick_;
    LineRecord& record_;
    const ExchangeWay& way_;
    bool asked_ = false; // else it is the rest of an answer that is collected
    double sent_ms_ = 0;
    bool lost_ = false;
    bool cut_off_ = false;
    Lumps lumps_;
};

} // namespace pelvan
