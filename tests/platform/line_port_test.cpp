#include "platform/line_port.h"

#include <gtest/gtest.h>

#include "support/error_of.h"

namespace pelvan {
namespace {

using testing::error_of;

/// What the far end of the fake line does and sees; it outlives the lines that are opened on it.
struct Wire {
    std::string arriving;
    std::string wires; // "R" and "D" for RTS and DTR raised, in small letters dropped
    bool gone = false;
    bool stopped = false; // takes no bytes
    int lines_open = 0;
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
        fail_if(wire_.gone);
        wire_.arriving.clear();
    }
    void write(const std::string&) override { fail_if(wire_.gone || wire_.stopped); }
    void set_rts(bool on) override { set_wire(on ? 'R' : 'r'); }
    void set_dtr(bool on) override { set_wire(on ? 'D' : 'd'); }
    int descriptor() const override { return 77; }

  private:
    static void fail_if(bool fails) {
        if (fails) throw RunTimeError(57);
    }
    void set_wire(char letter) {
        fail_if(wire_.gone);
        wire_.wires += letter;
    }
    Wire& wire_;
};

class LinePortTest : public ::testing::Test {
  protected:
    int count_error() {
        return error_of([this] { static_cast<void>(port.InBufferCount()); });
    }
    int open_error() {
        return error_of([this] { port.set_PortOpen(true); });
    }
    int output_error() {
        return error_of([this] { port.set_Output("x"); });
    }
    /// How counting, reading, writing, discarding and moving a wire end.
    std::vector<int> use_errors() {
        return {count_error(), error_of([this] { static_cast<void>(port.Input()); }),
                output_error(), error_of([this] { port.set_InBufferCount(0); }),
                error_of([this] { port.EscapeCommFunction(EscapeCode::SETRTS); })};
    }

