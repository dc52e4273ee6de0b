// A port that tells whenever bytes are taken from it: the collector of a burst joins what it reads,
// and whoever wants to know when which part of it was there hands it one of these.
#pragma once

#include <functional>
#include <utility>

#include "platform/serial_port.h"

namespace pelvan {

/// All else is the port's own; its events stay at the port.
class TimedPort : public SerialPort {
  public:
    /// `port` is borrowed; `taken` is called with the number of bytes, if any.
    TimedPort(SerialPort& port, std::function<void(std::size_t)> taken)
        : port_(port), taken_(std::move(taken)) {}

    std::string Input() override {
        std::string bytes = port_.Input();
        if (!bytes.empty()) taken_(bytes.size());
        return bytes;
    }

    std::int16_t CommPort() const override { return port_.CommPort(); }
    void set_CommPort(std::int16_t number) override { port_.set_CommPort(number); }
    const std::string& Settings() const override { return port_.Settings(); }
    void set_Settings(const std::string& settings) override { port_.set_Settings(settings); }
    bool DTREnable() const override { return port_.DTREnable(); }
    void set_DTREnable(bool on) override { port_.set_DTREnable(on); }
    bool RTSEnable() const override { return port_.RTSEnable(); }
    void set_RTSEnable(bool on) override { port_.set_RTSEnable(on); }
    std::int16_t Handshaking() const override { return port_.Handshaking(); }
    void set_Handshaking(std::int16_t mode) override { port_.set_Handshaking(mode); }
    bool PortOpen() const override { return port_.PortOpen(); }
    void set_PortOpen(bool open) override { port_.set_PortOpen(open); }
    bool lost() override { return port_.lost(); }
    long InBufferCount() override { return port_.InBufferCount(); }
    void set_InBufferCount(long zero) override { port_.set_InBufferCount(zero); }
    void wait_for_input(double timeout_ms) override { port_.wait_for_input(timeout_ms); }
    void set_Output(const std::string& bytes) override { port_.set_Output(bytes); }
    std::int16_t RThreshold() const override { return port_.RThreshold(); }
    void set_RThreshold(std::int16_t count) override { port_.set_RThreshold(count); }
    int CommID() const override { return port_.CommID(); }
    void EscapeCommFunction(EscapeCode code) override { port_.EscapeCommFunction(code); }
    void check_receive() override { port_.check_receive(); }

  private:
    SerialPort& port_;
    std::function<void(std::size_t)> taken_;
};

} // namespace pelvan
