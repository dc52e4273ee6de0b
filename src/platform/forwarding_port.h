// A port that stands before another one and is it in everything but what a derived class changes:
// whoever wants to know or to change something of what passes through a port makes one of these.
#pragma once

#include "platform/serial_port.h"

namespace pelvan {

class ForwardingPort : public SerialPort {
  public:
    /// `port` is borrowed; its events stay its own.
    explicit ForwardingPort(SerialPort& port) : port_(port) {}

    std::int16_t CommPort() const override { return port_.CommPort(); }
    void set_CommPort(std::int16_t number) override { port_.set_CommPort(number); }
    const std::string& Settings() const override { return port_.Settings(); }
    void set_Settings(const std::string& settings) override { port_.set_Settings(settings); }
    void set_OtherParity(char parity) override { port_.set_OtherParity(parity); }
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
    std::string Input() override { return port_.Input(); }
    void wait_for_input(double timeout_ms) override { port_.wait_for_input(timeout_ms); }
    void set_Output(const std::string& bytes) override { port_.set_Output(bytes); }
    std::int16_t RThreshold() const override { return port_.RThreshold(); }
    void set_RThreshold(std::int16_t count) override { port_.set_RThreshold(count); }
    [[nodiscard]] std::optional<LineErrors> line_errors() const override {
        return port_.line_errors();
    }
    int CommID() const override { return port_.CommID(); }
    void EscapeCommFunction(EscapeCode code) override { port_.EscapeCommFunction(code); }
    void check_receive() override { port_.check_receive(); }

  protected:
    [[nodiscard]] SerialPort& port() { return port_; }

  private:
    SerialPort& port_;
};

} // namespace pelvan
