// A port object that answers from a script on a fake tick, fails where told to, and writes down
// every call that a line would see.
#pragma once

#include <deque>
#include <map>
#include <string>
#include <vector>

#include "platform/run_time_error.h"
#include "platform/serial_port.h"
#include "support/fake_time.h"

namespace pelvan::testing {

/// Bytes that arrive so many milliseconds after the output that they answer.
struct Arrival {
    double after_ms = 0;
    std::string bytes;
};

class FakeSerialPort : public SerialPort {
  public:
    /// What happened on the line and when ("open", "rts 1", "output 4", "discard", "close" ...).
    struct Event {
        std::string what;
        double at_ms = 0;
    };

    /// A port that is destroyed while it is open says so in `closings`.
    explicit FakeSerialPort(FakeTick& tick, std::vector<std::string>* closings = nullptr)
        : tick_(tick), closings_(closings) {}
    ~FakeSerialPort() override {
        if (open_ && closings_) closings_->push_back("port " + std::to_string(comm_port_));
    }

    std::int16_t CommPort() const override { return comm_port_; }
    void set_CommPort(std::int16_t number) override {
        fail("CommPort");
        comm_port_ = number;
    }
    const std::string& Settings() const override { return settings_; }
    void set_Settings(const std::string& settings) override { settings_ = settings; }
    void set_OtherParity(char parity) override { other_parity = parity; }
    bool DTREnable() const override { return dtr_; }
    void set_DTREnable(bool on) override { set_line("DTREnable", dtr_, on); }
    bool RTSEnable() const override { return rts_; }
    void set_RTSEnable(bool on) override { set_line("RTSEnable", rts_, on); }
    std::int16_t Handshaking() const override { return handshaking_; }
    void set_Handshaking(std::int16_t mode) override {
        handshaking_ = mode;
        note("Handshaking " + std::to_string(mode));
    }
    bool PortOpen() const override { return open_; }
    void set_PortOpen(bool open) override {
        if (open) fail("PortOpen");
        open_ = open;
        line_lost = false;
        note(open ? "open" : "close");
    }
    bool lost() override { return open_ && line_lost; }
    long InBufferCount() override {
        use("InBufferCount");
        if (line_lost && arrived().empty()) throw RunTimeError(error_number::kCannotReadDevice);
        return static_cast<long>(arrived().size());
    }
    void set_InBufferCount(long) override {
        use("discard");
        arrived().clear();
        if (discards_future) coming_.clear();
        note("discard");
    }
    std::string Input() override {
        use("Input");
        return std::exchange(arrived(), {});
    }
    void wait_for_input(double timeout_ms) override {
        use("wait");
        if (line_lost || !arrived().empty()) return;
        const double next_ms =
            coming_.empty() ? timeout_ms : coming_.front().after_ms - tick_.now();
        tick_.sleep_for_ms(std::min(next_ms, timeout_ms));
    }
    void set_Output(const std::string& bytes) override {
        use("Output");
        outputs.push_back(bytes);
        note("output " + std::to_string(bytes.size()));
        if (!responder && replies.empty()) return;
        for (const Arrival& arrival : responder ? responder(bytes) : replies.front())
            arrive(arrival);
        if (!responder) replies.pop_front();
    }
    std::int16_t RThreshold() const override { return threshold_; }
    void set_RThreshold(std::int16_t count) override {
        threshold_ = count;
        note("RThreshold " + std::to_string(count));
    }
    [[nodiscard]] std::optional<LineErrors> line_errors() const override { return errors; }
    int CommID() const override { return -1; }
    void EscapeCommFunction(EscapeCode code) override {
        use("EscapeCommFunction");
        note("escape " + std::to_string(static_cast<int>(code)));
    }
    void check_receive() override {
        if (threshold_ > 0 && static_cast<int>(arrived().size()) >= threshold_) OnComm.raise();
    }

    /// Lets bytes arrive from now on, without an output before them.
    void arrive(const Arrival& arrival) {
        const double at_ms = tick_.now() + arrival.after_ms;
        auto later = coming_.end();
        while (later != coming_.begin() && std::prev(later)->after_ms > at_ms)
            --later;
        coming_.insert(later, {at_ms, arrival.bytes});
    }
    /// Makes the next use of an operation raise the number; several are used up in order.
    void fail_next(const std::string& operation, int number) {
        failures_[operation].push_back(number);
    }
    /// The events' names, one space between them.
    [[nodiscard]] std::string history() const {
        std::string out;
        for (const Event& event : events)
            out += (out.empty() ? "" : ", ") + event.what;
        return out;
    }

    /// What was sent, with this behind each output.
    [[nodiscard]] std::string sent(const std::string& behind = {}) const {
        std::string all;
        for (const std::string& output : outputs)
            all += output + behind;
        return all;
    }

    std::vector<Event> events;
    std::vector<std::string> outputs;
    std::deque<std::vector<Arrival>> replies;                          // one an output
    std::function<std::vector<Arrival>(const std::string&)> responder; // instead of `replies`
    char other_parity = '\0';
    bool line_lost = false;
    std::optional<LineErrors> errors;
    bool discards_future = true; // a discard also forgets what is still on its way

  private:
    void note(const std::string& what) { events.push_back({what, tick_.now()}); }
    void set_line(const std::string& name, bool& line, bool on) {
        line = on;
        note(name + (on ? " 1" : " 0"));
    }
    void use(const std::string& operation) {
        if (!open_) throw RunTimeError(error_number::kPortNotOpen);
        fail(operation);
    }
    void fail(const std::string& operation) {
        auto& numbers = failures_[operation];
        if (numbers.empty()) return;
        const RunTimeError error(numbers.front());
        numbers.pop_front();
        throw error;
    }
    std::string& arrived() {
        while (!coming_.empty() && coming_.front().after_ms <= tick_.now()) {
            buffer_ += coming_.front().bytes;
            coming_.pop_front();
        }
        return buffer_;
    }

    FakeTick& tick_;
    std::vector<std::string>* closings_;
    std::int16_t comm_port_ = 1;
    std::string settings_ = "9600,N,8,1";
    bool dtr_ = true;
    bool rts_ = true;
    std::int16_t handshaking_ = 0;
    std::int16_t threshold_ = 0;
    bool open_ = false;
    std::string buffer_;
    std::deque<Arrival> coming_;
    std::map<std::string, std::deque<int>> failures_;
};

} // namespace pelvan::testing