    Wire wire; // before the port: lines refer to it until they are closed
    std::optional<std::string> device = "device";
    const DeviceMap devices = [this](int) { return device; };
    const LineOpener opener = [this](const std::string&, const LineSettings& settings) {
        wire.settings = settings;
        return std::make_unique<FakeLine>(wire);
    };
    LinePort port{devices, opener};
};

TEST_F(LinePortTest, RefusesWhatItsStateForbids) {
    for (const int number : {0, 17, -1})
        EXPECT_EQ(error_of([&] { port.set_CommPort(static_cast<std::int16_t>(number)); }), 8002);
    EXPECT_EQ(error_of([&] { port.set_CommPort(16); }), 0);
    EXPECT_EQ(use_errors(), std::vector<int>(5, 8018));
    EXPECT_EQ(error_of([&] { port.set_PortOpen(false); }), 0);

    device.reset();
    EXPECT_EQ(open_error(), 8002);
    device = "device";
    port.set_Settings("no port data");
    EXPECT_EQ(open_error(), 8015);
    EXPECT_FALSE(port.PortOpen());
    port.set_Settings("9600,N,8,1");
    EXPECT_EQ(open_error(), 0);
    EXPECT_EQ(open_error(), 8005);
    EXPECT_EQ(error_of([&] { port.set_CommPort(2); }), 8000);
    EXPECT_EQ(port.CommPort(), 16);
}

TEST_F(LinePortTest, HandsItsPropertiesToTheLine) {
    port.set_Handshaking(1);
    port.set_DTREnable(false);
    port.set_PortOpen(true);
    EXPECT_TRUE(wire.settings.xon_xoff);
    EXPECT_FALSE(wire.settings.dtr);
    EXPECT_TRUE(wire.settings.rts);
    port.set_RTSEnable(false);
    port.set_DTREnable(true);
    port.EscapeCommFunction(EscapeCode::SETRTS);
    port.EscapeCommFunction(EscapeCode::CLRDTR);
    EXPECT_EQ(wire.wires, "rDRd");
}

TEST_F(LinePortTest, CollectsDiscardsAndForgetsAtClosing) {
    port.set_PortOpen(true);
    wire.arriving = "ab";
    EXPECT_EQ(port.InBufferCount(), 2);
    wire.arriving = "c";
    EXPECT_EQ(port.Input(), "abc");
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
    wire.stopped = true;
    EXPECT_EQ(output_error(), 57);
    EXPECT_EQ(wire.lines_open, 1) << "stopped is not lost";
    wire.arriving = "short";
    wire.gone = true;
    EXPECT_EQ(port.InBufferCount(), 5);
    EXPECT_EQ(wire.lines_open, 0);
    EXPECT_TRUE(port.PortOpen());
    EXPECT_EQ(port.Input(), "short");
    EXPECT_EQ(port.InBufferCount(), 0); // lets a collector end its reply
    EXPECT_EQ(count_error(), 8020);
    EXPECT_EQ(use_errors(), (std::vector<int>{8020, 8020, 57, 57, 57}));

    wire.gone = wire.stopped = false;
    EXPECT_EQ(open_error(), 8005);
    port.set_PortOpen(false);
    EXPECT_EQ(open_error(), 0);
    EXPECT_EQ(output_error(), 0);
    wire.gone = true;
    EXPECT_EQ(count_error(), 8020) << "at once, as nothing was read since the output";
}

TEST_F(LinePortTest, LetsTheReceiveHandlerMeetTheThresholdAndTheLossOnce) {
    std::string taken;
    std::vector<int> errors, handles;
    const Subscription watching =
        port.watch_changed.subscribe([&] { handles.push_back(port.CommID()); });
    const Subscription receiving = port.OnComm.subscribe([&] {
        errors.push_back(error_of([&] {
            while (port.InBufferCount() > 0)
                taken += port.Input();
        }));
    });
    port.check_receive(); // closed
    port.set_PortOpen(true);
    wire.arriving = "ab";
    port.check_receive(); // no threshold
    port.set_RThreshold(3);
    port.check_receive();
    EXPECT_EQ(taken, "");
    wire.arriving = "c";
    wire.gone = true;
    for (int i = 0; i < 3; ++i)
        port.check_receive();
    EXPECT_EQ(taken, "abc");
    EXPECT_EQ(errors, (std::vector<int>{0, 8020}));
    EXPECT_EQ(handles, (std::vector<int>{77, 77, -1})) << "whoever watches the handle is told";
}

TEST_F(LinePortTest, MayEndInItsEvent) {
    auto mortal = std::make_unique<LinePort>(devices, opener);
    const Subscription ending = mortal->OnComm.subscribe([&] { mortal.reset(); });
    mortal->set_PortOpen(true);
    mortal->set_RThreshold(1);
    wire.arriving = "x";
    wire.gone = true;
    mortal->check_receive();
    EXPECT_FALSE(mortal);
}

TEST(LineSettingsTest, ParsesStrictly) {
    const auto settings = parse_line_settings("19200,o,7,2");
    ASSERT_TRUE(settings);
    EXPECT_EQ(settings->baud_rate, 19200);
    EXPECT_EQ(settings->parity, 'O');
    EXPECT_NEAR(character_time_us(*settings), 11e6 / 19200, 0.01);
    for (const char* good : {"9600,N,8,1", "50,m,5,1.5", "115200,S,6,2", "38400,E,7,1"})
        EXPECT_TRUE(parse_line_settings(good)) << good;
    for (const char* bad :
         {"", ",,,", "9600,N,8", "9600,N,8,1,", "9600, N,8,1", "9600,N,8,1 ", "0,N,8,1",
          "-9600,N,8,1", "+9600,N,8,1", "99999999999,N,8,1", "9600,X,8,1", "9600,,8,1",
          "9600,NN,8,1", "9600,N,9,1", "9600,N,4,1", "9600,N,8,0", "9600,N,8,1.5", "9600,N,5,2"})
        EXPECT_FALSE(parse_line_settings(bad)) << bad;
}

} // namespace
} // namespace pelvan
