// The system's serial devices: lines over real pseudo-terminals, and what is found in /dev and
// /sys. What the program makes of a pulled plug is among the tests of listening.
#include <gtest/gtest.h>
#include <linux/serial.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <functional>
#include <map>
#include <numeric>
#include <thread>

#include "platform/linux_serial_devices.h"
#include "platform/linux_serial_error.h"
#include "platform/serial_line.h"
#include "platform/tick.h"
#include "support/error_of.h"
#include "support/pty_pair.h"
#include "support/temp_dir.h"

/// Answers the program's ioctl calls while it is set, for hardware that a test does not have: with
/// an errno value, 0 for success; nothing leaves the call to the system.
static std::function<std::optional<int>(unsigned long request, int* argument)> ioctl_answer;

// A definition in the program goes before the C library's.
extern "C" int ioctl(int descriptor, unsigned long request, ...) noexcept {
    va_list arguments;
    va_start(arguments, request);
    void* const argument = va_arg(arguments, void*);
    va_end(arguments);
    const auto answer =
        ioctl_answer ? ioctl_answer(request, static_cast<int*>(argument)) : std::nullopt;
    if (!answer) return static_cast<int>(::syscall(SYS_ioctl, descriptor, request, argument));
    errno = *answer;
    return *answer == 0 ? 0 : -1;
}

