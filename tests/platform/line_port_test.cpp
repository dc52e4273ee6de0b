#include "platform/line_port.h"

#include <gtest/gtest.h>

#include "support/error_of.h"
#include "text/strings.h"

namespace pelvan::testing {

struct LinePortTest : ::testing::Test {
    struct FakeLine : SerialLine {
        explicit FakeLine(LinePortTest& test) : far_end(test) { ++far_end.lines_open; }
        ~FakeLine() override { --far_end.lines_open; }
        bool read_into(std::string& buffer) override {
            buffer += std::exchange(far_end.arriving, {});
            return !far_end.gone;
        }
        void wait_for_input(double) override {}
        void discard_input() override { far_end.arriving.clear(); }
        void write(const std::string&) override {
            if (far_end.stopped) throw RunTimeError(57);
        }
        void set_rts(bool on) override { far_end.wires += on ? 'R' : 'r'; }
        void set_dtr(bool on) override { far_end.wires += on ? 'D' : 'd'; }
        int descriptor() const override { return 77; }
        LinePortTest& far_end;
    };
    /// Carries out one step after the other, "+" lets what follows it arrive. What each gives, a
    /// space behind it: a number, bytes, the number of its error.
    std::string run(const std::string& steps) {
        std::string results;
        for (const std::string& step : split(steps, ' '))
            if (const int error = error_of([&] { results += result_of(step); }))
                results += std::to_string(error) + " ";
        return results;
    }
    std::string result_of(const std::string& step) {
        if (step[0] == '+') arriving += step.substr(1);
        if (step == "open" || step == "close") port->set_PortOpen(step == "open");
        if (step == "count") return std::to_string(port->InBufferCount()) + " ";
        if (step == "read") return port->Input() + " ";
        if (step == "discard") port->set_InBufferCount(0);
        if (step == "write") port->set_Output("x");
        if (step == "raise") port->EscapeCommFunction(EscapeCode::SETRTS);
        if (step == "check") port->check_receive();
        return {};
    }
    int number_error(int number) {
        return error_of(&LinePort::set_CommPort, port, static_cast<std::int16_t>(number));
    }

