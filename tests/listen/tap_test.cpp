// The monitor at a tap between a master and a slave that is not ours (built on libmodbus), over
// pseudo-terminals. The program's time is a fake tick, so that quiet pauses take no real time.
#include <gtest/gtest.h>
#include <sys/ioctl.h>

#include "app/application.h"
#include "support/fake_dialogs.h"
#include "support/fake_time.h"
#include "support/frames.h"
#include "support/modbus_slave.h"
#include "support/temp_dir.h"

namespace pelvan {
namespace {

using testing::PtyPair;

constexpr int kExchanges = 600;
constexpr int kReplyAfterMs = 25;
constexpr int kQuietMs = 4; // four settle times of 19200 baud, in which the line waits

std::size_t byte_of(const std::string& bytes, std::size_t at) {
    return static_cast<unsigned char>(bytes.at(at));
}

/// Request `i` of the master: reads, writes, and now and then a register that is not there.
std::string request(int i) {
    const auto word = [](int value) {
        return std::string{static_cast<char>(value >> 8), static_cast<char>(value)};
    };
    const int count = 1 + i % 17;
    const std::string range = word(i % 90) + word(count);
    std::string values(1, static_cast<char>(2 * count));
    for (int n = 0; n < count; ++n)
        values += word(7 * i + n);
    const std::string frames[] = {"\1\3" + range,
                                  "\1\4" + range,
                                  "\1\6" + word(i % 90) + word(i),
                                  "\1\x10" + range + values,
                                  "\1\1" + range,
                                  "\1\3" + word(2000) + word(1)};
    return testing::sealed(frames[i % 6]);
}

std::string receive_reply(const PtyPair& from) {
    const std::string head = from.receive(5);
    const std::size_t function = byte_of(head, 1);
    if (function >= 0x80) return head;
    return head + from.receive(function <= 4 ? byte_of(head, 2) : 3);
}

/// What a command prints; nothing when the program is not installed.
std::string output_of(const std::string& command) {
    const std::unique_ptr<FILE, int (*)(FILE*)> pipe(::popen(command.c_str(), "r"), ::pclose);
    std::string text;
    for (int c = 0; pipe && (c = std::fgetc(pipe.get())) != EOF;)
        text += static_cast<char>(c);
    return text;
}

class TapTest : public ::testing::Test {
  protected:
    TapTest() {
        testing::write_file(ini, "[COMMS CONTROLS]\r\nDEVICE 0 COMM PORT=1\r\n"
                                 "DEVICE 0 PORT SETTING=19200,N,8,1\r\nDEVICE 1 COMM PORT=2\r\n"
                                 "DEVICE 1 PORT SETTING=19200,N,8,1\r\n");
        app.session.config.gIniFile = ini;
        app.channels.init_comms();
        app.listen.Load();
        plug_in(tap);
    }
    /// The adapter is at this device now, and Start is chosen.
    void plug_in(const PtyPair& device) {
        ini_write_string("SERIAL DEVICES", "PORT 2", device.path(), ini);
        app.listen.ListenStart(1);
        EXPECT_TRUE(listening());
    }
    [[nodiscard]] bool listening() const { return app.session.listen.gListening; }
    void check_receive() {
        app.events.run([this] { app.session.listen.gListenDevice->check_receive(); });
    }
    /// The frame, once all of it is at the tap, becomes one burst.
    void hear(const std::string& frame) {
        tap.send(frame);
        const int line = app.session.listen.gListenDevice->CommID();
        for (int there = 0; there < static_cast<int>(frame.size());) {
            pollfd watched{line, POLLIN, 0};
            ASSERT_EQ(::poll(&watched, 1, 5000), 1);
            ::ioctl(line, FIONREAD, &there);
        }
        check_receive();
        frames.push_back(frame);
        ASSERT_EQ(app.listen.lst_CommsCommand.ListCount(), static_cast<int>(frames.size()));
        ASSERT_EQ(app.listen.traffic().bursts().back().bytes, frame);
    }

    testing::TempDir dir;
    const std::string ini = dir.file("pelvan7.ini");
    PtyPair tap{PtyPair::Slave::KeepOpen};
    testing::FakeTick tick;
    testing::FakeClock clock;
    testing::FakeDialogs dialogs;
    testing::FakeDesktop desktop;
    Application app{Services{tick, clock, dialogs, desktop, dir.path()}, open_serial_device};
    std::vector<std::string> frames; // heard so far
};

TEST_F(TapTest, ShowsAndPairsEveryFrameAndSavesWhatWiresharkReads) {
    const PtyPair master{PtyPair::Slave::KeepOpen};
    const testing::ModbusSlaveProcess slave(PELVAN_MODBUS_SLAVE, master.path());
    for (int i = 0; i < kExchanges && !HasFatalFailure(); ++i) {
        hear(request(i));
        master.send(request(i));
        const std::string reply = receive_reply(master);
        tick.advance(kReplyAfterMs);
        hear(reply);
    }
    EXPECT_EQ(tap.receive(1, 0), "") << "the monitor has sent something";
    EXPECT_TRUE(dialogs.shown.empty());
    const Traffic& traffic = app.listen.traffic();
    EXPECT_EQ(traffic.damaged(), 0);
    EXPECT_EQ(traffic.all().requests, kExchanges);
    EXPECT_EQ(traffic.all().exceptions, kExchanges / 6);
    EXPECT_EQ(traffic.all().reply.count, kExchanges);
    EXPECT_NEAR(traffic.all().reply.minimum, kReplyAfterMs + kQuietMs, 1);
    EXPECT_NEAR(traffic.all().reply.maximum, kReplyAfterMs + kQuietMs, 1);
    const std::string file = dir.file("line.pcapng");
    dialogs.files.emplace_back(file);
    app.listen.mnuSaveCapture.choose();
    if (output_of("tshark --version 2>/dev/null").empty()) GTEST_SKIP() << "no tshark here";
    std::string expected;
    for (const std::string& frame : frames) {
        for (const char c : testing::hex_of(frame))
            if (c != ' ') expected += static_cast<char>(std::tolower(c));
        const std::size_t function = byte_of(frame, 1);
        expected += "\tModbus RTU\t1\t" + std::to_string(function & 0x7F) + "\t" +
                    (function >= 0x80 ? std::to_string(byte_of(frame, 2)) : "") + "\n";
    }
    EXPECT_EQ(output_of("tshark -r " + file +
                        " -T fields -e exported_pdu.exported_pdu -e _ws.col.Protocol"
                        " -e mbrtu.unit_id -e modbus.func_code -e modbus.exception_code"
                        " 2>/dev/null"),
              expected);
}

TEST_F(TapTest, UnpluggedLineIsSaidAndStartWorksWhenItIsBack) {
    hear("head");
    tap.send("tail");
    tap.unplug();
    for (int i = 0; i < 3 && listening(); ++i)
        check_receive();
    EXPECT_FALSE(listening());
    EXPECT_EQ(dialogs.shown.size(), 1U);
    app.listen.ListenStart(1);
    EXPECT_FALSE(listening());
    PtyPair other;
    plug_in(other);
    app.listen.ListenStop();
    other.unplug(); // while nobody listens
    const PtyPair third;
    plug_in(third);
    EXPECT_EQ(dialogs.shown.size(), 2U) << "the loss and the start in vain, no more";
}

} // namespace
} // namespace pelvan
