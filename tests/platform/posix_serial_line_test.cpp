// The system's serial lines over real pseudo-terminals.
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/stat.h>

#include <cerrno>
#include <chrono>
#include <numeric>
#include <thread>

#include "platform/line_port.h"
#include "platform/posix_serial_error.h"
#include "support/error_of.h"
#include "support/pty_pair.h"
#include "support/temp_dir.h"

namespace pelvan {
namespace {

using testing::error_of;
using testing::PtyPair;
using testing::TempDir;

/// Polls until a condition holds; false when it does not come true for 5 s.
template <class Condition> bool comes_true(Condition condition) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(5);
    while (!condition())
        if (std::chrono::steady_clock::now() > end) return false;
    return true;
}

int open_error(const std::string& path) {
    return error_of([&] { static_cast<void>(open_serial_device(path, {})); });
}

TEST(PosixSerialLineTest, PassesEveryByteUnchanged) {
    const PtyPair pty;
    const auto line = open_serial_device(pty.path(), {});
    std::string bytes(256, '\0');
    std::iota(bytes.begin(), bytes.end(), '\0');
    pty.send(bytes);
    std::string received;
    EXPECT_TRUE(comes_true([&] {
        EXPECT_TRUE(line->read_into(received));
        return received.size() >= bytes.size();
    }));
    EXPECT_EQ(received, bytes);
    line->write(bytes);
    EXPECT_EQ(pty.receive(bytes.size()), bytes);
}

TEST(PosixSerialLineTest, ForgetsWhatCameBeforeTheOpeningAndWhatIsDiscarded) {
    const PtyPair pty(PtyPair::Slave::KeepOpen);
    const auto send = [&pty](const std::string& bytes) {
        pty.send(bytes);
        int count = 0;
        ASSERT_TRUE(
            comes_true([&] { return ::ioctl(pty.slave(), FIONREAD, &count) == 0 && count == 5; }));
    };
    send("stale");
    const auto line = open_serial_device(pty.path(), {});
    std::string received;
    EXPECT_TRUE(line->read_into(received));
    EXPECT_EQ(received, "");
    send("noise");
    line->discard_input();
    send("reply");
    EXPECT_TRUE(line->read_into(received));
    EXPECT_EQ(received, "reply");
}

TEST(PosixSerialLineTest, OpensPseudoTerminalsWithAnySettings) {
    const PtyPair pty;
    for (const char* text : {"9600,E,7,2", "115200,M,8,1", "12345,N,5,1.5"})
        EXPECT_EQ(error_of([&] {
                      // A line without modem wires takes no offence.
                      open_serial_device(pty.path(), *parse_line_settings(text))->set_rts(true);
                  }),
                  0)
            << text;
}

TEST(PosixSerialLineTest, RefusesWhatIsNoFreeSerialDevice) {
    const TempDir directory;
    testing::write_file(directory.file("file"), "");
    ASSERT_EQ(::mkfifo(directory.file("pipe").c_str(), 0600), 0);
    for (const std::string& path :
         {directory.file("missing"), directory.file("file"), directory.file("file/below"),
          directory.file("pipe"), directory.path(), std::string("/dev/null"),
          std::string(10'000, 'x'), std::string()})
        EXPECT_EQ(open_error(path), 8002) << path;
}

TEST(PosixSerialLineTest, FindsALockedDeviceInUseAndLeavesItFreeAfterwards) {
    const PtyPair pty(PtyPair::Slave::KeepOpen);
    ASSERT_EQ(::flock(pty.slave(), LOCK_EX), 0);
    EXPECT_EQ(open_error(pty.path()), 8005);
    ASSERT_EQ(::flock(pty.slave(), LOCK_UN), 0);
    {
        const auto line = open_serial_device(pty.path(), {});
        EXPECT_EQ(open_error(pty.path()), 8005);
    }
    EXPECT_EQ(open_error(pty.path()), 0);
}

TEST(PosixSerialLineTest, EndsAnOutputThatIsNotTaken) {
    PtyPair pty;
    LineSettings fast;
    fast.baud_rate = 4'000'000;
    const auto line = open_serial_device(pty.path(), fast);
    EXPECT_EQ(error_of([&] { line->write(std::string(20'000, 'x')); }), 57);
    std::string received;
    EXPECT_TRUE(line->read_into(received)); // stopped, not lost
    std::thread far_end([&pty] {
        static_cast<void>(pty.receive(1000));
        pty.unplug();
    });
    EXPECT_EQ(error_of([&] { line->write(std::string(1'000'000, 'x')); }), 57);
    far_end.join();
    EXPECT_FALSE(line->read_into(received));
}

TEST(PosixSerialPortTest, SurvivesThePlug) {
    auto pty = std::make_unique<PtyPair>();
    LinePort port([&pty](int) { return pty->path(); }, open_serial_device);
    const auto plug_in = [&] {
        pty = std::make_unique<PtyPair>();
        port.set_PortOpen(false);
        port.set_PortOpen(true);
    };
    plug_in();
    pty->send("rep");
    ASSERT_TRUE(comes_true([&] { return !port.Input().empty(); }));
    pty->unplug(); // while waiting for more
    EXPECT_EQ(port.InBufferCount(), 0);
    EXPECT_EQ(error_of([&] { static_cast<void>(port.InBufferCount()); }), 8020);
    plug_in();
    pty->unplug(); // while idle
    EXPECT_EQ(error_of([&] { port.set_InBufferCount(0); }), 57);
    plug_in();
    port.set_Output("!");
    EXPECT_EQ(pty->receive(1), "!");
}

TEST(SerialErrorTest, TurnsSystemErrorsIntoNumbers) {
    using enum SerialOperation;
    const std::vector<std::tuple<SerialOperation, std::vector<int>, int>> cases{
        {Open, {ENOENT, ENOTDIR, ELOOP, ENAMETOOLONG, EISDIR, ENOTTY}, 8002},
        {Open, {ENXIO, ENODEV}, 68},
        {Open, {EBUSY, EWOULDBLOCK}, 8005},
        {Open, {EACCES, EPERM, EIO}, 8010},
        {Open, {EMFILE, ENFILE, ENOMEM}, 57},
        {Settings, {EINVAL, EIO, ENOTTY}, 8015},
        {ModemLines, {EIO, ENODEV}, 57},
        {ModemLines, {ENOTTY, EINVAL}, 0},
        {Read, {EAGAIN}, 0},
        {Read, {EIO, ENXIO, ENODEV}, 8020},
        {Write, {EIO, ENXIO, ENODEV, EAGAIN}, 57},
    };
    for (const auto& [operation, errors, number] : cases)
        for (const int error : errors)
            EXPECT_EQ(serial_error_number(operation, error), number)
                << static_cast<int>(operation) << " " << error;
}

} // namespace
} // namespace pelvan