    // The far end; before the port, as lines refer to it until they are closed.
    std::string arriving;
    std::string wires; // "R" and "D" for RTS and DTR raised, in small letters dropped
    bool gone = false;
    bool stopped = false; // takes no bytes
    int lines_open = 0;
    std::optional<std::string> device = "device";
    LineSettings opened_with;
    std::unique_ptr<LinePort> port =
        std::make_unique<LinePort>([this](int) { return device; },
                                   [this](const std::string&, const LineSettings& settings) {
                                       opened_with = settings;
                                       return std::make_unique<FakeLine>(*this);
                                   });
};

TEST_F(LinePortTest, RefusesWhatItsStateForbids) {
    for (const int number : {0, 17, -1})
        EXPECT_EQ(number_error(number), 8002) << number;
    EXPECT_EQ(number_error(16), 0);
    EXPECT_EQ(run("count read write discard raise close"), "8018 8018 8018 8018 8018 ");
    device.reset();
    EXPECT_EQ(run("open"), "8002 ");
    device = "device";
    port->set_Settings("no port data");
    EXPECT_EQ(run("open"), "8015 ");
    port->set_Settings("9600,N,8,1");
    EXPECT_EQ(run("open open"), "8005 ");
    EXPECT_EQ(number_error(2), 8000);
    EXPECT_EQ(port->CommPort(), 16);
}

TEST_F(LinePortTest, HandsItsPropertiesToTheLine) {
    port->set_Handshaking(1);
    port->set_DTREnable(false);
    port->set_PortOpen(true);
    EXPECT_TRUE(opened_with.xon_xoff && opened_with.rts && !opened_with.dtr);
    port->set_RTSEnable(false);
    port->set_DTREnable(true);
    port->EscapeCommFunction(EscapeCode::SETRTS);
    port->EscapeCommFunction(EscapeCode::CLRDTR);
    EXPECT_EQ(wires, "rDRd");
}

TEST_F(LinePortTest, AnotherParityTakesThePlaceOfTheSettingsAtTheNextOpening) {
    for (const auto& [parity, opened] : {std::pair{'E', 'E'}, {'\0', 'N'}, {'N', 'N'}}) {
        port->set_OtherParity(parity);
        port->set_PortOpen(true);
        EXPECT_EQ(opened_with.parity, opened);
        EXPECT_EQ(opened_with.foreign_parity, opened != 'N');
        EXPECT_EQ(port->Settings(), "9600,N,8,1");
        port->set_PortOpen(false);
    }
}

TEST_F(LinePortTest, CollectsDiscardsAndForgetsAtClosing) {
    EXPECT_EQ(run("open +ab count +c read"), "2 abc ");
    EXPECT_EQ(run("+old count +also_old discard count"), "3 0 ");
    EXPECT_EQ(run("+" + std::string(2'000'000, 'x') + " count close"), "1048576 ");
    EXPECT_EQ(lines_open, 0);
    EXPECT_EQ(run("open count"), "0 ");
}

TEST_F(LinePortTest, DeliversTheLastBytesOfALostLineThenTheError) {
    stopped = true;
    EXPECT_EQ(run("open write"), "57 ");
    EXPECT_EQ(lines_open, 1) << "stopped is not lost";
    gone = true;
    EXPECT_EQ(run("+short count"), "5 ");
    EXPECT_EQ(lines_open, 0);
    // The empty count lets a collector end its reply.
    EXPECT_EQ(run("read count count read write discard raise"), "short 0 8020 8020 57 57 57 ");
    gone = stopped = false;
    EXPECT_EQ(run("open close open write"), "8005 ");
    gone = true;
    EXPECT_EQ(run("count"), "8020 ") << "at once, as nothing was read since the output";
}

TEST_F(LinePortTest, LetsTheReceiveHandlerMeetTheThresholdAndTheLossOnce) {
    std::string taken;
    std::vector<int> handles;
    const Subscription watching =
        port->watch_changed.subscribe([&] { handles.push_back(port->CommID()); });
    Subscription receiving = port->OnComm.subscribe([&] { taken += run("read count"); });
    EXPECT_EQ(run("check open +ab check"), ""); // closed; no threshold
    port->set_RThreshold(3);
    run("check");
    EXPECT_EQ(taken, "");
    gone = true;
    run("+c check check check");
    EXPECT_EQ(taken, "abc 0 8020 8020 ");
    EXPECT_EQ(handles, (std::vector<int>{77, 77, -1})) << "whoever watches the handle is told";

    receiving = port->OnComm.subscribe([&] { port.reset(); });
    gone = false;
    run("close open +abc check");
    EXPECT_FALSE(port) << "it may end in its event";
}

TEST(LineSettingsTest, ParsesStrictly) {
    const auto settings = parse_line_settings("19200,o,7,2").value();
    EXPECT_EQ(std::pair(settings.baud_rate, settings.parity), std::pair(19200, 'O'));
    EXPECT_NEAR(character_time_us(settings), 11e6 / 19200, 0.01);
    for (const char* good : {"9600,N,8,1", "50,m,5,1.5", "115200,S,6,2", "38400,E,7,1"})
        EXPECT_TRUE(parse_line_settings(good)) << good;
    for (const char* bad :
         {"", ",,,", "9600,N,8", "9600,N,8,1,", "9600, N,8,1", "9600,N,8,1 ", "0,N,8,1",
          "-9600,N,8,1", "+9600,N,8,1", "99999999999,N,8,1", "9600,X,8,1", "9600,,8,1",
          "9600,NN,8,1", "9600,N,9,1", "9600,N,4,1", "9600,N,8,0", "9600,N,8,1.5", "9600,N,5,2"})
        EXPECT_FALSE(parse_line_settings(bad)) << bad;
}

} // namespace pelvan::testing
