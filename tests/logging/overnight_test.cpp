// Data Logging in the whole program, on simulated controllers and a fake tick.
#include <gtest/gtest.h>

#include "support/simulated_program.h"

namespace pelvan {
namespace {

constexpr int kRows = 2; // in use

class OvernightTest : public ::testing::Test {
  protected:
    void start(const std::string& device, int seconds) {
        ini_write_string("SERIAL DEVICES", "PORT 2", device, rig.dir.file("pelvan7.ini"));
        rig.app.channels.init_comms();
        testing::write_file(rig.dir.file("set.PV5"),
                            "[LOGGING DATA DEVICE AND REGISTER SET]\nLOG TO FILE=TRUE\n"
                            "1DEVICEADDRESS=1\n1DEVICECOMMAND=3\n"
                            "2DEVICEADDRESS=1\n2DEVICECOMMAND=3\nLOGGING INTERVAL=" +
                                std::to_string(seconds) + "\n");
        logging.Show();
        logging.ReadLogSet(rig.dir.file("set.PV5"));
        logging.mnuStartLogging.choose();
    }
    void run_ticks(int ticks) {
        for (int i = 0; i < ticks; ++i) {
            ASSERT_TRUE(logging.tmr_LoggingInterval.running());
            rig.tick.advance(logging.tmr_LoggingInterval.Interval());
            logging.tmr_LoggingInterval.Tick();
        }
    }

    int open_error = 0; // of a device that is not simulated; 0: there is a controller
    testing::SimulatedProgram rig{{"simulated:loopback", "simulated:742"},
                                  protocol::kModbus,
                                  [this](const std::string&, const LineSettings& settings) {
                                      if (open_error != 0) throw RunTimeError(open_error);
                                      return rig.app.simulators.open("simulated:742", settings);
                                  }};
    frm_DataLogging& logging = rig.app.logging;
};

TEST_F(OvernightTest, TwelveHoursWithLostRepliesLoseNoPass) {
    constexpr int kSeconds = 30;
    constexpr int kTicks = 12 * 3600;
    rig.tick.step_ms = 5;
    rig.tick.advance(4294967295.0 - 3600000); // wraps in the first hour
    int passes = 0;
    int silent = 0;
    logging.pass_done = [&] {
        ++passes;
        for (int row = 1; row <= kRows; ++row)
            silent += logging.row_state(row) == RowState::Nothing ? 1 : 0;
    };
    start("simulated:742,lost=0.01,seed=7", kSeconds);
    run_ticks(60);
    const std::size_t slots = rig.app.session.serial.gTimerStart.size();
    run_ticks(kTicks - 60);
    EXPECT_EQ(passes, kTicks / kSeconds + 1);
    EXPECT_GT(silent, passes * kRows / 200);
    EXPECT_LT(silent, passes * kRows / 50);
    const std::string text = testing::read_file(rig.dir.file("DATASET.LOG"));
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), passes * kRows);
    EXPECT_EQ(rig.app.session.serial.gTimerStart.size(), slots);
    EXPECT_TRUE(rig.pairs().empty());
    EXPECT_TRUE(rig.dialogs.shown.empty());
    // The trend's time goes on across the wrap of the tick.
    const TrendSpan span = logging.trend().span();
    EXPECT_GT(span.to_ms - span.from_ms, 12 * 3600 * 1000.0 - 10000);
}

TEST_F(OvernightTest, APortThatIsUnpluggedHoldsNothingAndComesBack) {
    start("/dev/adapter", 6);
    EXPECT_EQ(logging.MSFlexGrid1.TextMatrix(1, log_column::kValue), " 742");
    // The device's node may outlive the device, and opening it then is worth a try at any time.
    for (const int error : {error_number::kInvalidPortNumber, error_number::kDeviceUnavailable}) {
        open_error = error;
        rig.app.channels.init_comms(); // the port has to be opened anew
        run_ticks(12);
        EXPECT_TRUE(rig.dialogs.shown.empty()); // a box would hold the logging until it is answered
        EXPECT_NE(logging.lbl_Message.Caption(), "");
        EXPECT_EQ(logging.row_state(1), RowState::Nothing);
        open_error = 0;
        run_ticks(6);
        EXPECT_EQ(logging.row_state(1), RowState::Answered);
        EXPECT_EQ(logging.lbl_Message.Caption(), "");
    }
}

} // namespace
} // namespace pelvan
