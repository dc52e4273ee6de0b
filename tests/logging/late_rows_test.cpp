// Rows of data logging and a slave that answers late, twice or with another row's length.
#include <gtest/gtest.h>

#include "logging/log_poller.h"
#include "support/queueing_slave.h"
#include "support/serial_rig.h"

namespace pelvan::testing {

class LateRowsTest : public ::testing::TestWithParam<const char*>, public SerialRig {
  protected:
    LateRowsTest() {
        build({"2;9600,N,8,1;1", "1;9600,N,8,1;1"});
        exchange_by(GetParam());
    }
    [[nodiscard]] bool complete() const { return table.exchange_way(1).complete; }

    LogReading poll(int register_number, double command = 3, int address = 1) {
        return poller.poll(
            {static_cast<std::int16_t>(address), command, static_cast<float>(register_number), 0});
    }
    /// Polls registers 300 to 307; those that gave no reading. A wrong number fails.
    std::string pass() {
        std::string missing;
        poller.begin_pass();
        for (int i = 300; i < 308; ++i) {
            const LogReading reading = poll(i);
            if (reading.state != RowState::Answered) missing += std::to_string(i) + " ";
            EXPECT_TRUE(reading.value == " " + std::to_string(i) ||
                        reading.state != RowState::Answered)
                << i << ":" << reading.value;
            strays += reading.after_strays ? 1 : 0;
        }
        return missing;
    }

    ModbusState modbus_state;
    Modbus modbus{modbus_state};
    LogPoller poller{link, modbus};
    int strays = 0;
};

INSTANTIATE_TEST_SUITE_P(, LateRowsTest, ::testing::Values("QUIET", "COMPLETE"));

TEST_P(LateRowsTest, OneLateAnswerShiftsNoRow) {
    for (const double late_ms : {2100.0, 2300.0, 2500.0, 3000.0, 4200.0, 7000.0}) {
        rebuild();
        QueueingSlave slave(tick, *ports[1]);
        slave.late_ms[3] = late_ms;
        const std::string missing = pass();
        EXPECT_TRUE(missing.starts_with("302 ")) << late_ms;
        EXPECT_LE(missing.size(), late_ms < 4000 ? 8U : 12U) << late_ms;
        EXPECT_EQ(pass(), "") << late_ms;
        tick.advance(LateAnswers::kDoubtMs);
    }
}

TEST_P(LateRowsTest, ADoubledReplyShiftsNoRowOfTheNextPass) {
    QueueingSlave slave(tick, *ports[1]);
    slave.doubled = 3;
    if (complete()) { // it comes much sooner than the slave answers
        EXPECT_EQ(pass(), "303 ");
        EXPECT_EQ(pass(), "");
        return;
    }
    for (int i = 300; i < 308; ++i)
        static_cast<void>(poll(i)); // nothing tells the two replies apart
    tick.advance(1000);
    EXPECT_EQ(pass(), "");
    EXPECT_EQ(strays, 1);
}

TEST_P(LateRowsTest, ARowThatIsOffSlowsItsOwnAddressAlone) {
    QueueingSlave slave(tick, *ports[1]);
    EXPECT_EQ(poll(300, 3, 2).state, RowState::Nothing);
    const double begun = tick.now();
    EXPECT_EQ(pass(), "");
    const double pause_ms = complete() ? 3.5 * 10 / 9.6 : 30 * 2;
    EXPECT_NEAR(tick.now() - begun, 8 * (QueueingSlave::kTurnaroundMs + pause_ms), 20);
    EXPECT_EQ(slave.requests, 9);
}

TEST_P(LateRowsTest, AReplyOfAnotherLengthIsNoReading) {
    for (const auto& [command, reply] :
         {std::pair{3.0, "01 03 04 00 00 03 E8"}, {32.0, "01 03 02 00 09"}, {3.0, "01 03 00"}}) {
        rebuild();
        ports[1]->replies = {{{50, frame(reply)}}};
        EXPECT_EQ(poll(300, command), (LogReading{"", RowState::Nothing, false})) << reply;
        tick.advance(LateAnswers::kDoubtMs);
    }
}

} // namespace pelvan::testing
