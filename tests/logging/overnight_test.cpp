// Data logging through the night: the real link on simulated controllers and a fake tick.
#include <set>

#include "logging/logging_rig.h"
#include "support/simulated_ports.h"

namespace pelvan {
namespace {

class OvernightTest : public testing::LoggingTest {
  protected:
    void start(const std::string& device, int seconds) {
        testing::configure_devices(dir, {"simulated:loopback", device});
        table.init_comms();
        load({"1,3", "1,3,300"}, "LOG TO FILE=TRUE\r\n");
        LoggingTest::start(seconds);
    }

    testing::SimulatedPorts simulated{*this};
};

TEST_F(OvernightTest, TwelveHoursWithLostRepliesLoseNoPass) {
    constexpr int kTicks = 12 * 3600;
    tick.step_ms = 5;
    tick.advance(4294967295.0 - 3600000); // wraps in the first hour
    int passes = 0;
    int silent = 0;
    const auto counted = logger.pass_done.subscribe([&] {
        ++passes;
        for (const int row : {1, 2})
            silent += reading(row).state == RowState::Nothing ? 1 : 0;
    });
    start("simulated:742,lost=0.01,seed=7", 30);
    run(60);
    const std::size_t slots = state.gTimerStart.size();
    run(kTicks - 60);
    EXPECT_EQ(passes, kTicks / 30 + 1);
    EXPECT_EQ(lines(), passes * 2);
    EXPECT_NEAR(silent, passes * 2 * 0.01, passes * 0.01);
    EXPECT_EQ(state.gTimerStart.size(), slots);
    EXPECT_TRUE(dialogs.shown.empty());
    // The trend's time goes on across the wrap of the tick.
    const TrendSpan span = logger.trend().span();
    EXPECT_GT(span.to_ms - span.from_ms, kTicks * 1000.0 - 10000);
}

TEST_F(OvernightTest, ALateReplyIsNotTakenForTheNextRows) {
    using Values = std::set<std::string>;
    for (const std::string lateness : {"late=1,only=3", "late=1", "late=0.3,seed=7"}) {
        Values first;
        Values second;
        const auto watched = logger.pass_done.subscribe([&] {
            first.insert(reading(1).value);
            second.insert(reading(2).value);
        });
        // It answers each request in turn, after the time-out of 2000 ms.
        start("simulated:742,queue=1,late_ms=2100," + lateness, 6);
        run(6 * 40);
        const bool answers = lateness != "late=1";
        EXPECT_EQ(first, answers ? Values({"", " 742"}) : Values({""})) << lateness;
        second.erase("");
        EXPECT_EQ(second.size(), answers ? 1U : 0U) << lateness;
        EXPECT_EQ(second.count(" 742"), 0U) << lateness;
    }
}

TEST_F(OvernightTest, APortThatIsUnpluggedHoldsNothingAndComesBack) {
    int error = 0; // of the device; 0: there is a controller
    simulated.open_line = [&](const std::string&, const LineSettings& settings) {
        if (error != 0) throw RunTimeError(error);
        return simulated.simulators.open("simulated:742", settings);
    };
    start("/dev/adapter", 6);
    // The device's node may outlive the device, and opening it then is worth a try at any time.
    for (const int cause : {error_number::kInvalidPortNumber, error_number::kDeviceUnavailable}) {
        EXPECT_EQ(reading(1), (LogReading{" 742", RowState::Answered}));
        EXPECT_EQ(logger.port_message(), "");
        error = cause;
        table.init_comms(); // the port has to be opened again
        run(12);
        EXPECT_TRUE(dialogs.shown.empty()); // a box would hold the logging until it is answered
        EXPECT_NE(logger.port_message(), "");
        EXPECT_EQ(reading(1).state, RowState::Nothing);
        error = 0;
        run(6);
        EXPECT_EQ(logger.port_message(), "Port: The device was gone for 12 s.");
        run(6);
        EXPECT_EQ(logger.outage(), "The device was gone for 12 s, until 16:30:05.");
    }
    EXPECT_EQ(reading(1), (LogReading{" 742", RowState::Answered}));
    EXPECT_EQ(logger.port_message(), "");
}

} // namespace
} // namespace pelvan
