// A Modbus slave behind a fake port that answers one request after another, now and then late,
// twice or with something else. A register holds its number, or what was written to it.
#pragma once

#include <algorithm>
#include <functional>
#include <map>

#include "support/fake_serial_port.h"
#include "support/frames.h"

namespace pelvan::testing {

/// What becomes of a reply: how its bytes are changed, and when it comes.
struct Fault {
    std::string name = "none";
    /// Of nothing when nothing comes.
    std::function<std::string(const std::string& reply)> change = [](const auto& reply) {
        return reply;
    };
    double late_ms = 0;  // 0: as soon as the others
    double again_ms = 0; // how long after the first one it comes once more; 0: it does not
};

/// Slave 1, for reads (3, 4) of any number of registers and writes (6) of one.
class FaultySlave {
  public:
    explicit FaultySlave(FakeTick& tick) : tick_(&tick) {}

    void answer_on(FakeSerialPort& line) {
        line.discards_future = false;
        line.responder = [this](const std::string& request) { return answer(request); };
    }

    std::map<int, Fault> faults;     // by register, of every reply with it
    std::map<int, Fault> fault_once; // by the request's number, from 1
    int most = 125;                  // registers; `too_many` is the fault of longer replies
    Fault too_many;
    double turnaround_ms = 118; // and two for each register
    int requests = 0;
    std::string asked; // "first x count" of each request

  private:
    std::vector<Arrival> answer(const std::string& request) {
        const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(request[i]); };
        const bool writes = byte(1) == 6;
        const int first = byte(2) * 256 + byte(3);
        const int count = writes ? 1 : byte(4) * 256 + byte(5);
        ++requests;
        asked += std::to_string(first) + "x" + std::to_string(count) + " ";
        if (byte(0) != 1) return {};
        if (writes) held_[first] = byte(5);
        Fault fault = fault_once[requests];
        for (int i = first; i < first + count; ++i)
            if (faults.contains(i)) fault = faults[i];
        if (count > most) fault = too_many;
        const double takes_ms = fault.late_ms > 0 ? fault.late_ms : turnaround_ms + 2 * count;
        busy_until_ = std::max(tick_->now(), busy_until_) + takes_ms;
        const double due = busy_until_ - tick_->now();
        const std::string reply = fault.change(writes ? request : held(request, first, count));
        if (reply.empty()) return {};
        if (fault.again_ms > 0) return {{due, reply}, {due + fault.again_ms, reply}};
        return {{due, reply}};
    }
    std::string held(const std::string& request, int first, int count) {
        std::string frame = request.substr(0, 2) + static_cast<char>(2 * count);
        for (int i = first; i < first + count; ++i) {
            const int value = held_.contains(i) ? held_[i] : i;
            frame += {static_cast<char>(value / 256), static_cast<char>(value % 256)};
        }
        return sealed(frame);
    }

    FakeTick* tick_;
    double busy_until_ = 0;
    std::map<int, int> held_;
};

} // namespace pelvan::testing
