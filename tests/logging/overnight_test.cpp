// Data Logging in the whole program, on simulated controllers and a fake tick.
#include <gtest/gtest.h>

#include "app/application.h"
#include "support/fake_dialogs.h"
#include "support/fake_time.h"
#include "support/temp_dir.h"

namespace pelvan {
namespace {

constexpr int kRows = 2; // in use

class OvernightTest : public ::testing::Test {
  protected:
    void start(const std::string& device, int seconds) {
        testing::write_file(dir.file("pelvan7.ini"),
                            "[COMMS CONTROLS]\nDEVICE 0 COMM PORT =1\n"
                            "DEVICE 0 PORT SETTING =9600,N,8,1\nDEVICE 1 COMM PORT =2\n"
                            "DEVICE 1 PORT SETTING =9600,N,8,1\n[SERIAL DEVICES]\n"
                            "PORT 1=simulated:loopback\nPORT 2=" +
                                device + "\n");
        testing::write_file(dir.file("set.PV5"),
                            "[LOGGING DATA DEVICE AND REGISTER SET]\nLOG TO FILE=TRUE\n"
                            "1DEVICEADDRESS=1\n1DEVICECOMMAND=3\n"
                            "2DEVICEADDRESS=1\n2DEVICECOMMAND=3\nLOGGING INTERVAL=" +
                                std::to_string(seconds) + "\n");
        app.console.Load();
        app.logging.Show();
        app.logging.ReadLogSet(dir.file("set.PV5"));
        app.logging.mnuStartLogging.choose();
    }
    void run_ticks(int ticks) {
        for (int i = 0; i < ticks; ++i) {
            ASSERT_TRUE(app.logging.tmr_LoggingInterval.running());
            tick.advance(app.logging.tmr_LoggingInterval.Interval());
            app.logging.tmr_LoggingInterval.Tick();
        }
    }

    testing::TempDir dir;
    testing::FakeTick tick{4294967295.0 - 3600000}; // wraps in the first hour
    testing::FakeClock clock;
    testing::FakeDialogs dialogs;
    testing::FakeDesktop desktop;
    int open_error = 0; // of a device that is not simulated; 0: there is a controller
    Application app{{tick, clock, dialogs, desktop, dir.path()},
                    [this](const std::string&, const LineSettings& settings) {
                        if (open_error != 0) throw RunTimeError(open_error);
                        return app.simulators.open("simulated:742", settings);
                    }};
};

TEST_F(OvernightTest, TwelveHoursWithLostRepliesLoseNoPass) {
    constexpr int kSeconds = 30;
    constexpr int kTicks = 12 * 3600;
    tick.step_ms = 5;
    int passes = 0;
    int silent = 0;
    app.logging.pass_done = [&] {
        ++passes;
        for (int row = 1; row <= kRows; ++row)
            silent += app.logging.row_state(row) == RowState::Nothing ? 1 : 0;
    };
    start("simulated:742,lost=0.01,seed=7", kSeconds);
    run_ticks(60);
    const std::size_t slots = app.session.serial.gTimerStart.size();
    run_ticks(kTicks - 60);
    EXPECT_EQ(passes, kTicks / kSeconds + 1);
    EXPECT_GT(silent, passes * kRows / 200);
    EXPECT_LT(silent, passes * kRows / 50);
    const std::string text = testing::read_file(dir.file("DATASET.LOG"));
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), passes * kRows);
    EXPECT_EQ(app.session.serial.gTimerStart.size(), slots);
    EXPECT_EQ(app.history.frmCommand.list.ListCount(), 0);
    EXPECT_TRUE(dialogs.shown.empty());
    // The trend's time goes on across the wrap of the tick.
    const TrendSpan span = app.logging.trend().span();
    EXPECT_GT(span.to_ms - span.from_ms, 12 * 3600 * 1000.0 - 10000);
}

TEST_F(OvernightTest, APortThatIsUnpluggedHoldsNothingAndComesBack) {
    start("/dev/adapter", 6);
    EXPECT_EQ(app.logging.MSFlexGrid1.TextMatrix(1, log_column::kValue), " 742");
    // The device's node may outlive the device, and opening it then is worth a try at any time.
    for (const int error : {error_number::kInvalidPortNumber, error_number::kDeviceUnavailable}) {
        open_error = error;
        app.channels.init_comms(); // the port has to be opened anew
        run_ticks(12);
        EXPECT_TRUE(dialogs.shown.empty()); // a box would hold the logging until it is answered
        EXPECT_NE(app.logging.lbl_Message.Caption(), "");
        EXPECT_EQ(app.logging.row_state(1), RowState::Nothing);
        open_error = 0;
        run_ticks(6);
        EXPECT_EQ(app.logging.row_state(1), RowState::Answered);
        EXPECT_EQ(app.logging.lbl_Message.Caption(), "");
    }
}

} // namespace
} // namespace pelvan
