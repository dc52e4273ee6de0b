// The port of a scan: opened at one setting after the other, a request out, what comes back in.
// Waiting sleeps in short pieces, between which whoever scans may go on or stop.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "platform/serial_port.h"
#include "scan/scan_probe.h"
#include "serial/frame_exchange.h"

namespace pelvan {

/// So long a line is silent before it counts as silent.
inline constexpr double kScanSilenceMs = 250;

/// What came back, an echo of the request taken off.
struct Heard {
    std::string bytes;
    /// From the end of the request to the beginning of the answer, as far as that can be told.
    double reply_ms = 0;
    /// Else nothing was asked, because bytes stood on the line already.
    bool sent = true;
};

/// Raises the port's errors; 8015 for a setting that the port does not have.
class ScanLine {
  public:
    /// `go_on` is asked every 10 ms; after the first no everything returns at once.
    ScanLine(std::unique_ptr<SerialPort> port, TickSource& tick, const ScanOptions& options,
             std::function<bool()> go_on);

    /// Opens the port with these settings, unless it is open with them.
    void open(const LineSettings& settings);

    /// Sends a probe's request and returns what comes within `patience_ms` behind its last bit, a
    /// frame that has begun included. Nothing is sent when bytes stand on the line: those are
    /// returned. What a probe's conversation ends with goes out when anything came.
    [[nodiscard]] Heard ask(ScanProbe& probe, int address, double patience_ms);
    /// Goes on waiting for the answer to the last request, until `patience_ms` behind its last bit.
    [[nodiscard]] Heard await(ScanProbe& probe, int address, double patience_ms);
    /// What comes within this time.
    [[nodiscard]] std::string listen(double ms);
    /// Takes what comes until so long nothing does, for four times as long at most. False when
    /// bytes still came.
    [[nodiscard]] bool fall_silent(std::string& taken, double silence_ms = kScanSilenceMs);
    /// When the last bit of the last request was out, and when the last byte came, by the tick.
    [[nodiscard]] double sent_ms() const { return sent_ms_; }
    [[nodiscard]] double arrived_ms() const { return arrived_ms_; }

    [[nodiscard]] bool go_on();
    /// Whether requests came back as they went out.
    [[nodiscard]] bool echoes() const { return echoes_; }

  private:
    void send(FrameExchange& frames, const std::string& bytes);
    void rest(double ms);
    [[nodiscard]] std::string collect(FrameExchange& frames, double until_ms,
                                      const IsWhole& is_whole);
    [[nodiscard]] double wire_ms(const std::string& bytes) const {
        return static_cast<double>(bytes.size()) * way_.character_ms;
    }

    std::unique_ptr<SerialPort> port_;
    TickSource& tick_;
    bool toggles_;
    bool over_network_;
    std::function<bool()> go_on_;
    bool stopped_ = false;
    bool echoes_ = false;
    double sent_ms_ = 0;
    double arrived_ms_ = 0;
    ExchangeWay way_;
    LineRecord record_;
};

} // namespace pelvan
