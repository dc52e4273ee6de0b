// The system's serial lines over real pseudo-terminals.
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/wait.h>

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

std::string every_byte() {
    std::string bytes(256, '\0');
    std::iota(bytes.begin(), bytes.end(), '\0');
    return bytes;
}

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

/// Opens in a process without privileges; the error number, -1 when there is no such process.
int open_error_of_ordinary_user(const std::string& path) {
    int channel[2];
    if (::pipe(channel) != 0) return -1;
    const pid_t child = ::fork();
    if (child == 0) {
        int number = -1;
        if (::geteuid() != 0 || ::setuid(65534) == 0) number = open_error(path);
        static_cast<void>(::write(channel[1], &number, sizeof number) == 0);
        ::_exit(0);
    }
    int number = -1;
    ::close(channel[1]);
    if (::read(channel[0], &number, sizeof number) != sizeof number) number = -1;
    ::close(channel[0]);
    ::waitpid(child, nullptr, 0);
    return number;
}

TEST(PosixSerialLineTest, PassesEveryByteUnchanged) {
    const PtyPair pty;
    const auto line = open_serial_device(pty.path(), {});
    const std::string bytes = every_byte();
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
    const auto waiting = [&pty] {
        int count = 0;
        return ::ioctl(pty.slave(), FIONREAD, &count) == 0 && count == 5;
    };
    pty.send("stale");
    ASSERT_TRUE(comes_true(waiting));
    const auto line = open_serial_device(pty.path(), {});
    std::string received;
    EXPECT_TRUE(line->read_into(received));
    EXPECT_EQ(received, "");
    pty.send("noise");
    ASSERT_TRUE(comes_true(waiting));
    line->discard_input();
    pty.send("reply");
    EXPECT_TRUE(comes_true([&] { return !line->read_into(received) || received.size() >= 5; }));
    EXPECT_EQ(received, "reply");
}

TEST(PosixSerialLineTest, OpensPseudoTerminalsWithAnySettings) {
    const PtyPair pty;
    for (const char* text : {"9600,E,7,2", "115200,M,8,1", "12345,N,5,1.5"}) {
        const auto settings = parse_line_settings(text);
        ASSERT_TRUE(settings) << text;
        const auto line = open_serial_device(pty.path(), *settings);
        line->set_rts(true); // a line without modem wires takes no offence
        line->set_dtr(false);
    }
}

TEST(PosixSerialLineTest, RefusesWhatIsNoFreeSerialDevice) {
    const TempDir directory;
    testing::write_file(directory.file("file"), "");
    ASSERT_EQ(::mkfifo(directory.file("pipe").c_str(), 0600), 0);
    EXPECT_EQ(open_error(directory.file("missing")), 8002);
    EXPECT_EQ(open_error(directory.file("file")), 8002);
    EXPECT_EQ(open_error(directory.file("file/below")), 8002);
    EXPECT_EQ(open_error(directory.file("pipe")), 8002);
    EXPECT_EQ(open_error(directory.path()), 8002);
    EXPECT_EQ(open_error("/dev/null"), 8002);
    EXPECT_EQ(open_error(std::string(10'000, 'x')), 8002);
    EXPECT_EQ(open_error(""), 8002);
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

TEST(PosixSerialLineTest, RespectsPermissionAndExclusiveUse) {
    const PtyPair pty(PtyPair::Slave::KeepOpen);
    ASSERT_EQ(::chmod(pty.path().c_str(), 0666), 0);
    EXPECT_EQ(open_error_of_ordinary_user(pty.path()), 0);
    ASSERT_EQ(::ioctl(pty.slave(), TIOCEXCL), 0);
    EXPECT_EQ(open_error_of_ordinary_user(pty.path()), 8005);
    ASSERT_EQ(::ioctl(pty.slave(), TIOCNXCL), 0);
    ASSERT_EQ(::chmod(pty.path().c_str(), 0), 0);
    EXPECT_EQ(open_error_of_ordinary_user(pty.path()), 8010);
}

TEST(PosixSerialLineTest, EndsAnOutputThatTheLineDoesNotTake) {
    const PtyPair pty;
    LineSettings fast;
    fast.baud_rate = 4'000'000;
    const auto line = open_serial_device(pty.path(), fast);
    EXPECT_EQ(error_of([&] { line->write(std::string(20'000, 'x')); }), 57);
    std::string received;
    EXPECT_TRUE(line->read_into(received)); // stopped, not lost
}

TEST(PosixSerialLineTest, EndsAnOutputWhenThePlugIsPulled) {
    PtyPair pty;
    const auto line = open_serial_device(pty.path(), {});
    std::thread far_end([&pty] {
        static_cast<void>(pty.receive(1000));
        pty.unplug();
    });
    EXPECT_EQ(error_of([&] { line->write(std::string(1'000'000, 'x')); }), 57);
    far_end.join();
    std::string received;
    EXPECT_FALSE(line->read_into(received));
}

TEST(PosixSerialPortTest, CollectsAReplyInPiecesAndSurvivesThePlug) {
    auto pty = std::make_unique<PtyPair>();
    LinePort port([&pty](int) { return pty->path(); }, open_serial_device);
    port.set_PortOpen(true);
    EXPECT_GE(port.CommID(), 0);
    port.set_Output("?");
    EXPECT_EQ(pty->receive(1), "?");
    std::string reply;
    for (const char* piece : {"one", "two", "three"}) {
        pty->send(piece);
        ASSERT_TRUE(comes_true([&] { return port.InBufferCount() > 0; }));
        reply += port.Input();
    }
    EXPECT_TRUE(comes_true([&] { return (reply += port.Input()).size() >= 11; }));
    EXPECT_EQ(reply, "onetwothree");

    pty->unplug(); // while waiting for more
    EXPECT_EQ(port.InBufferCount(), 0);
    EXPECT_EQ(error_of([&] { static_cast<void>(port.InBufferCount()); }), 8020);
    EXPECT_EQ(error_of([&] { port.set_Output("?"); }), 57);

    pty = std::make_unique<PtyPair>();
    port.set_PortOpen(false);
    port.set_PortOpen(true);
    pty->unplug(); // while idle
    EXPECT_EQ(error_of([&] { port.set_InBufferCount(0); }), 57);
    EXPECT_EQ(port.CommID(), -1);

    pty = std::make_unique<PtyPair>();
    port.set_PortOpen(false);
    port.set_PortOpen(true);
    port.set_Output("!");
    EXPECT_EQ(pty->receive(1), "!");
}

TEST(SerialErrorTest, TurnsSystemErrorsIntoNumbers) {
    struct Case {
        SerialOperation operation;
        std::vector<int> errors;
        int number;
    };
    using enum SerialOperation;
    const std::vector<Case> cases{
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
    for (const Case& one : cases)
        for (const int error : one.errors)
            EXPECT_EQ(serial_error_number(one.operation, error), one.number)
                << static_cast<int>(one.operation) << " " << error;
}

} // namespace
} // namespace pelvan
