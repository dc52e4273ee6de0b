#include <gtest/gtest.h>

#include <random>

#include "bytes.h"
#include "platform/run_time_error.h"
#include "simulator/simulator_hub.h"
#include "support/fake_time.h"

using namespace pelvan;
using namespace pelvan::simulator;
using pelvan::testing::FakeTick;
using pelvan::testing::frame;
using pelvan::testing::hex_of;

namespace {

class SimulatedLineTest : public ::testing::Test {
  protected:
    SimulatedLineTest() { tick.step_ms = 0; }

    std::unique_ptr<SerialLine> open(const std::string& device) { return hub.open(device, {}); }
    /// All that a line has received, taken now.
    static std::string taken(SerialLine& line) {
        std::string buffer;
        EXPECT_TRUE(line.read_into(buffer));
        return buffer;
    }
    /// What answers a request within two seconds.
    std::string exchange(SerialLine& line, const std::string& request) {
        line.write(request);
        tick.advance(2000);
        return taken(line);
    }

    FakeTick tick;
    SimulatorHub hub{tick};
    const std::string read_model = frame("01 03 00 00 00 01");
    const std::string model_reply = frame("01 03 02 02 E6");
};

} // namespace

TEST_F(SimulatedLineTest, BytesArriveAtThePaceOfTheBaudRate) {
    const auto line = open("simulated:742"); // 9600,N,8,1: 1.0417 ms a byte
    line->write(read_model);                 // 8 bytes: 8.3 ms on their way
    tick.advance(8);
    EXPECT_EQ(taken(*line), "");
    tick.advance(2); // the first byte of the reply stands at 9.4 ms
    EXPECT_EQ(hex_of(taken(*line)), "01");
    tick.advance(3);
    EXPECT_EQ(hex_of(taken(*line)), "03 02 02");
    tick.advance(10);
    EXPECT_EQ(taken(*line), model_reply.substr(4));
}

TEST_F(SimulatedLineTest, DiscardingForgetsOnlyWhatHasArrived) {
    const auto line = open("simulated:742");
    line->write(read_model);
    tick.advance(11);
    line->discard_input();
    tick.advance(50);
    EXPECT_EQ(taken(*line), model_reply.substr(2));
}

TEST_F(SimulatedLineTest, ATickThatWrapsPassesUnnoticed) {
    FakeTick late(4294967290.0);
    late.step_ms = 0;
    SimulatorHub other(late);
    const auto line = other.open("simulated:742", {});
    line->write(read_model);
    late.advance(30);
    EXPECT_EQ(taken(*line), model_reply);
}

TEST_F(SimulatedLineTest, ADamagedRequestIsNotAnsweredAndDoesNotSpoilTheNext) {
    const auto line = open("simulated:742");
    std::string damaged = read_model;
    damaged.back() = 0x7F;
    EXPECT_EQ(exchange(*line, damaged), "");
    EXPECT_EQ(exchange(*line, read_model), model_reply);
    EXPECT_EQ(exchange(*line, ""), "");
    EXPECT_EQ(exchange(*line, std::string(5000, '\xAA')), "");
    tick.advance(10000);
    EXPECT_EQ(exchange(*line, read_model), model_reply);
}

TEST_F(SimulatedLineTest, AnsweringTakesAsLongAsTheOptionSays) {
    const auto line = open("simulated:742,delay=100");
    line->write(read_model);
    tick.advance(108);
    EXPECT_EQ(taken(*line), "");
    tick.advance(20);
    EXPECT_EQ(taken(*line), model_reply);
}

TEST_F(SimulatedLineTest, ARepeatedRequestGetsTheOneLateAnswer) {
    const auto line = open("simulated:742,late=1,late_ms=400");
    line->write(read_model);
    tick.advance(250);
    EXPECT_EQ(exchange(*line, read_model), model_reply);
}

