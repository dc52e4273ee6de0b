// Data logging through the night: the real link on simulated controllers and a fake tick.
#include <gtest/gtest.h>

#include <set>

#include "config/device_map.h"
#include "logging/data_logger.h"
#include "platform/line_port.h"
#include "platform/run_time_error.h"
#include "simulator/line/simulator_registry.h"
#include "support/configuration.h"
#include "support/fake_dialogs.h"
#include "support/fake_time.h"

namespace pelvan {
namespace {

constexpr int kRows = 2; // in use

class OvernightTest : public ::testing::Test {
  protected:
    void start(const std::string& device, int seconds) {
        config.gIniFile = dir.file("pelvan7.ini");
        testing::configure_devices(dir, {"simulated:loopback", device});
        table.init_comms();
        testing::write_file(
            dir.file("set.PV5"),
            "[LOGGING DATA DEVICE AND REGISTER SET]\nLOG TO FILE=TRUE\n"
            "1DEVICEADDRESS=1\n1DEVICECOMMAND=3\n"
            "2DEVICEADDRESS=1\n2DEVICECOMMAND=3\n2DEVICEREGISTER=300\nLOGGING INTERVAL=" +
                std::to_string(seconds) + "\n");
        logger.read_tick_length();
        logger.ReadLogSet(dir.file("set.PV5"));
        logger.start();
    }
    void run_ticks(int ticks) {
        for (int i = 0; i < ticks; ++i) {
            ASSERT_TRUE(logger.timer().running());
            tick.advance(logger.timer().tick_ms());
            logger.tick();
        }
    }
    std::unique_ptr<SerialLine> open(const std::string& device, const LineSettings& settings) {
        if (open_error != 0) throw RunTimeError(open_error);
        return simulators.open(device.starts_with("/dev/") ? "simulated:742" : device, settings);
    }

    int open_error = 0; // of the device; 0: there is a controller
    testing::TempDir dir;
    testing::FakeTick tick;
    testing::FakeClock clock;
    testing::FakeDialogs dialogs;
    testing::FakeDesktop desktop;
    MessageRouter gate{dialogs};
    Services services{tick, clock, gate, desktop, dir.path()};
    ConfigState config;
    SerialState serial;
    simulator::SimulatorRegistry simulators{tick};
    frm_Comms comms{[this] {
        return std::make_unique<LinePort>(
            [this](int port) { return device_for_port(port, config.gIniFile); },
            [this](const std::string& device, const LineSettings& settings) {
                return open(device, settings);
            });
    }};
    ErrorLog log{clock, dir.file("errors")};
    ChannelTable table{serial, config, comms, gate, log};
    CountdownPool countdowns{serial, tick};
    Link link{table, countdowns, gate, log};
    ModbusState modbus_state;
    Modbus modbus{modbus_state};
    LoggingState state;
    DataLogger logger{services, gate, config, link, modbus, state};
};

TEST_F(OvernightTest, TwelveHoursWithLostRepliesLoseNoPass) {
    constexpr int kSeconds = 30;
    constexpr int kTicks = 12 * 3600;
    tick.step_ms = 5;
    tick.advance(4294967295.0 - 3600000); // wraps in the first hour
    int passes = 0;
    int silent = 0;
    const auto counted = logger.pass_done.subscribe([&] {
        ++passes;
        for (int row = 1; row <= kRows; ++row)
            silent += logger.reading(row).state == RowState::Nothing ? 1 : 0;
    });
    start("simulated:742,lost=0.01,seed=7", kSeconds);
    run_ticks(60);
    const std::size_t slots = serial.gTimerStart.size();
    run_ticks(kTicks - 60);
    EXPECT_EQ(passes, kTicks / kSeconds + 1);
    EXPECT_GT(silent, passes * kRows / 200);
    EXPECT_LT(silent, passes * kRows / 50);
    const std::string text = testing::read_file(dir.file("DATASET.LOG"));
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), passes * kRows);
    EXPECT_EQ(serial.gTimerStart.size(), slots);
    EXPECT_TRUE(dialogs.shown.empty());
    // The trend's time goes on across the wrap of the tick.
    const TrendSpan span = logger.trend().span();
    EXPECT_GT(span.to_ms - span.from_ms, 12 * 3600 * 1000.0 - 10000);
}

TEST_F(OvernightTest, ALateReplyIsNotTakenForTheNextRows) {
    for (const char* lateness : {"late=1,only=3", "late=1", "late=0.3,seed=7"}) {
        std::set<std::string> first;
        std::set<std::string> second;
        const auto watched = logger.pass_done.subscribe([&] {
            first.insert(logger.reading(1).value);
            second.insert(logger.reading(2).value);
        });
        // It answers each request in turn, after the time-out of 2000 ms.
        start("simulated:742,queue=1,late_ms=2100," + std::string(lateness), 6);
        run_ticks(6 * 40);
        using Values = std::set<std::string>;
        const bool answers = lateness != std::string("late=1");
        EXPECT_EQ(first, answers ? Values({"", " 742"}) : Values({""})) << lateness;
        second.erase("");
        EXPECT_EQ(second.size(), answers ? 1U : 0U) << lateness;
        EXPECT_EQ(second.count(" 742"), 0U) << lateness;
    }
}

TEST_F(OvernightTest, APortThatIsUnpluggedHoldsNothingAndComesBack) {
    start("/dev/adapter", 6);
    EXPECT_EQ(logger.reading(1).value, " 742");
    // The device's node may outlive the device, and opening it then is worth a try at any time.
    for (const int error : {error_number::kInvalidPortNumber, error_number::kDeviceUnavailable}) {
        open_error = error;
        table.init_comms(); // the port has to be opened again
        run_ticks(12);
        EXPECT_TRUE(dialogs.shown.empty()); // a box would hold the logging until it is answered
        EXPECT_NE(logger.port_message(), "");
        EXPECT_EQ(logger.reading(1).state, RowState::Nothing);
        open_error = 0;
        run_ticks(6);
        EXPECT_EQ(logger.reading(1).state, RowState::Answered);
        EXPECT_EQ(logger.port_message(), "");
    }
}

} // namespace
} // namespace pelvan
