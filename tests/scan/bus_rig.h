// A bus on a fake tick: simulated controllers, each of one protocol and at settings of its own,
// with noise on the line. What was sent is written down.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <random>

#include "platform/line_port.h"
#include "scan/bus_scan.h"
#include "simulator/line/device_text.h"
#include "simulator/line/simulated_line.h"
#include "simulator/line/simulator_registry.h"
#include "support/frames.h"
#include "support/serial_rig.h"

namespace pelvan::testing {

inline LineSettings line_of(const std::string& settings) {
    return parse_line_settings(settings).value();
}

/// The protocol of a request, by its first bytes.
inline ScanProtocol protocol_of(const std::string& request) {
    if (request[0] == '?') return ScanProtocol::Xon;
    if (request.substr(0, 2) == bytes("10 02")) return ScanProtocol::Tellura;
    return request.size() == 2 ? ScanProtocol::Full : ScanProtocol::Modbus;
}

class BusRig : public SerialRig {
  public:
    BusRig() {
        make_port = [this] {
            return std::make_unique<LinePort>(
                [](int) { return "bus"; },
                [this](const std::string&, const LineSettings& settings) {
                    if (settings_text(settings) == not_supported)
                        throw RunTimeError(error_number::kCannotSetState);
                    return std::make_unique<BusLine>(*this, settings);
                });
        };
        build({"2;9600,N,8,1;1", "2;9600,N,8,1;1"});
        tick.step_ms = 0.05;
    }

    struct Member {
        ScanProtocol protocol;
        LineSettings line;
        std::shared_ptr<simulator::Station> station;
    };
    void add(ScanProtocol protocol, const std::string& settings, const std::string& options) {
        members.push_back(
            {protocol, line_of(settings),
             simulator::make_station(
                 simulator::parse_simulated_device("simulated:742" + options).value())});
    }
    struct Written {
        std::string settings;
        std::string bytes;
    };

    std::vector<Member> members;
    std::vector<Written> written;
    std::string opened_with; // empty while closed
    std::string not_supported;
    double noise = 0;        // part of the requests that noise follows
    double strays_every = 0; // ms from one burst that nobody was asked for to the next
    bool babbles = false;    // a byte every 2 ms
    bool echoes = false;
    std::size_t lost_after = 0; // requests; 0 for never
    /// What answers a request beside the members.
    std::function<std::string(const std::string& request)> stranger;
    double stranger_after = 5;  // ms
    double stranger_pauses = 0; // ms behind its first byte

    PortFactory scan_port = make_port;
    Link scan_link{table, countdowns, dialogs, log, "Bus Scan"};
    BusScan scan{scan_link, [this] { return make_port(); }, tick, dialogs, log};

  private:
    class BusLine : public SerialLine {
      public:
        BusLine(BusRig& rig, const LineSettings& settings)
            : rig_(rig), text_(settings_text(settings)),
              clock_(std::make_shared<simulator::LineClock>(rig.tick)),
              char_ms_(character_time_us(settings) / 1000), strays_(char_ms_) {
            rig.opened_with = text_;
            for (const Member& member : rig.members)
                if (hears(member.line, settings))
                    wires_.push_back({member.protocol, {member.station, char_ms_}});
        }
        ~BusLine() override { rig_.opened_with.clear(); }

        void write(const std::string& request) override {
            rig_.written.push_back({text_, request});
            const double now = clock_->now_ms();
            const double out = now + char_ms_ * static_cast<double>(request.size());
            for (auto& [protocol, wire] : wires_)
                if (protocol == protocol_of(request)) wire.host_writes(request, now);
            if (rig_.echoes) strays_.send(now, request);
            if (rig_.stranger) {
                const std::string answer = rig_.stranger(request);
                const std::size_t first = rig_.stranger_pauses > 0 ? 1 : 0;
                strays_.send(out + rig_.stranger_after, answer.substr(0, first));
                strays_.send(out + rig_.stranger_after + rig_.stranger_pauses,
                             answer.substr(std::min(first, answer.size())));
            }
            if (rig_.below(1000) < rig_.noise * 1000) {
                const std::string burst = rig_.burst(12);
                strays_.send(out + rig_.below(80), burst);
            }
        }
        bool read_into(std::string& buffer) override {
            const double now = clock_->now_ms();
            for (auto& [protocol, wire] : wires_)
                buffer += wire.arrived(now);
            for (; rig_.strays_every > 0 && now >= next_stray_; next_stray_ += rig_.strays_every)
                strays_.send(now, rig_.burst(5));
            buffer += strays_.take(now);
            if (rig_.babbles) buffer += '\x55';
            return rig_.lost_after == 0 || rig_.written.size() < rig_.lost_after;
        }
        void wait_for_input(double timeout_ms) override {
            double next = -1;
            const auto consider = [&next](double ms) {
                if (ms >= 0 && (next < 0 || ms < next)) next = ms;
            };
            for (auto& [protocol, wire] : wires_)
                consider(wire.next_ms());
            if (!strays_.empty()) consider(strays_.next_ms());
            if (rig_.strays_every > 0) consider(next_stray_);
            clock_->sleep_until(next, rig_.babbles ? 2 : timeout_ms);
        }
        void discard_input() override {
            std::string gone;
            read_into(gone);
        }
        void set_rts(bool) override {}
        void set_dtr(bool) override {}
        [[nodiscard]] int descriptor() const override { return -1; }

      private:
        /// A receiver looks at one stop bit, however many there are.
        static bool hears(const LineSettings& a, const LineSettings& b) {
            return a.baud_rate == b.baud_rate && a.parity == b.parity && a.data_bits == b.data_bits;
        }
        BusRig& rig_;
        std::string text_;
        std::shared_ptr<simulator::LineClock> clock_;
        double char_ms_;
        simulator::PacedQueue strays_;
        double next_stray_ = rig_.strays_every;
        std::vector<std::pair<ScanProtocol, simulator::Wire>> wires_;
    };

    std::string burst(unsigned most) {
        std::string bytes;
        for (int n = below(most) + 1; n > 0; --n)
            bytes += static_cast<char>(below(256));
        return bytes;
    }
    [[nodiscard]] int below(unsigned limit) { return static_cast<int>(random_() % limit); }
    std::mt19937 random_{7};
};

/// Notes what a scan tells.
struct Notes : ScanListener {
    void probing(const ScanProgress& progress) override {
        EXPECT_GE(progress.done, done);
        done = progress.done;
        if (on_probe) on_probe(progress);
    }
    void found(const ScanFind& find) override { finds.push_back(find_text(find)); }
    void remark(const std::string& sentence) override { remarks.push_back(sentence); }
    bool go_on() override { return !on_event || on_event(); }

    double done = 0;
    std::vector<std::string> finds;
    std::vector<std::string> remarks;
    std::function<void(const ScanProgress&)> on_probe;
    std::function<bool()> on_event;
};

} // namespace pelvan::testing
