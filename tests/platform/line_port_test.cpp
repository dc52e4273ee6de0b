#include "platform/line_port.h"

#include <gtest/gtest.h>

#include "support/error_of.h"

namespace pelvan {
namespace {

using testing::error_of;

/// What the far end of the fake line does and sees; it outlives the lines that are opened on it.
struct Wire {
    std::string arriving;
    std::string written;
    std::string wires; // "R" and "D" for RTS and DTR raised, in small letters dropped
    bool gone = false;
    bool stopped = false; // takes no bytes
    int lines_open = 0;
    int openings = 0;
    LineSettings settings;
};

class FakeLine : public SerialLine {
  public:
    explicit FakeLine(Wire& wire) : wire_(wire) { ++wire_.lines_open; }
    ~FakeLine() override { --wire_.lines_open; }
    bool read_into(std::string& buffer) override {
        buffer += std::exchange(wire_.arriving, {});
        return !wire_.gone;
    }
    void discard_input() override {
        check();
        wire_.arriving.clear();
    }
    void write(const std::string& bytes) override {
        check();
        if (wire_.stopped) throw RunTimeError(57);
        wire_.written += bytes;
    }
    void set_rts(bool on) override {
        check();
        wire_.wires += on ? 'R' : 'r';
    }
    void set_dtr(bool on) override {
        check();
        wire_.wires += on ? 'D' : 'd';
    }
    int descriptor() const override { return 77; }

  private:
    void check() const {
        if (wire_.gone) throw RunTimeError(57);
    }
    Wire& wire_;
};

class LinePortTest : public ::testing::Test {
  protected:
    LinePortTest()
        : port([this](int) { return device; },
               [this](const std::string&, const LineSettings& settings) {
                   wire.settings = settings;
                   ++wire.openings;
                   return std::make_unique<FakeLine>(wire);
               }) {}

    int count_error() {
        return error_of([this] { static_cast<void>(port.InBufferCount()); });
    }
    int input_error() {
        return error_of([this] { static_cast<void>(port.Input()); });
    }
    int open_error() {
        return error_of([this] { port.set_PortOpen(true); });
    }
    int output_error() {
        return error_of([this] { port.set_Output("x"); });
    }
    int discard_error() {
        return error_of([this] { port.set_InBufferCount(0); });
    }
    int escape_error() {
        return error_of([this] { port.EscapeCommFunction(EscapeCode::SETRTS); });
    }

