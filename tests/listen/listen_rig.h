// The monitor on scripted ports; settle time 2 ms, so a burst ends after 8 ms of silence.
#pragma once

#include <vector>

#include "listen/listen_monitor.h"
#include "support/frames.h"
#include "support/serial_rig.h"

namespace pelvan::testing {

struct ListenRig : SerialRig {
    ListenRig() {
        tick.step_ms = 0.001;
        build({"1;9600,N,8,1;1", "2;9600,N,8,1;1", "3;9600,N,8,1;1"});
    }
    FakeSerialPort& port() { return static_cast<FakeSerialPort&>(*listen.gListenDevice); }
    /// A burst that arrives whole at this moment of the tick.
    void burst_at(double ms, const std::string& bytes) {
        tick.advance(ms - tick.now());
        port().arrive({0, bytes});
        port().check_receive();
    }
    /// The statistics' texts, in their order.
    [[nodiscard]] std::vector<std::string> statistics() const {
        std::vector<std::string> texts;
        for (const Statistic* statistic : monitor.statistics().all())
            texts.push_back(statistic->text());
        return texts;
    }
    [[nodiscard]] std::string hits() const { return statistics().front(); }

    ModbusState modbus_state;
    Modbus modbus{modbus_state};
    ListenState listen;
    ListenMonitor monitor{link, modbus, listen, clock, dir.path()};
    std::vector<std::string> lines;
    std::string status;
    Subscription heard = monitor.line_added.subscribe(
        [this](const std::string& line, const Burst&) { lines.push_back(line); });
    Subscription told =
        monitor.status_changed.subscribe([this](const std::string& text) { status = text; });
};

} // namespace pelvan::testing
