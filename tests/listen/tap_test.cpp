// The monitor at a tap between a master and a slave built on libmodbus, all three over
// pseudo-terminals. A relay carries the frames; what it writes to the tap is what the monitor must
// show. The program's time is a fake tick, so that quiet pauses take no real time.
#include <gtest/gtest.h>
#include <modbus.h>
#include <sys/ioctl.h>

#include <numeric>
#include <thread>

#include "app/application.h"
#include "support/fake_dialogs.h"
#include "support/fake_time.h"
#include "support/frames.h"
#include "support/modbus_slave.h"
#include "support/temp_dir.h"

namespace pelvan {
namespace {

using testing::PtyPair;

constexpr int kExchanges = 1000;
constexpr int kItems = 200;
constexpr int kReplyAfterMs = 25;
constexpr int kQuietMs = 4; // four settle times of 19200 baud, in which the relay waits

std::shared_ptr<modbus_t> connect(const PtyPair& line) {
    std::shared_ptr<modbus_t> context(modbus_new_rtu(line.path().c_str(), 19200, 'N', 8, 1),
                                      [](modbus_t* gone) {
                                          modbus_close(gone);
                                          modbus_free(gone);
                                      });
    if (modbus_set_slave(context.get(), 1) != 0 || modbus_connect(context.get()) != 0)
        throw std::runtime_error(modbus_strerror(errno));
    modbus_set_response_timeout(context.get(), 20, 0);
    return context;
}

/// Exchange `i` of the master: reads, writes, and now and then a register that is not there.
void exchange(modbus_t* master, int i) {
    std::uint16_t words[kItems] = {};
    std::uint8_t bits[kItems] = {};
    const int count = 1 + i % 17;
    std::iota(std::begin(words), std::end(words), static_cast<std::uint16_t>(7 * i));
    switch (i % 6) {
    case 0:
        modbus_read_registers(master, i % 100, count, words);
        break;
    case 1:
        modbus_read_input_registers(master, i % 90, count, words);
        break;
    case 2:
        modbus_write_register(master, i % 100, static_cast<std::uint16_t>(i));
        break;
    case 3:
        modbus_write_registers(master, i % 90, count, words);
        break;
    case 4:
        modbus_read_bits(master, i % 90, count, bits);
        break;
    default:
        modbus_read_registers(master, 10 * kItems, 1, words);
    }
}

std::size_t byte_of(const std::string& bytes, std::size_t at) {
    return static_cast<unsigned char>(bytes.at(at));
}

std::string receive_request(const PtyPair& from) {
    const std::string head = from.receive(7);
    const std::size_t length = byte_of(head, 1) == 16 ? 9 + byte_of(head, 6) : 8;
    return head + from.receive(length - head.size());
}

std::string receive_reply(const PtyPair& from) {
    const std::string head = from.receive(5);
    const std::size_t function = byte_of(head, 1);
    if (function >= 0x80) return head;
    return head + from.receive(function <= 4 ? byte_of(head, 2) : 3);
}

/// The frame in hexadecimal or decimal, made from the layout alone: a letter an item, byte or word.
std::string rendered(const std::string& frame, bool hex, const std::string& layout) {
    std::string text;
    std::size_t at = 0;
    for (const char item : layout + "bb") {
        std::size_t value = byte_of(frame, at++);
        if (item == 'w') value = 256 * value + byte_of(frame, at++);
        text += (hex ? hex_text(value, item == 'w' ? 4 : 2) : std::to_string(value)) + " ";
    }
    EXPECT_EQ(at, frame.size());
    return text;
}

std::string request_in_decimal(const std::string& frame) {
    const bool writes_many = byte_of(frame, 1) == 16;
    return rendered(frame, false,
                    writes_many ? "bbwwb" + std::string((frame.size() - 9) / 2, 'w') : "bbww");
}

std::string reply_in_hex(const std::string& frame) {
    const std::size_t function = byte_of(frame, 1);
    const std::size_t body = frame.size() - 2;
    if (function == 3 || function == 4)
        return rendered(frame, true, "bbb" + std::string((body - 3) / 2, 'w'));
    return rendered(frame, true, function == 6 || function == 16 ? "bbww" : std::string(body, 'b'));
}

/// The lines that a command prints; nothing when the program is not installed.
std::vector<std::string> output_of(const std::string& command) {
    std::vector<std::string> lines;
    const std::unique_ptr<FILE, int (*)(FILE*)> pipe(::popen(command.c_str(), "r"), ::pclose);
    char line[2048];
    while (pipe && std::fgets(line, sizeof line, pipe.get()))
        lines.emplace_back(line);
    return lines;
}

class TapTest : public ::testing::Test {
  protected:
    TapTest() {
        testing::write_file(dir.file("pelvan7.ini"),
                            "[COMMS CONTROLS]\r\nDEVICE 0 COMM PORT=1\r\n"
                            "DEVICE 0 PORT SETTING=19200,N,8,1\r\nDEVICE 0 RTS Mode=1\r\n"
                            "DEVICE 1 COMM PORT=2\r\nDEVICE 1 PORT SETTING=19200,N,8,1\r\n"
                            "DEVICE 1 RTS Mode=1\r\n[SERIAL DEVICES]\r\nPORT 2=" +
                                tap.path() + "\r\n");
        app.session.config.gIniFile = dir.file("pelvan7.ini");
        app.channels.init_comms();
        app.listen.Load();
        app.listen.ListenStart(1);
    }

