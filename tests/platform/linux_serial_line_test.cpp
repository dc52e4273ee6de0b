// The system's serial lines over real pseudo-terminals. What the program makes of a pulled plug is
// among the tests of listening.
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/stat.h>

#include <cerrno>
#include <chrono>
#include <numeric>
#include <thread>

#include "platform/linux_serial_error.h"
#include "platform/serial_line.h"
#include "platform/system_calls.h"
#include "support/error_of.h"
#include "support/pty_pair.h"
#include "support/temp_dir.h"

namespace pelvan {
namespace {

using testing::error_of;
using testing::PtyPair;
using testing::TempDir;
using Texts = std::vector<std::string>;

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

TEST(LinuxSerialLineTest, PassesEveryByteUnchangedWithAnySettings) {
    const PtyPair pty;
    std::string bytes(256, '\0');
    std::iota(bytes.begin(), bytes.end(), '\0');
    for (const char* text : {"9600,N,8,1", "9600,E,7,2", "115200,M,8,1", "12345,N,5,1.5"}) {
        const auto line = open_serial_device(pty.path(), parse_line_settings(text).value());
        line->set_rts(true); // a line without modem wires takes no offence
        pty.send(bytes);
        std::string received;
        EXPECT_TRUE(
            comes_true([&] { return !line->read_into(received) || received.size() >= 256; }));
        EXPECT_EQ(received, bytes) << text;
        line->write(bytes);
        EXPECT_EQ(pty.receive(bytes.size()), bytes) << text;
    }
}

TEST(LinuxSerialLineTest, ForgetsWhatCameBeforeTheOpeningAndWhatIsDiscarded) {
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

TEST(LinuxSerialLineTest, RefusesWhatIsNoFreeSerialDevice) {
    const TempDir directory;
    testing::write_file(directory.file("file"), "");
    ASSERT_EQ(::mkfifo(directory.file("pipe").c_str(), 0600), 0);
    for (const std::string& path :
         {directory.file("missing"), directory.file("file"), directory.file("file/below"),
          directory.file("pipe"), directory.path(), std::string("/dev/null"),
          std::string(10'000, 'x'), std::string()})
        EXPECT_EQ(open_error(path), 8002) << path;
}

TEST(LinuxSerialLineTest, FindsALockedDeviceInUseAndLeavesItFreeAfterwards) {
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

TEST(LinuxSerialLineTest, EndsAnOutputThatIsNotTaken) {
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
    EXPECT_EQ(error_of([&] { line->discard_input(); }), 57);
}

/// Of the requests that need a structure of the kernel's own headers.
bool is_terminal_request(unsigned long request, unsigned number) {
    return _IOC_TYPE(request) == 'T' && _IOC_NR(request) == number;
}
constexpr unsigned kGetAttributes = 0x2A;
constexpr unsigned kSetAttributes = 0x2B;

TEST(LinuxSerialLineTest, DrivesModemLinesAndTellsMissingOnesFromLostOnes) {
    const PtyPair pty;
    Texts calls;
    int failure = 0;
    const testing::IoctlAnswers answers(
        [&](unsigned long request, int* wires) -> std::optional<int> {
            if (request == TIOCMGET) *wires = TIOCM_DTR | TIOCM_CTS;
            const std::pair<unsigned long, std::string> known[] = {
                {TIOCMGET, "get"}, {TIOCMSET, "set"}, {TIOCMBIS, "raise"}, {TIOCMBIC, "drop"}};
            for (const auto& [number, name] : known) {
                if (request != number) continue;
                calls.push_back(name + (*wires & TIOCM_DTR ? " DTR" : "") +
                                (*wires & TIOCM_RTS ? " RTS" : "") +
                                (*wires & TIOCM_CTS ? " CTS" : ""));
                errno = failure;
                return failure == 0 ? 0 : -1;
            }
            return std::nullopt;
        });
    LineSettings settings;
    settings.rts = true;
    const auto line = open_serial_device(pty.path(), settings);
    line->set_dtr(true);
    line->set_rts(false);
    EXPECT_EQ(calls, (Texts{"get DTR CTS", "set RTS CTS", "raise DTR", "drop RTS"}));
    failure = EIO;
    EXPECT_EQ(error_of([&] { line->set_rts(true); }), 57);
    EXPECT_EQ(open_error(pty.path()), 8005) << "still locked";
    failure = ENOTTY;
    line->set_rts(true);
    const auto asked = calls.size();
    line->set_rts(true);
    EXPECT_EQ(calls.size(), asked) << "a line without wires is asked once";
}

TEST(LinuxSerialLineTest, TurnsFailuresOfTheHardwareIntoNumbers) {
    const PtyPair pty;
    struct Case {
        std::function<bool(unsigned long)> request;
        int errno_value;
        int number;
    };
    const auto is = [](unsigned long wanted) {
        return [wanted](unsigned long request) { return request == wanted; };
    };
    const auto terminal = [](unsigned number) {
        return [number](unsigned long request) { return is_terminal_request(request, number); };
    };
    for (const Case& one : {Case{terminal(kGetAttributes), EIO, 8010}, // no chip behind the node
                            Case{terminal(kSetAttributes), EINVAL, 8015},
                            Case{is(TIOCMGET), EIO, 57}, Case{is(TIOCMGET), EINVAL, 0}}) {
        const testing::IoctlAnswers failing([&](unsigned long request, int*) -> std::optional<int> {
            if (!one.request(request)) return std::nullopt;
            errno = one.errno_value;
            return -1;
        });
        EXPECT_EQ(open_error(pty.path()), one.number) << one.errno_value;
    }
}

/// Those that no request of the tests above meets.
TEST(SerialErrorTest, TurnsSystemErrorsIntoNumbers) {
    using enum SerialOperation;
    const std::vector<std::tuple<SerialOperation, std::vector<int>, int>> cases{
        {Open, {ELOOP, EISDIR}, 8002},      {Open, {ENXIO, ENODEV}, 68},
        {Open, {EACCES, EPERM, EIO}, 8010}, {Open, {EMFILE, ENFILE, ENOMEM}, 57},
        {Settings, {EIO, ENOTTY}, 8015},    {ModemLines, {ENODEV}, 57},
        {Read, {ENXIO, ENODEV}, 8020},
    };
    for (const auto& [operation, errors, number] : cases)
        for (const int error : errors)
            EXPECT_EQ(serial_error_number(operation, error), number) << error;
}

} // namespace
} // namespace pelvan
