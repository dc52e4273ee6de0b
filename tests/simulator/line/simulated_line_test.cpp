#include <random>

#include "line_test.h"
#include "support/error_of.h"

namespace pelvan::simulator {
namespace {

TEST_F(LineTest, BytesArriveAtThePaceOfTheBaudRate) {
    open("simulated:742");   // 9600,N,8,1: 1.0417 ms a byte
    line->write(read_model); // 8 bytes: 8.3 ms on their way
    EXPECT_EQ(taken(8), "");
    EXPECT_EQ(hex_of(taken(2)), "01"); // it stands at 9.4 ms
    EXPECT_EQ(hex_of(taken(3)), "03 02 02");
    EXPECT_EQ(taken(10), model_reply.substr(4));
    line->write(read_model);
    tick.advance(11);
    line->discard_input(); // what is on its way still comes
    EXPECT_EQ(taken(50), model_reply.substr(2));
}

TEST_F(LineTest, ADamagedRequestIsNotAnsweredAndDoesNotSpoilTheNext) {
    open("simulated:742");
    EXPECT_EQ(say(read_model.substr(0, 7) + "?"), "");
    EXPECT_EQ(say(read_model), model_reply);
    EXPECT_EQ(say(std::string(5000, '\xAA')), "");
    tick.advance(10000);
    EXPECT_EQ(say(read_model), model_reply);
}

TEST_F(LineTest, ARepeatedRequestGetsTheOneLateAnswer) {
    open("simulated:742,late=1,late_ms=400");
    line->write(read_model);
    tick.advance(250);
    EXPECT_EQ(say(read_model), model_reply);
}

TEST_F(LineTest, AQueueIsOneAnswerBehindAfterTheOneReplyThatIsLate) {
    open("simulated:742,delay=80,late=1,late_ms=300,only=2,queue=1");
    const std::string read_set_point = frame("01 03 01 2C 00 01");
    const std::string set_point_reply = frame("01 03 02 02 EE");
    EXPECT_EQ(say(read_model, 100), model_reply);
    EXPECT_EQ(say(read_model, 250), "");
    EXPECT_EQ(say(read_set_point, 150), model_reply);
    EXPECT_EQ(say(read_model, 100), set_point_reply);
    EXPECT_EQ(say(read_set_point, 100), model_reply);
    EXPECT_EQ(taken(250), set_point_reply);
    EXPECT_EQ(say(read_model, 100), model_reply) << "in step after a pause";
}

TEST_F(LineTest, AControllerOutlivesItsLinesAndEachAddressIsAnother) {
    open("simulated:742");
    static_cast<void>(say(frame("01 06 01 2C 00 64")));
    open("simulated:742");
    EXPECT_EQ(say(frame("01 03 01 2C 00 01")), frame("01 03 02 00 64"));
    open("simulated:742,address=5");
    EXPECT_EQ(say(frame("05 03 01 2C 00 01")), frame("05 03 02 02 EE"));
}

TEST_F(LineTest, AResetNeedsItsKeysKeepsTheProfilesAndIsFollowedByTwoSilentSeconds) {
    open("simulated:742");
    const auto ask = [&](const std::string& request, const std::string& reply) {
        EXPECT_EQ(say(frame(request)), frame(reply)) << request;
    };
    const std::string reset = "01 06 06 42 03 20";
    for (const char* write : {"01 06 01 2C 00 64", "01 06 0F A0 00 01", "01 06 0F A2 00 01"})
        ask(write, write); // a set point and a profile
    for (const char* key : {"01 06 06 FD 05 E8", "01 06 05 87 06 40"}) {
        ask(reset, "01 86 03");
        ask(key, key);
    }
    EXPECT_EQ(say(frame(reset), 100), frame(reset));
    EXPECT_EQ(taken(1800), "");
    EXPECT_EQ(say(read_model, 150), "");
    ask("01 03 01 2C 00 01", "01 03 02 02 EE");
    ask("01 03 0F CA 00 01", "01 03 02 00 01");
    ask(reset, "01 86 03"); // the keys are gone
}

// Run under the sanitizers: whatever a host sends, the next request is answered.
TEST_F(LineTest, AnyBytesLeaveItAnswering) {
    std::mt19937 random(11);
    open("simulated:742");
    for (int i = 0; i < 20000; ++i) {
        std::string junk(random() % 24, '\0');
        for (char& c : junk)
            c = static_cast<char>(random() >> 7U);
        if (i % 4 == 1) junk = sealed(std::string{1, static_cast<char>(i % 20)} + junk);
        if (i % 4 == 2) junk = "\x10\x02\x08" + junk + "\x10\x03";
        if (i % 4 == 3) junk = (i % 8 == 3 ? "\x31\x05\x02?" : "=") + junk + "\x03\x04\x15\r";
        static_cast<void>(say(junk, 200));
    }
    tick.advance(20000); // a reset among them would have ended, a typed line been forgotten
    EXPECT_EQ(say(read_model), model_reply);
}

TEST_F(LineTest, AFasterControllerKeepsThePaceOfItsLine) {
    open("simulated:742?speed=60,refuse=300,refuse=4006>30");
    const auto ask = [&](const std::string& request, const std::string& reply) {
        EXPECT_EQ(say(frame(request), 40), frame(reply)) << request;
    };
    ask("01 06 01 2C 00 64", "01 86 03");
    // A profile with a soak of 30 seconds, which cannot be made longer.
    for (const char* write : {"01 06 0F A0 00 01", "01 06 0F A2 00 01", "01 06 0F A2 00 03",
                              "01 06 0F A6 00 1E", "01 06 10 05 00 01"})
        ask(write, write);
    ask("01 06 0F A6 00 1F", "01 86 03");
    ask("01 03 10 04 00 01", "01 03 02 00 01");
    tick.advance(350);
    ask("01 03 10 04 00 01", "01 03 02 00 01");
    ask("01 03 10 04 00 01", "01 03 02 00 04"); // 0.5 s are 30
    ask("01 06 10 1A 00 01", "01 06 10 1A 00 01");
    tick.advance(1850); // the power fails: two seconds of the line
    EXPECT_EQ(say(read_model, 40), "");
    tick.advance(100);
    EXPECT_EQ(say(read_model, 9), "");
    EXPECT_EQ(taken(31), model_reply);
}

TEST_F(LineTest, TheLoopBackPlugEchoesWhileItsJumperIsIn) {
    open("simulated:loopback");
    EXPECT_EQ(say("echo", 3), "ec");
    EXPECT_EQ(taken(3), "ho");
    // What the device's own text says rules.
    open("simulated:loopback,jumper=out");
    EXPECT_EQ(say("echo"), "");
    registry.set_jumper(false);
    open("simulated:loopback,jumper=in");
    EXPECT_EQ(say("echo"), "echo");
}

TEST_F(LineTest, UnknownDevicesAreRefused) {
    for (const char* text : {"simulated:",
                             "simulated:741",
                             "simulated:742x",
                             "simulated:742,",
                             "simulated:742,pace=1",
                             "simulated:742,address=0",
                             "simulated:742,address=248",
                             "simulated:742,address=1.5",
                             "simulated:742,lost=2",
                             "simulated:742,lost=-0.1",
                             "simulated:742,lost=much",
                             "simulated:742,queue=2",
                             "simulated:742,line=9600",
                             "simulated:742,only=0.5",
                             "simulated:742,jumper=in",
                             "simulated:742,speed=0",
                             "simulated:742,speed=3601",
                             "simulated:742?",
                             "simulated:742??speed=2",
                             "simulated:742?speed=2?address=3",
                             "simulated:742,refuse=65536",
                             "simulated:742,refuse=4007>",
                             "simulated:loopback,speed=2",
                             "simulated:loopback,jumper=half",
                             "simulated:742,seed=-1"}) {
        EXPECT_FALSE(parse_simulated_device(text)) << text;
        EXPECT_EQ(error_of([&] { open(text); }), 8002) << text;
    }
}

} // namespace
} // namespace pelvan::simulator
