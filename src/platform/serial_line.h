// One end of a line that is open: what stands behind a port object. A line begins with its opening
// and ends with its destruction. Implementations: the system's serial devices
// (linux_serial_line.cpp) and the simulated controllers (simulator/).
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/line_errors.h"

namespace pelvan {

/// Everything that an opening needs beside the device itself.
struct LineSettings {
    int baud_rate = 9600;
    char parity = 'N'; // N, O, E, M, S
    int data_bits = 8;
    double stop_bits = 1;
    bool xon_xoff = false;
    bool dtr = false;
    bool rts = false;
    /// The parity is not that of the device at the other end, which is to see wrong characters.
    bool foreign_parity = false;
};

/// Parses "baud,parity,data bits,stop bits" strictly (parity letter in either case; no spaces);
/// nothing when malformed. The hand-shake and modem-line members keep their defaults.
[[nodiscard]] std::optional<LineSettings> parse_line_settings(const std::string& text);

/// Time of one character on the line in microseconds: start, data, parity and stop bits.
[[nodiscard]] double character_time_us(const LineSettings& settings);

class SerialLine {
  public:
    virtual ~SerialLine() = default;

    /// Appends what has arrived since the last call; never blocks. False when the line is gone.
    virtual bool read_into(std::string& buffer) = 0;
    /// Sleeps until something arrives, the line is gone or the time is over; a signal may end it
    /// sooner. Returns at once when something has arrived already.
    virtual void wait_for_input(double timeout_ms) = 0;
    /// Forgets what has arrived and was not read; 57 when the line is gone.
    virtual void discard_input() = 0;
    /// Returns when the system has every byte; 57 when the line is gone or takes no more.
    virtual void write(const std::string& bytes) = 0;
    /// Drives a modem line; nothing where the line has none. 57 when the line is gone.
    virtual void set_rts(bool on) = 0;
    virtual void set_dtr(bool on) = 0;
    /// Whether the line is gone for good, told without reading or driving it. A line that cannot
    /// tell says no; the next read does then.
    [[nodiscard]] virtual bool hung_up() const { return false; }
    /// Counted since the opening; nothing where the driver does not count.
    [[nodiscard]] virtual std::optional<LineErrors> errors() const { return {}; }
    /// Handle to watch for readiness, -1 when there is none.
    [[nodiscard]] virtual int descriptor() const = 0;
};

/// Opens a device ("/dev/ttyUSB0", "simulated:742"); throws the errors of serial_port.h.
using LineOpener =
    std::function<std::unique_ptr<SerialLine>(const std::string& device, const LineSettings&)>;

/// Opens a serial device of this system. Blocks for microseconds; DTR and RTS are set as asked.
[[nodiscard]] std::unique_ptr<SerialLine> open_serial_device(const std::string& path,
                                                             const LineSettings& settings);

} // namespace pelvan
