// Sending a command again and again: the engine on a scripted line, and the console's controls.
#include "console_rig.h"
#include "support/frames.h"

namespace pelvan {
namespace {

using Texts = std::vector<std::string>;
using testing::frame;

class RepeatTest : public ::testing::Test, protected testing::ConsoleRig {
  protected:
    RepeatTest() {
        build({"1;9600,N,8,1;1", "2;9600,N,8,1;1"});
        console.Load();
        console.modbus.set_entry({2, "1", "100", "1", false});
    }
    /// Loading the console has built the channels anew: the last one made is that of channel 1.
    testing::FakeSerialPort& port() { return *ports.back(); }
    void answer(double after_ms) {
        port().replies.push_back({{after_ms, frame("01 03 02 02 D5")}});
    }
    /// The window's timer runs until that much time has passed.
    void run_for(double ms) {
        const double end = tick.now() + ms;
        while (tick.now() < end && console.repeat.tmr_Repeat.running()) {
            tick.advance(console.repeat.tmr_Repeat.Interval());
            console.repeat.tmr_Repeat.Tick();
        }
    }
    [[nodiscard]] const RepeatCounts& counts() const { return repeat.counts(); }
};

TEST_F(RepeatTest, CountsRepliesFailuresAndTimesAtItsInterval) {
    for (const double ms : {5.0, 15.0, 10.0})
        answer(ms);
    answer(1);
    port().replies.back() = {{1, frame("01 83 02")}};
    const double begin = tick.now();
    console.repeat.txt_RepeatInterval.set_Text("0,5");
    console.mnuFile.children[1]->choose();
    run_for(1300);
    EXPECT_EQ(counts().replies.count, 3);
    EXPECT_EQ(counts().failures, 1);
    EXPECT_NEAR(counts().replies.maximum - counts().replies.minimum, 10, 2);
    EXPECT_NEAR(counts().replies.mean(), (counts().replies.maximum + counts().replies.minimum) / 2,
                2);
    EXPECT_EQ(pairs().size(), 4U);
    EXPECT_NEAR(port().events.back().at_ms - begin, 1500, 20);
    EXPECT_TRUE(console.lbl_Status.Caption().find("exception 2") != std::string::npos);
    EXPECT_TRUE(
        console.repeat.lbl_Repeat.Caption().starts_with("Repeating: 3 replies, 1 failure; "));
    EXPECT_TRUE(dialogs.shown.empty());
    EXPECT_TRUE(console.modbus.txt_Register.KeyDown(Key::Escape));
    EXPECT_FALSE(console.repeat.running() || console.repeat.tmr_Repeat.running());
    EXPECT_TRUE(console.repeat.lbl_Repeat.Caption().starts_with("Repeat stopped: 3 replies"));
}

TEST_F(RepeatTest, OthersSendBetweenAndAClaimPausesIt) {
    console.repeat.cmd_Repeat.press();
    console.modbus.txt_Register.set_Text("7");
    send();
    run_for(1000);
    ASSERT_EQ(port().outputs.size(), 3U);
    EXPECT_EQ(port().outputs[0], port().outputs[2]) << "not what the fields hold now";
    EXPECT_NE(port().outputs[0], port().outputs[1]);
    Link other{table, countdowns, gate, log, "Save/Restore Setup"};
    LineClaim claim = other.claim();
    run_for(5000);
    EXPECT_EQ(port().outputs.size(), 3U);
    EXPECT_TRUE(console.repeat.lbl_Repeat.Caption().starts_with(
        "Repeat paused. The line is in use by Save/Restore Setup. 0 replies, 2 failures"));
    EXPECT_TRUE(console.repeat.cmd_Repeat.Enabled()) << "it can be stopped";
    claim.release();
    run_for(1000);
    EXPECT_EQ(port().outputs.size(), 4U);
    console.set_Enabled(false); // while the port settings are open
    run_for(3000);
    EXPECT_EQ(port().outputs.size(), 4U);
    console.set_Enabled(true);
    console.Unload();
    EXPECT_FALSE(console.repeat.running());
    claim = other.claim();
    EXPECT_FALSE(console.repeat.cmd_Repeat.Enabled());
}

TEST_F(RepeatTest, SaysWhatItCannotRepeatAndPutsNoBoxInItsWay) {
    for (const char* interval : {"", "0.05", "one", "3601"}) {
        console.repeat.txt_RepeatInterval.set_Text(interval);
        console.repeat.cmd_Repeat.press();
    }
    EXPECT_EQ(said(), Texts(4, "Enter an interval of 0.1 to 3600 seconds."));
    console.repeat.txt_RepeatInterval.set_Text("1");
    console.modbus.txt_Values.set_Text("x");
    console.repeat.cmd_Repeat.press();
    EXPECT_EQ(said(), Texts{"Bad DATA VALUE entered."});
    EXPECT_FALSE(console.repeat.running());
    console.modbus.txt_Values.set_Text("1");
    port().fail_next("PortOpen", error_number::kInvalidPortNumber);
    console.repeat.cmd_Repeat.press();
    EXPECT_TRUE(said().empty());
    EXPECT_EQ(counts().failures, 1);
    EXPECT_FALSE(counts().last_failure.starts_with("No response")) << counts().last_failure;
    EXPECT_TRUE(console.repeat.running());
}

} // namespace
} // namespace pelvan
