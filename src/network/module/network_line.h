// A port over the network as a line.
#pragma once

#include <memory>

#include "network/module/far_port.h"
#include "network/network_module.h"

namespace pelvan {

class NetworkLine : public SerialLine {
  public:
    /// A line on a connection that is open.
    NetworkLine(std::unique_ptr<FarPort> far, std::unique_ptr<Connection> connection,
                const NetworkAttempt& attempt);
    ~NetworkLine() override { connection_->line_state = nullptr; }

    bool read_into(std::string& buffer) override;
    void wait_for_input(double timeout_ms) override;
    void discard_input() override;
    void write(const std::string& bytes) override;
    void set_rts(bool on) override;
    void set_dtr(bool on) override;
    [[nodiscard]] bool hung_up() const override;
    [[nodiscard]] std::optional<LineErrors> errors() const override;
    [[nodiscard]] int descriptor() const override { return connection_->descriptor(); }

  private:
    void take_in();
    void fail_if_lost() const;
    [[nodiscard]] bool may_send() const { return !stopped_ && !connection_->held(); }
    void count(unsigned state);

    std::unique_ptr<FarPort> far_; // outlives the connection
    std::unique_ptr<Connection> connection_;
    std::string name_;
    std::function<void(const std::string&)> tell_lost_;
    double character_time_us_;
    bool strips_flow_control_; // a plain server passes these characters on as they come
    bool stopped_ = false;     // by XOFF
    std::string received_;
    LineErrors errors_;
};

/// What a lost or refused connection's error means, in words.
[[nodiscard]] std::string network_error_text(int error);

} // namespace pelvan