    /// The tap hears the frame, `direction` and `format` being chosen, and shows it so.
    void hear(const std::string& frame, int direction, int format, const std::string& expected) {
        app.listen.opt_DataDirection.set_Value(direction);
        app.listen.opt_DataFormat.set_Value(format);
        tap.send(frame);
        SerialPort& port = *app.session.listen.gListenDevice;
        int there = 0;
        while (there < static_cast<int>(frame.size())) {
            pollfd watched{port.CommID(), POLLIN, 0};
            ASSERT_EQ(::poll(&watched, 1, 5000), 1);
            ::ioctl(port.CommID(), FIONREAD, &there);
        }
        app.events.run([&] { port.check_receive(); });
        frames.push_back(frame);
        const ListBox& list = app.listen.lst_CommsCommand;
        ASSERT_EQ(list.ListCount(), static_cast<int>(frames.size()));
        ASSERT_EQ(list.List(list.ListCount() - 1), expected);
    }

    /// Carries all exchanges between the two, each frame heard on its way.
    void relay() {
        const auto master = connect(to_master);
        const testing::ModbusSlaveProcess slave(PELVAN_MODBUS_SLAVE, to_slave.path());
        std::thread mastering([&] {
            for (int i = 0; i < kExchanges; ++i)
                exchange(master.get(), i);
        });
        for (int i = 0; i < kExchanges && !HasFatalFailure(); ++i) {
            const std::string request = receive_request(to_master);
            ++functions[static_cast<int>(byte_of(request, 1))];
            hear(request, 0, 0, request_in_decimal(request));
            to_slave.send(request);
            const std::string reply = receive_reply(to_slave);
            tick.advance(kReplyAfterMs);
            hear(reply, 1, 1, reply_in_hex(reply));
            to_master.send(reply);
        }
        mastering.join();
    }

    testing::TempDir dir;
    PtyPair tap{PtyPair::Slave::KeepOpen};
    PtyPair to_master{PtyPair::Slave::KeepOpen};
    PtyPair to_slave{PtyPair::Slave::KeepOpen};
    testing::FakeTick tick;
    testing::FakeClock clock;
    testing::FakeDialogs dialogs;
    testing::FakeDesktop desktop;
    Application app{Services{tick, clock, dialogs, desktop, dir.path()}, open_serial_device};
    std::vector<std::string> frames; // heard so far
    std::map<int, long> functions;
};

TEST_F(TapTest, ShowsAndPairsEveryFrameAndSavesWhatWiresharkReads) {
    relay();
    EXPECT_EQ(tap.receive(1, 0), "") << "the monitor has sent something";
    EXPECT_EQ(app.listen.txt_HitCount.Text(), std::to_string(2 * kExchanges));
    EXPECT_TRUE(dialogs.shown.empty());
    const Traffic& traffic = app.listen.traffic();
    EXPECT_EQ(traffic.damaged(), 0);
    EXPECT_EQ(traffic.all().exceptions, kExchanges / 6);
    EXPECT_EQ(traffic.all().reply.count, kExchanges);
    EXPECT_NEAR(traffic.all().reply.minimum, kReplyAfterMs + kQuietMs, 1);
    EXPECT_NEAR(traffic.all().reply.maximum, kReplyAfterMs + kQuietMs, 1);
    EXPECT_EQ(traffic.by_address().at(1).requests, kExchanges);
    for (const auto& [function, count] : functions) {
        EXPECT_EQ(traffic.by_function().at(function).requests, count) << function;
        EXPECT_EQ(traffic.by_function().at(function).replies, count) << function;
    }
    const std::string file = dir.file("line.pcapng");
    dialogs.files.emplace_back(file);
    app.listen.mnuSaveCapture.choose();
    if (output_of("tshark --version 2>/dev/null").empty()) GTEST_SKIP() << "no tshark here";
    const auto packets = output_of("tshark -r " + file +
                                   " -T fields -e exported_pdu.exported_pdu"
                                   " -e _ws.col.Protocol -e mbrtu.unit_id -e modbus.func_code"
                                   " -e modbus.exception_code 2>/dev/null");
    ASSERT_EQ(packets.size(), frames.size());
    for (std::size_t i = 0; i < frames.size(); ++i) {
        std::string expected;
        for (const char c : testing::hex_of(frames[i]))
            if (c != ' ') expected += static_cast<char>(std::tolower(c));
        const std::size_t function = byte_of(frames[i], 1);
        expected += "\tModbus RTU\t1\t" + std::to_string(function & 0x7F) + "\t";
        if (function >= 0x80) expected += std::to_string(byte_of(frames[i], 2));
        ASSERT_EQ(packets[i], expected + "\n") << i;
    }
}

TEST_F(TapTest, UnpluggedLineIsSaidAndStartWorksWhenItIsBack) {
    hear("head", 0, 0, "head");
    PtyPair other;
    tap.send("tail");
    tap.unplug();
    SerialPort& port = *app.session.listen.gListenDevice;
    for (int i = 0; i < 3 && app.session.listen.gListening; ++i)
        app.events.run([&] { port.check_receive(); });
    EXPECT_FALSE(app.session.listen.gListening);
    EXPECT_EQ(dialogs.shown.size(), 1U);
    app.listen.ListenStart(1);
    EXPECT_FALSE(app.session.listen.gListening);
    ini_write_string("SERIAL DEVICES", "PORT 2", other.path(), app.session.config.gIniFile);
    app.listen.ListenStart(1);
    EXPECT_TRUE(app.session.listen.gListening);
    // The same once more while nobody listens.
    app.listen.ListenStop();
    other.unplug();
    const PtyPair third;
    ini_write_string("SERIAL DEVICES", "PORT 2", third.path(), app.session.config.gIniFile);
    app.listen.ListenStart(1);
    EXPECT_TRUE(app.session.listen.gListening);
    EXPECT_EQ(dialogs.shown.size(), 2U) << "the loss and the start in vain, no more";
}

} // namespace
} // namespace pelvan
