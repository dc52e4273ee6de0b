// The port of a channel as its user hears it: without the echo of what was sent, and without XON
// and XOFF, where the channel is set to that.
#pragma once

#include <optional>
#include <string>

#include "platform/forwarding_port.h"
#include "serial/frame_exchange.h"

namespace pelvan {

/// A port from whose input something is taken out.
class FilteredPort : public ForwardingPort {
  public:
    /// All are borrowed. `waiting` keeps, from one such port to the next, what has come and was not
    /// taken yet.
    FilteredPort(SerialPort& port, std::string& waiting)
        : ForwardingPort(port), waiting_(waiting) {}

    long InBufferCount() override;
    void set_InBufferCount(long zero) override;
    std::string Input() override;
    void wait_for_input(double timeout_ms) override;

  protected:
    /// What is left of bytes that came.
    [[nodiscard]] virtual std::string filtered(const std::string& bytes) = 0;
    /// Whether what comes must be looked at also when it is discarded.
    [[nodiscard]] virtual bool looks_at_all() const = 0;

  private:
    std::string& waiting_;
};

/// Hears no echo.
class EchoPort : public FilteredPort {
  public:
    EchoPort(SerialPort& port, std::string& waiting, EchoFilter& filter)
        : FilteredPort(port, waiting), filter_(filter) {}

  protected:
    [[nodiscard]] std::string filtered(const std::string& bytes) override {
        return filter_.receive(bytes);
    }
    [[nodiscard]] bool looks_at_all() const override { return filter_.awaits(); }

  private:
    EchoFilter& filter_;
};

/// Hears no XON and no XOFF.
class HandshakePort : public FilteredPort {
  public:
    HandshakePort(SerialPort& port, std::string& waiting, Handshake& handshake)
        : FilteredPort(port, waiting), handshake_(handshake) {}

  protected:
    [[nodiscard]] std::string filtered(const std::string& bytes) override {
        return handshake_.receive(bytes);
    }
    [[nodiscard]] bool looks_at_all() const override { return true; }

  private:
    Handshake& handshake_;
};

/// How many bytes stand in the port. An error counts as none, and is left to the call that comes
/// next, whose table says what to do.
[[nodiscard]] std::size_t waiting_bytes(SerialPort& port);

/// What stands between a port and the channel that uses it. All are borrowed.
class ChannelPort {
  public:
    ChannelPort(SerialPort& port, LineRecord& record, const ExchangeWay& way) : port_(&port) {
        if (way.own_handshake)
            port_ = &handshake_.emplace(*port_, record.unread_by_handshake, record.handshake);
        if (way.echo) port_ = &echo_.emplace(*port_, record.unread_by_echo, record.echo);
    }
    ChannelPort(const ChannelPort&) = delete;
    ChannelPort& operator=(const ChannelPort&) = delete;
    [[nodiscard]] SerialPort& port() { return *port_; }

  private:
    SerialPort* port_;
    std::optional<HandshakePort> handshake_;
    std::optional<EchoPort> echo_;
};

} // namespace pelvan