    Wire wire; // before the port: lines refer to it until they are closed
    std::optional<std::string> device = "device";
    LinePort port;
};

TEST_F(LinePortTest, RefusesWhatItsStateForbids) {
    for (const int number : {0, 17, -1})
        EXPECT_EQ(error_of([&] { port.set_CommPort(static_cast<std::int16_t>(number)); }), 8002);
    EXPECT_EQ(error_of([&] { port.set_CommPort(16); }), 0);
    EXPECT_EQ(count_error(), 8018);
    EXPECT_EQ(input_error(), 8018);
    EXPECT_EQ(output_error(), 8018);
    EXPECT_EQ(discard_error(), 8018);
    EXPECT_EQ(escape_error(), 8018);
    EXPECT_EQ(error_of([&] { port.set_PortOpen(false); }), 0);

    device.reset();
    EXPECT_EQ(open_error(), 8002);
    device = "device";
    port.set_Settings("no port data");
    EXPECT_EQ(open_error(), 8015);
    EXPECT_FALSE(port.PortOpen());
    EXPECT_EQ(wire.openings, 0);

    port.set_Settings("9600,N,8,1");
    EXPECT_EQ(open_error(), 0);
    EXPECT_EQ(open_error(), 8005);
    EXPECT_EQ(error_of([&] { port.set_CommPort(2); }), 8000);
    EXPECT_EQ(port.CommPort(), 16);
}

TEST_F(LinePortTest, HandsItsPropertiesToTheLine) {
    port.set_Settings("1200,e,7,2");
    port.set_Handshaking(1);
    port.set_DTREnable(false);
    port.set_PortOpen(true);
    EXPECT_EQ(wire.settings.baud_rate, 1200);
    EXPECT_TRUE(wire.settings.xon_xoff);
    EXPECT_FALSE(wire.settings.dtr);
    EXPECT_TRUE(wire.settings.rts);
    EXPECT_EQ(wire.wires, "");

    port.set_RTSEnable(false);
    port.set_DTREnable(true);
    port.EscapeCommFunction(EscapeCode::SETRTS);
    port.EscapeCommFunction(EscapeCode::CLRDTR);
    EXPECT_EQ(wire.wires, "rDRd");
    EXPECT_FALSE(port.RTSEnable());
    EXPECT_TRUE(port.DTREnable());
}

TEST_F(LinePortTest, CollectsDiscardsAndForgetsAtClosing) {
    port.set_PortOpen(true);
    wire.arriving = "ab";
    EXPECT_EQ(port.InBufferCount(), 2);
    wire.arriving = "c";
    EXPECT_EQ(port.Input(), "abc");
    EXPECT_EQ(port.Input(), "");
    wire.arriving = "old";
    EXPECT_EQ(port.InBufferCount(), 3);
    wire.arriving = "also old";
    port.set_InBufferCount(0);
    EXPECT_EQ(port.InBufferCount(), 0);

    wire.arriving = std::string(2'000'000, 'x');
    EXPECT_EQ(port.InBufferCount(), 1 << 20);
    port.set_PortOpen(false);
    EXPECT_EQ(wire.lines_open, 0);
    port.set_PortOpen(true);
    EXPECT_EQ(port.InBufferCount(), 0);
}

TEST_F(LinePortTest, DeliversTheLastBytesOfALostLineThenTheError) {
    port.set_PortOpen(true);
    wire.arriving = "short";
    wire.gone = true;
    EXPECT_EQ(port.InBufferCount(), 5);
    EXPECT_EQ(wire.lines_open, 0);
    EXPECT_TRUE(port.PortOpen());
    EXPECT_EQ(port.CommID(), -1);
    EXPECT_EQ(port.Input(), "short");
    EXPECT_EQ(port.InBufferCount(), 0); // lets a collector end its reply
    EXPECT_EQ(count_error(), 8020);
    EXPECT_EQ(count_error(), 8020);
    EXPECT_EQ(input_error(), 8020);
    EXPECT_EQ(output_error(), 57);
    EXPECT_EQ(discard_error(), 57);
    EXPECT_EQ(escape_error(), 57);

    wire.gone = false;
    EXPECT_EQ(open_error(), 8005);
    port.set_PortOpen(false);
    EXPECT_EQ(open_error(), 0);
    EXPECT_EQ(wire.openings, 2);
    EXPECT_EQ(port.InBufferCount(), 0);
    EXPECT_EQ(output_error(), 0);
}

TEST_F(LinePortTest, ReportsTheLossAtOnceWhenNothingWasReadSinceTheOutput) {
    port.set_PortOpen(true);
    wire.arriving = "reply";
    EXPECT_EQ(port.Input(), "reply");
    port.set_Output("next");
    wire.gone = true;
    EXPECT_EQ(count_error(), 8020);
}

TEST_F(LinePortTest, GivesUpALostLineAtTheFailingOutputButKeepsAStoppedOne) {
    port.set_PortOpen(true);
    wire.stopped = true;
    EXPECT_EQ(output_error(), 57);
    EXPECT_EQ(wire.lines_open, 1);
    wire.gone = true;
    EXPECT_EQ(output_error(), 57);
    EXPECT_EQ(wire.lines_open, 0);
}

TEST_F(LinePortTest, RaisesTheReceiveEventAtTheThreshold) {
    int events = 0;
    port.OnComm = [&] { ++events; };
    port.check_receive(); // closed
    port.set_PortOpen(true);
    wire.arriving = "ab";
    port.check_receive(); // no threshold
    port.set_RThreshold(3);
    port.check_receive();
    EXPECT_EQ(events, 0);
    wire.arriving = "c";
    port.check_receive();
    EXPECT_EQ(events, 1);
}

TEST_F(LinePortTest, LetsTheReceiveHandlerMeetTheLossOnce) {
    std::string taken;
    std::vector<int> errors;
    port.OnComm = [&] {
        errors.push_back(error_of([&] {
            while (port.InBufferCount() > 0)
                taken += port.Input();
        }));
    };
    port.set_PortOpen(true);
    port.set_RThreshold(1);
    wire.arriving = "last";
    wire.gone = true;
    port.check_receive();
    port.check_receive();
    EXPECT_EQ(taken, "last");
    EXPECT_EQ(errors, (std::vector<int>{0, 8020}));
}

TEST_F(LinePortTest, TellsWhoeverWatchesTheHandle) {
    std::vector<int> handles;
    port.watch_changed = [&] { handles.push_back(port.CommID()); };
    port.set_RThreshold(1);
    port.set_PortOpen(true);
    wire.gone = true;
    EXPECT_EQ(count_error(), 8020);
    port.set_PortOpen(false);
    EXPECT_EQ(handles, (std::vector<int>{-1, 77, -1, -1}));
}

TEST(LineSettingsTest, ParsesStrictly) {
    const auto settings = parse_line_settings("19200,o,7,2");
    ASSERT_TRUE(settings);
    EXPECT_EQ(settings->baud_rate, 19200);
    EXPECT_EQ(settings->parity, 'O');
    EXPECT_EQ(settings->data_bits, 7);
    EXPECT_EQ(settings->stop_bits, 2);
    EXPECT_NEAR(character_time_us(*settings), 11e6 / 19200, 0.01);

    for (const char* good : {"9600,N,8,1", "50,m,5,1.5", "115200,S,6,2", "38400,E,7,1"})
        EXPECT_TRUE(parse_line_settings(good)) << good;
    for (const char* bad : {"",           ",,,",         "NO PORT DATA", "9600",
                            "9600,N,8",   "9600,N,8,1,", "9600, N,8,1",  "9600,N,8,1 ",
                            "0,N,8,1",    "-9600,N,8,1", "+9600,N,8,1",  "99999999999,N,8,1",
                            "9600,X,8,1", "9600,,8,1",   "9600,NN,8,1",  "9600,N,9,1",
                            "9600,N,4,1", "9600,N,8,0",  "9600,N,8,1.5", "9600,N,5,2"})
        EXPECT_FALSE(parse_line_settings(bad)) << bad;
}

} // namespace
} // namespace pelvan
