// A Modbus slave behind a fake port that answers one request after another, now and then late or
// twice. Every register holds its own number.
#pragma once

#include <algorithm>
#include <map>

#include "support/fake_serial_port.h"
#include "support/frames.h"

namespace pelvan::testing {

struct QueueingSlave {
    QueueingSlave(FakeTick& time, FakeSerialPort& line) : tick(time) {
        line.discards_future = false;
        line.responder = [this](const std::string& request) { return answer(request); };
    }

    std::vector<Arrival> answer(const std::string& request) {
        ++requests;
        if (request[0] != '\1') return {};
        const double after = late_ms.contains(requests) ? late_ms[requests] : kTurnaroundMs;
        busy_until = std::max(tick.now(), busy_until) + after;
        const bool is_read = request[1] == '\3';
        const std::string reply =
            is_read ? sealed(request.substr(0, 2) + bytes(words_of(request)) + request.substr(2, 2))
                    : request;
        std::vector<Arrival> arrivals{{busy_until - tick.now(), reply}};
        if (requests == doubled) arrivals.push_back({busy_until + 100 - tick.now(), reply});
        return arrivals;
    }

    static constexpr double kTurnaroundMs = 120;
    std::map<int, double> late_ms; // by the request's number, from 1
    int doubled = 0;               // the request that is answered twice
    int requests = 0;

  private:
    static std::string words_of(const std::string& request) {
        return request[5] == '\2' ? "04 00 00" : "02";
    }
    FakeTick& tick;
    double busy_until = 0;
};

} // namespace pelvan::testing