TEST_F(SimulatedLineTest, AControllerOutlivesItsLines) {
    EXPECT_EQ(exchange(*open("simulated:742"), frame("01 06 01 2C 00 64")),
              frame("01 06 01 2C 00 64"));
    EXPECT_EQ(exchange(*open("simulated:742"), frame("01 03 01 2C 00 01")),
              frame("01 03 02 00 64"));
    EXPECT_EQ(exchange(*open("simulated:742,address=5"), frame("05 03 01 2C 00 01")),
              frame("05 03 02 02 EE"));
}

TEST_F(SimulatedLineTest, ValuesMoveWhileTheTickRuns) {
    const auto line = open("simulated:742");
    const std::string first = exchange(*line, frame("01 03 00 64 00 01"));
    tick.advance(5000);
    EXPECT_NE(exchange(*line, frame("01 03 00 64 00 01")), first);
}

TEST_F(SimulatedLineTest, AResetIsAnsweredAndThenTheLineIsSilentForTwoSeconds) {
    const auto line = open("simulated:742");
    exchange(*line, frame("01 06 06 FD 05 E8"));
    exchange(*line, frame("01 06 05 87 06 40"));
    line->write(frame("01 06 06 42 03 20"));
    tick.advance(100);
    EXPECT_EQ(taken(*line), frame("01 06 06 42 03 20"));
    EXPECT_EQ(exchange(*line, read_model), "");
    EXPECT_EQ(exchange(*line, read_model), model_reply);
}

// Run under the sanitizers: whatever a host sends, the controller lives and answers the next
// request.
TEST_F(SimulatedLineTest, AnyBytesLeaveItAnswering) {
    std::mt19937 random(11);
    const auto line = open("simulated:742");
    for (int i = 0; i < 20000; ++i) {
        std::string junk(random() % 24, '\0');
        for (char& c : junk)
            c = as_char(static_cast<unsigned>(random()) >> 7U);
        if (i % 4 == 1)
            junk = with_modbus_crc(std::string{1, as_char(static_cast<unsigned>(i) % 20)} + junk);
        if (i % 4 == 2) junk = "\x10\x02\x08" + junk + "\x10\x03";
        if (i % 4 == 3) junk = (i % 8 == 3 ? "\x31\x05\x02?" : "=") + junk + "\x03\x04\x15\r";
        line->write(junk);
        tick.advance(200);
        std::string ignored;
        line->read_into(ignored);
    }
    tick.advance(20000); // a reset among them would have ended, a typed line been forgotten
    EXPECT_EQ(exchange(*line, read_model), model_reply);
}

TEST_F(SimulatedLineTest, TheLoopBackPlugEchoesWhileItsJumperIsIn) {
    const auto line = open("simulated:loopback");
    line->write("echo");
    tick.advance(3);
    EXPECT_EQ(taken(*line), "ec");
    tick.advance(3);
    EXPECT_EQ(taken(*line), "ho");
    hub.set_jumper(false);
    EXPECT_EQ(exchange(*line, "echo"), "");
    EXPECT_EQ(exchange(*open("simulated:loopback,jumper=in"), "echo"), "echo");
    hub.set_jumper(true);
    EXPECT_EQ(exchange(*open("simulated:loopback,jumper=out"), "echo"), "");
}

TEST_F(SimulatedLineTest, UnknownDevicesAreRefused) {
    EXPECT_TRUE(is_simulated("simulated:nonsense"));
    EXPECT_FALSE(is_simulated("/dev/ttyS0"));
    for (const char* text :
         {"simulated:", "simulated:741", "simulated:742x", "simulated:742,", "simulated:742,pace=1",
          "simulated:742,address=0", "simulated:742,address=248", "simulated:742,address=1.5",
          "simulated:742,lost=2", "simulated:742,lost=-0.1", "simulated:742,lost=much",
          "simulated:742,jumper=in", "simulated:loopback,jumper=half", "simulated:742,seed=-1"}) {
        EXPECT_FALSE(parse_simulated_device(text)) << text;
        try {
            static_cast<void>(open(text));
            ADD_FAILURE() << text;
        } catch (const RunTimeError& error) {
            EXPECT_EQ(error.number(), 8002) << text;
        }
    }
    EXPECT_NE(open("simulated:730,address=5,lost=0.02,late=0.01,seed=7,delay=20"), nullptr);
}
