// The monitor at a tap between a master and a slave that is not ours (built on libmodbus), over
// pseudo-terminals. The program's time is a fake tick, so that quiet pauses take no real time.
#include <gtest/gtest.h>
#include <sys/ioctl.h>

#include "support/frames.h"
#include "support/modbus_slave.h"
#include "support/simulated_program.h"

namespace pelvan {
namespace {

using testing::PtyPair;

constexpr int kRounds = 25;
constexpr int kReplyAfterMs = 25;
constexpr int kQuietMs = 8; // four settle times of 9600 baud, in which the line waits

std::size_t byte_of(const std::string& bytes, std::size_t at) {
    return static_cast<unsigned char>(bytes.at(at));
}

/// Reads and writes of several lengths, and a register that is not there.
const std::vector<std::string> kRequests{
    testing::frame("01 03 00 00 00 01"),          testing::frame("01 03 00 62 00 04"),
    testing::frame("01 04 00 09 00 11"),          testing::frame("01 01 00 00 00 11"),
    testing::frame("01 02 00 00 00 09"),          testing::frame("01 06 00 07 FF FE"),
    testing::frame("01 10 00 07 00 01 02 00 01"), testing::frame("01 03 07 D0 00 01")};

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
        app.listen.Load();
        plug_in(tap);
    }
    /// The adapter is at this device now, and Start is chosen.
    void plug_in(const PtyPair& device) {
        ini_write_string("SERIAL DEVICES", "PORT 2", device.path(), app.session.config.gIniFile);
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

    PtyPair tap{PtyPair::Slave::KeepOpen};
    testing::SimulatedProgram rig{
        {"simulated:loopback", tap.path()}, protocol::kModbus, open_serial_device};
    Application& app = rig.app;
    std::vector<std::string> frames; // heard so far
};

TEST_F(TapTest, ShowsAndPairsEveryFrameAndSavesWhatWiresharkReads) {
    const PtyPair master{PtyPair::Slave::KeepOpen};
    const testing::ModbusSlaveProcess slave(PELVAN_MODBUS_SLAVE, master.path());
    for (int round = 0; round < kRounds && !HasFatalFailure(); ++round)
        for (const std::string& request : kRequests) {
            hear(request);
            master.send(request);
            const std::string reply = receive_reply(master);
            rig.tick.advance(kReplyAfterMs);
            hear(reply);
        }
    const int exchanges = kRounds * static_cast<int>(kRequests.size());
    EXPECT_EQ(tap.receive(1, 0), "") << "the monitor has sent something";
    EXPECT_TRUE(rig.dialogs.shown.empty());
    const Traffic& traffic = app.listen.traffic();
    EXPECT_EQ(traffic.damaged(), 0);
    EXPECT_EQ(traffic.all().requests, exchanges);
    EXPECT_EQ(traffic.all().exceptions, kRounds);
    EXPECT_EQ(traffic.all().reply.count, exchanges);
    EXPECT_NEAR(traffic.all().reply.minimum, kReplyAfterMs + kQuietMs, 1);
    EXPECT_NEAR(traffic.all().reply.maximum, kReplyAfterMs + kQuietMs, 1);
    const std::string file = rig.dir.file("line.pcapng");
    rig.dialogs.files.emplace_back(file);
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
    EXPECT_EQ(rig.dialogs.shown.size(), 1U);
    app.listen.ListenStart(1);
    EXPECT_FALSE(listening());
    PtyPair other;
    plug_in(other);
    app.listen.ListenStop();
    other.unplug(); // while nobody listens
    const PtyPair third;
    plug_in(third);
    EXPECT_EQ(rig.dialogs.shown.size(), 2U) << "the loss and the start in vain, no more";
}

} // namespace
} // namespace pelvan
