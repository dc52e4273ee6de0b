// The serial port object: the properties that the link engine, the listen monitor and the settings
// window work with. `LinePort` (line_port.h) is the real one, over a hardware or a simulated line;
// tests have a scripted one. An object belongs to the user-interface thread.
//
// Every failure is a RunTimeError: 8002 no such port, 8005 already open or in use elsewhere, 8010
// hardware not available or no permission, 8015 settings refused, 8018 not open, 8020 the device
// went away while reading, 57 it went away (or took no bytes) while writing, 68 nothing behind the
// node.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "platform/event.h"
#include "platform/line_errors.h"

namespace pelvan {

inline constexpr int kMinPortNumber = 1;
inline constexpr int kMaxPortNumber = 16;

[[nodiscard]] constexpr bool is_port_number(double number) {
    return number >= kMinPortNumber && number <= kMaxPortNumber;
}

/// Function codes of `EscapeCommFunction`.
enum class EscapeCode { SETRTS = 3, CLRRTS = 4, SETDTR = 5, CLRDTR = 6 };

class SerialPort {
  public:
    virtual ~SerialPort() = default;

    /// Port number 1..16; 8002 for any other, 8000 while open.
    virtual std::int16_t CommPort() const = 0;
    virtual void set_CommPort(std::int16_t number) = 0;

    /// "9600,N,8,1". Stored as given; a text that cannot be used is refused with 8015 at opening.
    virtual const std::string& Settings() const = 0;
    virtual void set_Settings(const std::string& settings) = 0;
    /// A parity (N, O, E, M, S) that takes the place of that in `Settings` at the next opening, for
    /// characters that are sent wrong on purpose; '\0' for none. A line that has no parity, or not
    /// this one, refuses the opening with 8015.
    virtual void set_OtherParity(char parity) = 0;

    virtual bool DTREnable() const = 0;
    virtual void set_DTREnable(bool on) = 0;
    virtual bool RTSEnable() const = 0;
    virtual void set_RTSEnable(bool on) = 0;

    /// 0 none, 1 XON/XOFF; takes effect at the next opening.
    virtual std::int16_t Handshaking() const = 0;
    virtual void set_Handshaking(std::int16_t mode) = 0;

    /// Opening raises the errors listed above; closing never fails.
    virtual bool PortOpen() const = 0;
    virtual void set_PortOpen(bool open) = 0;
    /// Open, but its line is gone: only closing and opening again helps. Looks whether the line has
    /// hung up, so that a loss shows which no other call has met yet, and gives up one that has;
    /// what has arrived stays to be read. Touches nothing else: it may be called at any time.
    virtual bool lost() = 0;

    /// Bytes waiting; never blocks. 8018 while closed, 8020 when the device is gone and nothing
    /// waits; but 0 once after the last bytes of a device that is gone, so that they end a reply.
    virtual long InBufferCount() = 0;
    /// Only 0 can be set (else 5): it discards what waits. 8018 while closed, 57 when the device is
    /// gone.
    virtual void set_InBufferCount(long zero) = 0;

    /// Takes all bytes waiting; empty when none. Errors as `InBufferCount`.
    virtual std::string Input() = 0;

    /// Sleeps until bytes wait, the line is lost or the time is over; a signal may end it sooner.
    /// 8018 while closed.
    virtual void wait_for_input(double timeout_ms) = 0;

    /// Returns as soon as the system has all bytes, at the latest after their wire time + 2 s (57).
    virtual void set_Output(const std::string& bytes) = 0;

    /// Received bytes that raise the receive event; 0 raises none.
    virtual std::int16_t RThreshold() const = 0;
    virtual void set_RThreshold(std::int16_t count) = 0;

    /// What the hardware has counted since the opening; nothing while closed, and where nobody
    /// counts.
    [[nodiscard]] virtual std::optional<LineErrors> line_errors() const { return {}; }

    /// The system's handle while open, -1 while closed or when the line is a simulated one.
    virtual int CommID() const = 0;

    /// Drives a modem line at once; 8018 while closed, 57 when the device is gone. No error where
    /// the line has no such wire. `DTREnable` and `RTSEnable` keep their values.
    virtual void EscapeCommFunction(EscapeCode code) = 0;

    /// Raised (by `check_receive` only) when at least `RThreshold` bytes wait.
    Event<> OnComm;

    /// Raised when `CommID`, `RThreshold` or the open state changed, so that whoever watches the
    /// handle for readiness can begin or end watching. Not raised by the destructor: the object's
    /// owner says when it ends.
    Event<> watch_changed;

    /// Takes in what has arrived and raises `OnComm`, at most once, when the threshold is reached.
    /// The event loop calls it when the handle is readable; nothing else does. Never throws for a
    /// line that is gone: the event is raised once more instead, by the next call, so that its
    /// handler meets the error. A handler may end the object.
    virtual void check_receive() = 0;
};

} // namespace pelvan
