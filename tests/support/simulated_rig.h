// The serial link to a simulated controller on a fake tick, with what goes over the line written
// down and single replies kept back or damaged as a test says.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>

#include "platform/line_port.h"
#include "protocols/modbus/modbus.h"
#include "simulator/line/device_text.h"
#include "simulator/line/simulated_line.h"
#include "simulator/line/simulator_registry.h"
#include "support/configuration.h"
#include "support/serial_rig.h"

namespace pelvan::testing {

/// What becomes of a request on the line.
enum class Fate { Answered, NotReceived, ReplyLost, ReplyDamaged, OnlyEchoed };

/// A request of functions 3 and 6: the register, and the value or count.
struct Request {
    int function = 0;
    int number = 0;
    int value = 0;
    bool operator==(const Request&) const = default;
};

class SimulatedRig : public SerialRig {
  public:
    explicit SimulatedRig(const std::string& device)
        : station(simulator::make_station(*simulator::parse_simulated_device(device))) {
        configure_devices(dir, {"", "station"});
        make_port = [this] {
            return std::make_unique<LinePort>(
                [](int) { return "station"; },
                [this](const std::string&, const LineSettings& settings) {
                    return std::make_unique<WatchedLine>(*this, settings);
                });
        };
        rebuild();
        tick.step_ms = 0.5;
        std::filesystem::copy(std::string(PELVAN_SAMPLES) + "/Download Sequences",
                              dir.file("Download Sequences"));
    }

    void set(const std::vector<std::pair<int, int>>& values) const {
        for (const auto& [number, value] : values)
            ASSERT_EQ(station->controller.write(static_cast<std::uint16_t>(number),
                                                static_cast<std::int16_t>(value)),
                      simulator::ExceptionCode::None)
                << number << " = " << value;
    }
    /// Nothing for a register that is not there now.
    [[nodiscard]] std::optional<int> get(int number) const {
        std::int16_t value = 0;
        const auto code = station->controller.read(static_cast<std::uint16_t>(number), value);
        return code == simulator::ExceptionCode::None ? std::optional<int>(value) : std::nullopt;
    }
    /// How often a value was written into a register.
    [[nodiscard]] std::ptrdiff_t writes_of(int number, int value) const {
        return std::ranges::count(requests, Request{6, number, value});
    }

    std::shared_ptr<simulator::Station> station;
    std::shared_ptr<simulator::LineClock> line_clock = std::make_shared<simulator::LineClock>(tick);
    std::vector<Request> requests;
    std::function<Fate(const Request&)> fate;
    ChannelTable& channels = table;
    Link link{table, countdowns, dialogs, log, "Profile Logic"};
    ModbusState modbus_state;
    Modbus modbus{modbus_state};

  private:
    class WatchedLine : public simulator::SimulatedLine {
      public:
        WatchedLine(SimulatedRig& rig, const LineSettings& settings)
            : SimulatedLine(rig.line_clock, rig.station, settings), rig_(rig) {}
        void write(const std::string& bytes) override {
            const auto word = [&](std::size_t i) {
                return static_cast<std::int16_t>(static_cast<unsigned char>(bytes.at(i)) * 256 +
                                                 static_cast<unsigned char>(bytes.at(i + 1)));
            };
            rig_.requests.push_back({bytes.at(1), word(2), word(4)});
            fate_ = rig_.fate ? rig_.fate(rig_.requests.back()) : Fate::Answered;
            if (fate_ == Fate::OnlyEchoed)
                echo_ = bytes;
            else if (fate_ != Fate::NotReceived)
                SimulatedLine::write(bytes);
        }
        bool read_into(std::string& buffer) override {
            std::string arrived = std::exchange(echo_, {});
            const bool result = SimulatedLine::read_into(arrived);
            if (fate_ == Fate::ReplyLost) arrived.clear();
            if (fate_ == Fate::ReplyDamaged && !arrived.empty()) arrived.back() ^= '\1';
            buffer += arrived;
            return result;
        }

      private:
        SimulatedRig& rig_;
        Fate fate_ = Fate::Answered;
        std::string echo_;
    };
};

} // namespace pelvan::testing
