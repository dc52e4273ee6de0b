// A line to a simulated controller on which anything happens to a request and its reply, as the
// bytes of a run say.
#pragma once

#include <memory>
#include <string>

#include "harness.h"
#include "platform/run_time_error.h"
#include "platform/serial_line.h"
#include "platform/tick.h"
#include "simulator/line/simulator_registry.h"

namespace pelvan::fuzz {

class HostileLine : public SerialLine {
  public:
    HostileLine(Input& input, TickSource& tick, std::unique_ptr<SerialLine> line)
        : input_(input), tick_(tick), line_(std::move(line)) {}

    /// Opens the device "hostile", sometimes; there is no other.
    static LineOpener opener(Input& input, TickSource& tick,
                             simulator::SimulatorRegistry& controllers) {
        return [&](const std::string& device, const LineSettings& settings) {
            if (device != "hostile") throw RunTimeError(error_number::kInvalidPortNumber);
            const unsigned fate = input.byte();
            if (fate >= 250)
                throw RunTimeError(fate % 2 == 0 ? error_number::kDeviceUnavailable
                                                 : error_number::kHardwareNotAvailable);
            return std::make_unique<HostileLine>(
                input, tick, controllers.open("simulated:742,speed=60", settings));
        };
    }

    bool read_into(std::string& buffer) override {
        std::string arrived;
        if (!line_->read_into(arrived) || gone_) return false;
        if (lost_) arrived.clear();
        if (damaged_ && !arrived.empty()) arrived.back() = static_cast<char>(arrived.back() ^ 1);
        if (!stray_.empty() && tick_.precise_ms() >= stray_at_ms_) {
            arrived += stray_;
            stray_.clear();
        }
        buffer += arrived;
        return true;
    }
    void wait_for_input(double timeout_ms) override {
        if (gone_) return;
        if (stray_.empty()) return line_->wait_for_input(timeout_ms);
        tick_.sleep_for_ms(std::min(timeout_ms, 5.0));
    }
    void discard_input() override {
        if (gone_) throw RunTimeError(error_number::kDeviceInputOutput);
        line_->discard_input();
        if (tick_.precise_ms() >= stray_at_ms_) stray_.clear();
    }
    void write(const std::string& bytes) override {
        if (gone_) throw RunTimeError(error_number::kDeviceInputOutput);
        lost_ = damaged_ = false;
        const unsigned fate = input_.below(32);
        switch (fate) {
        case 1:
            lost_ = true;
            break;
        case 2:
            damaged_ = true;
            break;
        case 3:
            line_->write(bytes);
            break;
        case 4:
        case 5:
            stray_ = fate == 4 ? bytes : std::string(input_.piece());
            stray_at_ms_ = tick_.precise_ms() + input_.byte() * 10;
            break;
        case 6:
            throw RunTimeError(error_number::kDeviceInputOutput);
        case 7:
            gone_ = true;
            break;
        case 8:
            stray_ = std::string(input_.piece());
            stray_at_ms_ = tick_.precise_ms();
            return;
        default:
            break;
        }
        line_->write(bytes);
    }
    void set_rts(bool on) override { line_->set_rts(on); }
    void set_dtr(bool on) override { line_->set_dtr(on); }
    [[nodiscard]] bool hung_up() const override { return gone_; }
    [[nodiscard]] int descriptor() const override { return -1; }

  private:
    Input& input_;
    TickSource& tick_;
    std::unique_ptr<SerialLine> line_;
    std::string stray_;
    double stray_at_ms_ = 0;
    bool lost_ = false;
    bool damaged_ = false;
    bool gone_ = false;
};

} // namespace pelvan::fuzz
