// The port object over whatever line stands behind its number. It owns the property rules (what may
// be set when, which error number says what) and the receive buffer; bytes and modem lines are the
// line's.
//
// A line that is lost is given up at once, and the object stays "open but lost" until it is closed
// and opened again: bytes that arrived before are still delivered, then reading raises 8020 and
// writing 57. `CommID` is then -1 and `watch_changed` was raised; a watcher that finds the object
// open with a threshold should run `check_receive` once more, which raises the event of the loss.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/serial_line.h"
#include "platform/serial_port.h"

namespace pelvan {

/// The device that a port number stands for, resolved again at every opening; nothing when none.
using DeviceMap = std::function<std::optional<std::string>(int number)>;

class LinePort : public SerialPort {
  public:
    LinePort(DeviceMap devices, LineOpener opener);

    std::int16_t CommPort() const override { return comm_port_; }
    void set_CommPort(std::int16_t number) override;
    const std::string& Settings() const override { return settings_; }
    void set_Settings(const std::string& settings) override { settings_ = settings; }
    void set_OtherParity(char parity) override { other_parity_ = parity; }
    bool DTREnable() const override { return dtr_; }
    void set_DTREnable(bool on) override;
    bool RTSEnable() const override { return rts_; }
    void set_RTSEnable(bool on) override;
    std::int16_t Handshaking() const override { return handshaking_; }
    void set_Handshaking(std::int16_t mode) override { handshaking_ = mode; }
    bool PortOpen() const override { return open_; }
    void set_PortOpen(bool open) override;
    bool lost() override;
    long InBufferCount() override;
    void set_InBufferCount(long zero) override;
    std::string Input() override;
    void wait_for_input(double timeout_ms) override;
    void set_Output(const std::string& bytes) override;
    std::int16_t RThreshold() const override { return threshold_; }
    void set_RThreshold(std::int16_t count) override;
    [[nodiscard]] std::optional<LineErrors> line_errors() const override;
    int CommID() const override;
    void EscapeCommFunction(EscapeCode code) override;
    void check_receive() override;

  private:
    void open();
    void close();
    void require_open() const;
    void pump();
    void use_line(const std::function<void(SerialLine&)>& action);
    void release_line();
    [[nodiscard]] bool loss_to_report() const;

    DeviceMap devices_;
    LineOpener opener_;
    std::unique_ptr<SerialLine> line_; // null while closed, and while open but lost
    bool open_ = false;
    bool loss_reported_ = false;
    bool input_taken_ = false; // bytes were read since the last discard or output
    std::string received_;
    std::int16_t comm_port_ = 1;
    std::string settings_ = "9600,N,8,1";
    char other_parity_ = '\0';
    std::int16_t handshaking_ = 0;
    std::int16_t threshold_ = 0;
    bool dtr_ = true;
    bool rts_ = true;
};

} // namespace pelvan