namespace pelvan::testing {

namespace fs = std::filesystem;

struct LinuxSerialLineTest : ::testing::Test {
    ~LinuxSerialLineTest() override { ioctl_answer = nullptr; }
    static int open_error(const std::string& path) {
        return error_of(open_serial_device, path, LineSettings{});
    }
    /// False when nothing arrives for 5 s.
    static bool arrives(int descriptor) {
        pollfd watched{descriptor, POLLIN, 0};
        return ::poll(&watched, 1, 5000) > 0;
    }
    PtyPair pty{PtyPair::Slave::KeepOpen};
};

TEST_F(LinuxSerialLineTest, PassesEveryByteUnchangedWithAnySettings) {
    std::string bytes(256, '\0');
    std::iota(bytes.begin(), bytes.end(), '\0');
    for (const char* text : {"9600,N,8,1", "9600,E,7,2", "115200,M,8,1", "12345,N,5,1.5"}) {
        const auto line = open_serial_device(pty.path(), parse_line_settings(text).value());
        line->set_rts(true); // a line without modem wires takes no offence
        pty.send(bytes);
        std::string received;
        while (received.size() < 256 && arrives(line->descriptor()))
            EXPECT_TRUE(line->read_into(received));
        EXPECT_EQ(received, bytes) << text;
        line->write(bytes);
        EXPECT_EQ(pty.receive(bytes.size()), bytes) << text;
    }
}

TEST_F(LinuxSerialLineTest, ForgetsWhatCameBeforeTheOpeningAndWhatIsDiscarded) {
    const auto send = [this](const std::string& bytes) {
        pty.send(bytes);
        EXPECT_TRUE(arrives(pty.slave()));
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

TEST_F(LinuxSerialLineTest, RefusesWhatIsNoFreeSerialDevice) {
    const TempDir directory;
    write_file(directory.file("file"), "");
    ASSERT_EQ(::mkfifo(directory.file("pipe").c_str(), 0600), 0);
    for (const char* name : {"missing", "file", "file/below", "pipe", ""})
        EXPECT_EQ(open_error(directory.file(name)), 8002) << name;
    for (const std::string& path : {std::string("/dev/null"), std::string(10'000, 'x'), {}})
        EXPECT_EQ(open_error(path), 8002) << path;

    ASSERT_EQ(::flock(pty.slave(), LOCK_EX), 0);
    EXPECT_EQ(open_error(pty.path()), 8005) << "locked";
    ASSERT_EQ(::flock(pty.slave(), LOCK_UN), 0);
    {
        const auto line = open_serial_device(pty.path(), {});
        EXPECT_EQ(open_error(pty.path()), 8005);
    }
    EXPECT_EQ(open_error(pty.path()), 0) << "free afterwards";
    const LineSettings other_parity{.parity = 'E', .foreign_parity = true};
    EXPECT_EQ(error_of(open_serial_device, pty.path(), other_parity), 8015) << "it has none";
}

TEST_F(LinuxSerialLineTest, EndsAnOutputThatIsNotTaken) {
    PtyPair wire;
    const auto line = open_serial_device(wire.path(), {.baud_rate = 4'000'000});
    EXPECT_EQ(error_of(&SerialLine::write, line, std::string(20'000, 'x')), 57);
    std::string received;
    EXPECT_TRUE(line->read_into(received)); // stopped, not lost
    std::thread far_end([&wire] {
        static_cast<void>(wire.receive(1000));
        wire.unplug();
    });
    EXPECT_EQ(error_of(&SerialLine::write, line, std::string(1'000'000, 'x')), 57);
    far_end.join();
    EXPECT_FALSE(line->read_into(received));
    EXPECT_EQ(error_of(&SerialLine::discard_input, line), 57);
}

TEST_F(LinuxSerialLineTest, DrivesModemLinesAndTellsMissingOnesFromLostOnes) {
    std::string calls;
    int failure = 0;
    ioctl_answer = [&](unsigned long request, int* wires) -> std::optional<int> {
        const std::map<unsigned long, std::string> names{
            {TIOCMGET, "get"}, {TIOCMSET, "set"}, {TIOCMBIS, "raise"}, {TIOCMBIC, "drop"}};
        if (!names.contains(request)) return std::nullopt;
        if (request == TIOCMGET) *wires = TIOCM_DTR | TIOCM_CTS;
        calls += names.at(request) + (*wires & TIOCM_DTR ? " DTR" : "") +
                 (*wires & TIOCM_RTS ? " RTS" : "") + (*wires & TIOCM_CTS ? " CTS; " : "; ");
        return failure;
    };
    const auto line = open_serial_device(pty.path(), {.rts = true});
    line->set_dtr(true);
    line->set_rts(false);
    EXPECT_EQ(calls, "get DTR CTS; set RTS CTS; raise DTR; drop RTS; ");
    failure = EIO;
    EXPECT_EQ(error_of(&SerialLine::set_rts, line, true), 57);
    EXPECT_EQ(open_error(pty.path()), 8005) << "still locked";
    failure = ENOTTY;
    line->set_rts(true);
    calls.clear();
    line->set_rts(true);
    EXPECT_EQ(calls, "") << "a line without wires is asked once";
}

TEST_F(LinuxSerialLineTest, AsksForLowLatencyAndPutsBackWhatItChanged) {
    for (const int found : {0, int{ASYNC_LOW_LATENCY}, int{ASYNC_SPD_HI}}) {
        int flags = found;
        int refusal = 0;
        std::string calls;
        ioctl_answer = [&](unsigned long request, int* argument) -> std::optional<int> {
            auto* const driver = reinterpret_cast<serial_struct*>(argument);
            if (request == TIOCGSERIAL) driver->flags = flags;
            if (request == TIOCSSERIAL && refusal == 0) flags = driver->flags;
            if (request == TIOCGSERIAL) return 0;
            if (request != TIOCSSERIAL) return std::nullopt;
            calls += "set ";
            return refusal;
        };
        {
            const auto line = open_serial_device(pty.path(), {});
            EXPECT_EQ(flags, found | int{ASYNC_LOW_LATENCY});
        }
        EXPECT_EQ(flags, found);
        refusal = EPERM;
        calls.clear();
        EXPECT_EQ(open_error(pty.path()), 0);
        EXPECT_EQ(calls, found == int{ASYNC_LOW_LATENCY} ? "" : "set ") << "nothing to put back";
    }
}

TEST_F(LinuxSerialLineTest, CountsTheHardwaresErrorsFromTheOpeningOn) {
    EXPECT_EQ(open_serial_device(pty.path(), {})->errors(), std::nullopt) << "nobody counts";
    int since = 0;
    ioctl_answer = [&](unsigned long request, int* argument) -> std::optional<int> {
        if (request != TIOCGICOUNT) return std::nullopt;
        auto* const counts = reinterpret_cast<serial_icounter_struct*>(argument);
        counts->parity = 7 + 2 * since;
        counts->frame = 1000 + since;
        counts->overrun = 5;
        counts->brk = 3 * since;
        return 0;
    };
    const auto line = open_serial_device(pty.path(), {});
    EXPECT_EQ(line_errors_text(line->errors().value()), "no line errors");
    since = 1;
    EXPECT_EQ(line_errors_text(line->errors().value()),
              "line errors: 2 parity, 1 framing, 3 break");
}

TEST_F(LinuxSerialLineTest, AWaitEndsWithBytesWithTheTimeAndWithTheLine) {
    const auto line = open_serial_device(pty.path(), {});
    const auto clock = make_system_tick();
    const auto waits_ms = [&](double timeout_ms) {
        const double begun = clock->precise_ms();
        line->wait_for_input(timeout_ms);
        return clock->precise_ms() - begun;
    };
    EXPECT_GE(waits_ms(2.5), 2.5);
    EXPECT_LT(waits_ms(-1), 5000);
    pty.send("x");
    EXPECT_LT(waits_ms(60'000), 5000);
    std::string received;
    EXPECT_TRUE(line->read_into(received));
    pty.unplug();
    EXPECT_LT(waits_ms(60'000), 5000);
}

TEST_F(LinuxSerialLineTest, TurnsFailuresOfTheHardwareIntoNumbers) {
    // Attributes are got and set with a structure of the kernel's own headers; these are the low
    // halves of the requests.
    constexpr unsigned kGetAttributes = 0x542A, kSetAttributes = 0x542B;
    const std::tuple<unsigned, int, int> hardware[] = {
        {kGetAttributes, EIO, 8010}, // no chip behind the node
        {kSetAttributes, EINVAL, 8015},
        {TIOCMGET, EIO, 57},
        {TIOCMGET, EINVAL, 0}};
    for (const auto& [failing, error, number] : hardware) {
        ioctl_answer = [failing = failing, error = error](unsigned long request, int*) {
            return (request & 0xFFFFU) == failing ? std::optional(error) : std::nullopt;
        };
        EXPECT_EQ(open_error(pty.path()), number) << failing << " " << error;
    }
    // Those that no request of the tests here meets.
    using enum SerialOperation;
    const std::tuple<SerialOperation, std::vector<int>, int> others[] = {
        {Open, {ELOOP, EISDIR}, 8002},      {Open, {ENXIO, ENODEV}, 68},
        {Open, {EACCES, EPERM, EIO}, 8010}, {Open, {EMFILE, ENFILE, ENOMEM}, 57},
        {Settings, {EIO, ENOTTY}, 8015},    {ModemLines, {ENODEV}, 57},
        {Read, {ENXIO, ENODEV}, 8020}};
    for (const auto& [operation, errors, number] : others)
        for (const int error : errors)
            EXPECT_EQ(serial_error_number(operation, error), number) << error;
}

/// Trees below a directory of their own that look like /dev and /sys.
struct SerialDevicesTest : ::testing::Test {
    /// A file of the trees, with the directories above it.
    void add(const std::string& name, const std::string& text = {}) const {
        fs::create_directories(fs::path(directory.file(name)).parent_path());
        write_file(directory.file(name), text);
    }
    void link(const std::string& name, const std::string& target) const {
        fs::create_directories(fs::path(directory.file(name)).parent_path());
        fs::create_symlink(target, directory.file(name));
    }

    TempDir directory;
    DeviceRoots roots{directory.file("dev"), directory.file("sys")};
};

TEST_F(SerialDevicesTest, ListsWhatHasHardwareBehindIt) {
    for (const std::string name :
         {"ttyS0", "ttyS1", "ttyS10", "ttyS2", "ttyS16", "ttyUSB0", "tty1", "ttyUSBx"}) {
        add("dev/" + name);
        add("sys/class/tty/" + name + "/type", name == "ttyS1" ? "0\n" : "4\n");
    }
    add("sys/class/tty/ttyUSB7/type"); // without a node
    add("sys/devices/usb1/1-1/manufacturer", "Cable Works\n");
    add("sys/devices/usb1/1-1/product", "Adapter\n");
    const std::string timer = "sys/devices/usb1/1-1/1-1:1.0/latency_timer";
    add(timer);
    link("sys/class/tty/ttyUSB0/device", "../../../devices/usb1/1-1/1-1:1.0");
    link("dev/serial/by-id/usb-Adapter-port0", "../../ttyUSB0");
    link("dev/serial/by-id/dangling", "../../ttyUSB9");

    std::string listed;
    for (const SerialDevice& device : list_serial_devices(roots))
        listed += device.path.substr(roots.dev.size()) + "=" +
                  device.node.substr(roots.dev.size()) + " " + device.description + ";";
    EXPECT_EQ(listed, "/serial/by-id/usb-Adapter-port0=/ttyUSB0 Cable Works Adapter;"
                      "/ttyS0=/ttyS0 ;/ttyS2=/ttyS2 ;/ttyS10=/ttyS10 ;/ttyS16=/ttyS16 ;");
    const std::string adapter = roots.dev + "/serial/by-id/usb-Adapter-port0";
    for (const auto& [text, ms] : {std::pair{"", -1}, {"16\n", 16}, {"x\n", -1}, {"999\n", -1}}) {
        add(timer, text);
        EXPECT_EQ(latency_timer_ms(adapter, roots).value_or(-1), ms) << text;
    }
    EXPECT_TRUE(list_serial_devices({"/nowhere", "/nowhere"}).empty());

    EXPECT_EQ(built_in_device(1, roots), roots.dev + "/ttyS0");
    EXPECT_EQ(built_in_device(11, roots), roots.dev + "/ttyS10");
    for (const int number : {-1, 0, 2, 4, 17})
        EXPECT_FALSE(built_in_device(number, roots)) << number;
}

TEST_F(SerialDevicesTest, ProbesWithoutOpening) {
    add("dev/file");
    EXPECT_EQ(probe_device(roots.dev + "/missing", roots), DeviceState::Missing);
    EXPECT_EQ(probe_device(roots.dev + "/file", roots), DeviceState::NotSerial);
    EXPECT_EQ(probe_device(PtyPair().path(), roots), DeviceState::Openable);

    // Memory devices stand for ports: what they are, is told by the tree alone.
    const std::tuple<const char*, std::string, std::string, const char*, DeviceState> nodes[] = {
        {"/dev/null", "1:3", "mem", "", DeviceState::NotSerial},
        {"/dev/zero", "1:5", "tty", "0\n", DeviceState::NoHardware},
        {"/dev/full", "1:7", "tty", "4\n", DeviceState::Openable}};
    for (const auto& [node, number, kind, type, state] : nodes) {
        const std::string entry = "sys/dev/char/" + number;
        add(entry + "/type", type);
        fs::create_directories(roots.sys + "/class/" + kind);
        link(entry + "/subsystem", "../../../class/" + kind);
        EXPECT_EQ(probe_device(node, roots), state) << node;
    }
}

TEST_F(SerialDevicesTest, NamesTheGroupToJoin) {
    add("port");
    const std::string path = directory.file("port");
    EXPECT_EQ(device_state_text(DeviceState::Missing, path), "not there");
    if (::geteuid() != 0 || ::chown(path.c_str(), 0, 20) != 0)
        GTEST_SKIP() << "only root may give a file to group dialout";
    ASSERT_EQ(::chmod(path.c_str(), 0660), 0);
    const auto text = [&] { return device_state_text(DeviceState::NoPermission, path); };
    EXPECT_EQ(text(), "no permission: join group dialout (sudo usermod -aG dialout root), then log "
                      "in again");
    ASSERT_EQ(::chmod(path.c_str(), 0600), 0);
    EXPECT_EQ(text(), "no permission");
}

} // namespace pelvan::testing
