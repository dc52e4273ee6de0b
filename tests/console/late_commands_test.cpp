// What the console makes of answers that come late and of replies that are no answer.
#include <gtest/gtest.h>

#include "console/senders.h"
#include "support/queueing_slave.h"
#include "support/serial_rig.h"

namespace pelvan::testing {

class LateCommandsTest : public ::testing::TestWithParam<const char*>, public SerialRig {
  protected:
    LateCommandsTest() {
        build({"4;9600,N,8,1;1", "1;9600,N,8,1;1", "2;9600,N,8,1;1", "3;9600,N,8,1;1"});
        exchange_by(GetParam());
    }
    SendOutcome send_modbus(std::size_t type, const std::string& start, const std::string& values) {
        return senders.modbus.send({type, "1", start, values, false}, {DataFormat::SmartDec});
    }
    SendOutcome read(int start) { return send_modbus(2, std::to_string(start), "1"); }

    ModbusState modbus_state;
    Modbus modbus{modbus_state};
    Senders senders{link, modbus, clock, dialogs};
};

constexpr std::size_t kWriteRegister = 5; // among the command types

INSTANTIATE_TEST_SUITE_P(, LateCommandsTest, ::testing::Values("QUIET", "COMPLETE"));

TEST_P(LateCommandsTest, ALateAnswerIsNotThatOfTheNextCommands) {
    for (const double late_ms : {2100.0, 2400.0, 3000.0, 3900.0}) {
        rebuild();
        QueueingSlave slave(tick, *ports[1]);
        slave.late_ms[1] = late_ms;
        EXPECT_EQ(read(301).kind, SendOutcome::Kind::NoReply);
        for (const int start : {310, 311, 312}) {
            const SendOutcome outcome = read(start);
            EXPECT_TRUE(outcome.accepted) << late_ms;
            EXPECT_EQ(outcome.row->response, std::to_string(start)) << late_ms;
        }
        tick.advance(LateAnswers::kDoubtMs);
    }
}

TEST_P(LateCommandsTest, AWriteWithALateAnswerBeforeItIsShownAndNotRepeated) {
    QueueingSlave slave(tick, *ports[1]);
    slave.late_ms[1] = 2400;
    EXPECT_EQ(send_modbus(kWriteRegister, "300", "5").kind, SendOutcome::Kind::NoReply);
    const SendOutcome outcome = send_modbus(kWriteRegister, "300", "5");
    EXPECT_FALSE(outcome.accepted);
    EXPECT_EQ(outcome.row->response, "300 5");
    EXPECT_EQ(outcome.status, kUnclearReply);
    EXPECT_EQ(outcome.objection, kUnclearReply);
    EXPECT_EQ(slave.requests, 2);
}

TEST_P(LateCommandsTest, AReadInXonIsAskedAgain) {
    ports[2]->discards_future = false;
    ports[2]->replies = {{}, {{50, "12.5\r"}, {200, "100.0\r"}}, {{80, "100.0\r"}}};
    EXPECT_EQ(senders.text.send(TextProtocol::Xon, {"", "? C1"}).kind, SendOutcome::Kind::NoReply);
    const SendOutcome outcome = senders.text.send(TextProtocol::Xon, {"", "? SP1"});
    EXPECT_EQ(outcome.row->response, "100.0");
    EXPECT_TRUE(outcome.accepted);
    EXPECT_EQ(ports[2]->outputs.size(), 3U);
}

TEST_P(LateCommandsTest, AFullCommandThatIsAcknowledgedTooLateIsNotAccepted) {
    const std::vector<std::string> steps{"1^", "", "^", "{0}", "", ""};
    for (const std::string& step : steps)
        ports[0]->replies.push_back({{1, wire(step)}});
    const SendOutcome outcome = senders.text.send(TextProtocol::Full, {"1", "= SP1 5"});
    EXPECT_FALSE(outcome.accepted);
    EXPECT_EQ(outcome.row->response, "No comms error");
    EXPECT_EQ(outcome.objection,
              "The command was not acknowledged in time. It may have been carried out.");
}

TEST_P(LateCommandsTest, RepliesThatAreNoAnswerAreShownWithTheReason) {
    const std::tuple<std::size_t, std::string, std::string, std::string> cases[] = {
        {2, "02 03 02 00 07", "7", "The reply came from another address."},
        {2, "01 04 02 00 07", "7", "The reply is to another function."},
        {2, "01 03 04 00 07 00 08", "7 8",
         "The reply holds another number of values than was asked for."},
        {2, "01 83 02", "Exception Error: 131 2",
         "The controller refused the command: no such register (exception 2)."},
        {kWriteRegister, "01 06 01 2C 00 09", "300 9", "The reply does not repeat what was sent."},
        {kWriteRegister, "01 06 01 2D 00 01", "301 1", "The reply does not repeat what was sent."},
    };
    for (const auto& [type, reply, response, objection] : cases) {
        ports[1]->replies = {{{5, frame(reply)}}};
        const SendOutcome outcome = send_modbus(type, "300", "1");
        EXPECT_FALSE(outcome.accepted) << reply;
        EXPECT_EQ(outcome.row->response, response);
        EXPECT_EQ(outcome.objection, objection);
        tick.advance(LateAnswers::kDoubtMs);
    }
    for (const auto& [bytes_of_reply, objection] :
         {std::pair{bytes("01 03 02 00"), "The reply is incomplete."},
          {bytes("01 03 02 00 07 00 00"), "The reply came damaged: its CRC does not fit."}}) {
        ports[1]->replies = {{{5, bytes_of_reply}}};
        EXPECT_EQ(read(300).objection, objection);
    }
}

} // namespace pelvan::testing
