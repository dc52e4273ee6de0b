// Serial devices of Linux. The kernel's own termios2 calls are used instead of the C library's:
// they take any baud rate, and the library refuses settings that a pseudo-terminal does not take
// over.
#include <asm/termbits.h>
#include <fcntl.h>
#include <linux/serial.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cmath>

#include "platform/linux_serial_error.h"
#include "platform/run_time_error.h"
#include "platform/serial_line.h"
#include "platform/uninterrupted.h"

namespace pelvan {
namespace {

constexpr std::chrono::seconds kWriteGrace{2}; // beyond the wire time of the bytes
constexpr int kWritePollMs = 10;
constexpr double kSpeedTolerance = 0.03;
constexpr unsigned char kXon = 0x11;
constexpr unsigned char kXoff = 0x13;
constexpr double kShortWaitMs = 10;
constexpr int kReadsPerCall = 16; // a line that never falls silent must not hold its reader
constexpr int kLowLatency{ASYNC_LOW_LATENCY};
constexpr unsigned kFirstPtyMajor = 136;
constexpr unsigned kLastPtyMajor = 143;
constexpr tcflag_t kCharacterFormat = CSIZE | PARENB | PARODD | CMSPAR | CSTOPB;

class Descriptor {
  public:
    explicit Descriptor(int number) : number_(number) {}
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() {
        if (number_ >= 0) ::close(number_); // never repeated: the number may be another's by then
    }
    [[nodiscard]] int get() const { return number_; }

    /// Result of the request, -1 with errno on failure.
    template <class Argument> int control(unsigned long request, Argument argument) const {
        return uninterrupted([&] { return ::ioctl(number_, request, argument); });
    }

  private:
    int number_;
};

tcflag_t control_flags(const LineSettings& settings) {
    constexpr std::array<tcflag_t, 4> kSizes{CS5, CS6, CS7, CS8};
    tcflag_t flags = CLOCAL | CREAD | HUPCL | BOTHER | (BOTHER << IBSHIFT);
    flags |= kSizes[checked_index(settings.data_bits - 5, kSizes.size())];
    if (settings.parity != 'N') flags |= PARENB;
    if (settings.parity == 'O' || settings.parity == 'M') flags |= PARODD;
    if (settings.parity == 'M' || settings.parity == 'S') flags |= CMSPAR;
    if (settings.stop_bits > 1) flags |= CSTOPB;
    return flags;
}

class LinuxSerialLine : public SerialLine {
  public:
    LinuxSerialLine(const std::string& path, int descriptor, bool is_pty,
                    const LineSettings& settings)
        : path_(path), device_(descriptor), is_pty_(is_pty),
          character_time_us_(character_time_us(settings)) {
        lock();
        termios2 attributes{};
        if (device_.control(TCGETS2, &attributes) < 0) fail(SerialOperation::Open);
        set_first_modem_lines(settings);
        apply(attributes, settings);
        device_.control(TCFLSH, TCIOFLUSH); // what arrived while nobody had the line open
        ask_for_low_latency();
        errors_before_ = counted();
        // After all that may fail: on a pseudo-terminal this outlives us. Root passes it, but not
        // the lock above.
        device_.control(TIOCEXCL, nullptr);
    }

    ~LinuxSerialLine() override {
        // Bytes that a stopped line has not taken would otherwise hold up the closing for 30 s.
        device_.control(TCFLSH, TCIOFLUSH);
        put_latency_back();
        device_.control(TIOCNXCL, nullptr);
    }

    bool read_into(std::string& buffer) override;
    void wait_for_input(double timeout_ms) override;
    void discard_input() override {
        if (device_.control(TCFLSH, TCIFLUSH) < 0) fail(SerialOperation::Write);
    }
    void write(const std::string& bytes) override;
    void set_rts(bool on) override { drive(TIOCM_RTS, on); }
    void set_dtr(bool on) override { drive(TIOCM_DTR, on); }
    [[nodiscard]] bool hung_up() const override {
        pollfd watched{device_.get(), 0,
                       0}; // nothing is waited for: a hang-up is told all the same
        return ::poll(&watched, 1, 0) > 0 && (watched.revents & POLLHUP) != 0;
    }
    [[nodiscard]] std::optional<LineErrors> errors() const override;
    [[nodiscard]] int descriptor() const override { return device_.get(); }

  private:
    [[noreturn]] void fail(SerialOperation operation) const {
        throw RunTimeError(serial_error_number(operation, errno), path_);
    }
    void lock() const;
    void set_first_modem_lines(const LineSettings& settings);
    void apply(termios2 attributes, const LineSettings& settings) const;
    void ask_for_low_latency();
    void put_latency_back() const;
    [[nodiscard]] std::optional<LineErrors> counted() const;
    void drive(int wire, bool on);
    void wait_until_writable(std::chrono::steady_clock::time_point deadline) const;

    std::string path_;
    Descriptor device_;
    bool is_pty_;
    bool has_modem_lines_ = true;
    double character_time_us_;
    bool low_latency_is_ours_ = false;
    std::optional<LineErrors> errors_before_; // at the opening
};

void LinuxSerialLine::lock() const {
    if (uninterrupted([&] { return ::flock(device_.get(), LOCK_EX | LOCK_NB); }) < 0)
        fail(SerialOperation::Open);
}

/// One call for both wires, so that neither is seen in a wrong state between two.
void LinuxSerialLine::set_first_modem_lines(const LineSettings& settings) {
    int wires = 0;
    int result = device_.control(TIOCMGET, &wires);
    if (result == 0) {
        wires &= ~(TIOCM_DTR | TIOCM_RTS);
        if (settings.dtr) wires |= TIOCM_DTR;
        if (settings.rts) wires |= TIOCM_RTS;
        result = device_.control(TIOCMSET, &wires);
    }
    if (result == 0) return;
    if (serial_error_number(SerialOperation::ModemLines, errno) != 0)
        fail(SerialOperation::ModemLines);
    has_modem_lines_ = false;
}

/// Success of the call proves nothing: drivers take over what they can. What counts is read back,
/// but for pseudo-terminals, which have neither speed nor parity.
void LinuxSerialLine::apply(termios2 attributes, const LineSettings& settings) const {
    const auto speed = static_cast<speed_t>(settings.baud_rate);
    attributes.c_iflag = IGNBRK | IGNPAR;
    if (settings.xon_xoff) attributes.c_iflag |= IXON | IXOFF;
    attributes.c_oflag = 0;
    attributes.c_lflag = 0;
    attributes.c_cflag = control_flags(settings);
    attributes.c_ispeed = attributes.c_ospeed = speed;
    attributes.c_cc[VMIN] = 1; // with 0 an empty line and a lost one would read alike
    attributes.c_cc[VTIME] = 0;
    attributes.c_cc[VSTART] = kXon;
    attributes.c_cc[VSTOP] = kXoff;
    termios2 taken{};
    if (device_.control(TCSETS2, &attributes) < 0 || device_.control(TCGETS2, &taken) < 0)
        fail(SerialOperation::Settings);
    if (is_pty_) {
        if (!settings.foreign_parity) return;
        throw RunTimeError(error_number::kCannotSetState, path_ + " (no parity)");
    }

    const double deviation = std::abs(static_cast<double>(taken.c_ospeed) - settings.baud_rate);
    const bool same_format = ((taken.c_cflag ^ attributes.c_cflag) & kCharacterFormat) == 0;
    if (!same_format || deviation > kSpeedTolerance * settings.baud_rate)
        fail(SerialOperation::Settings);
}

/// USB adapters may hold a short reply back for up to 16 ms unless told not to; whoever cannot be
/// told stays as it is.
void LinuxSerialLine::ask_for_low_latency() {
    serial_struct driver{};
    if (device_.control(TIOCGSERIAL, &driver) < 0) return;
    if ((driver.flags & kLowLatency) != 0) return;
    driver.flags |= kLowLatency;
    low_latency_is_ours_ = device_.control(TIOCSSERIAL, &driver) == 0;
}

/// As it was found: the mode outlives the opening.
void LinuxSerialLine::put_latency_back() const {
    serial_struct driver{};
    if (!low_latency_is_ours_ || device_.control(TIOCGSERIAL, &driver) < 0) return;
    driver.flags &= ~kLowLatency;
    device_.control(TIOCSSERIAL, &driver);
}

std::optional<LineErrors> LinuxSerialLine::counted() const {
    serial_icounter_struct counts{};
    if (device_.control(TIOCGICOUNT, &counts) < 0) return {};
    return LineErrors{counts.parity, counts.frame, counts.overrun, counts.brk};
}

/// The driver counts from the machine's start on.
std::optional<LineErrors> LinuxSerialLine::errors() const {
    const auto now = errors_before_ ? counted() : std::nullopt;
    if (!now) return {};
    return LineErrors{now->parity - errors_before_->parity, now->framing - errors_before_->framing,
                      now->overruns - errors_before_->overruns,
                      now->breaks - errors_before_->breaks};
}

bool LinuxSerialLine::read_into(std::string& buffer) {
    std::array<char, 4096> chunk;
    for (int i = 0; i < kReadsPerCall; ++i) {
        const ssize_t count =
            uninterrupted([&] { return ::read(device_.get(), chunk.data(), chunk.size()); });
        if (count == 0) return false;
        if (count < 0) return serial_error_number(SerialOperation::Read, errno) == 0;
        buffer.append(chunk.data(), static_cast<std::size_t>(count));
        if (static_cast<std::size_t>(count) < chunk.size()) break;
    }
    return true;
}

/// Timers that end when they are to: otherwise the system adds 0.05 ms, to wake several sleepers at
/// once.
class ExactTimers {
  public:
    ExactTimers() { ::prctl(PR_SET_TIMERSLACK, 1UL); }
    ExactTimers(const ExactTimers&) = delete;
    ExactTimers& operator=(const ExactTimers&) = delete;
    ~ExactTimers() { ::prctl(PR_SET_TIMERSLACK, 0UL); } // the thread's own again
};

void LinuxSerialLine::wait_for_input(double timeout_ms) {
    std::optional<ExactTimers> exact;
    if (timeout_ms < kShortWaitMs) exact.emplace();
    const auto nanoseconds = std::llround(std::max(timeout_ms, 0.0) * 1e6);
    const timespec time{nanoseconds / 1'000'000'000, nanoseconds % 1'000'000'000};
    pollfd watched{device_.get(), POLLIN, 0};
    static_cast<void>(::ppoll(&watched, 1, &time, nullptr)); // a lost line shows in the next read
}

void LinuxSerialLine::write(const std::string& bytes) {
    using namespace std::chrono;
    const double wire_time_us = character_time_us_ * static_cast<double>(bytes.size());
    const auto deadline =
        steady_clock::now() + microseconds(std::llround(wire_time_us)) + kWriteGrace;
    std::size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t count = uninterrupted(
            [&] { return ::write(device_.get(), bytes.data() + done, bytes.size() - done); });
        if (count > 0)
            done += static_cast<std::size_t>(count);
        else if (count < 0 && errno != EAGAIN)
            fail(SerialOperation::Write);
        else
            wait_until_writable(deadline);
    }
}

/// Waits for some milliseconds at most; 57 when the deadline is over.
void LinuxSerialLine::wait_until_writable(std::chrono::steady_clock::time_point deadline) const {
    if (std::chrono::steady_clock::now() >= deadline)
        throw RunTimeError(error_number::kDeviceInputOutput, path_ + " (time-out)");
    pollfd watched{device_.get(), POLLOUT, 0};
    static_cast<void>(::poll(&watched, 1, kWritePollMs)); // a lost line shows in the next write
}

void LinuxSerialLine::drive(int wire, bool on) {
    if (!has_modem_lines_) return;
    if (device_.control(on ? TIOCMBIS : TIOCMBIC, &wire) == 0) return;
    if (serial_error_number(SerialOperation::ModemLines, errno) != 0)
        fail(SerialOperation::ModemLines);
    has_modem_lines_ = false;
}

bool is_pseudo_terminal(const struct stat& node) {
    const unsigned number = major(node.st_rdev);
    return number >= kFirstPtyMajor && number <= kLastPtyMajor;
}

[[noreturn]] void refuse(int errno_value, const std::string& path) {
    throw RunTimeError(serial_error_number(SerialOperation::Open, errno_value), path);
}

} // namespace

std::unique_ptr<SerialLine> open_serial_device(const std::string& path,
                                               const LineSettings& settings) {
    // Looked at before it is opened: the opening of a pipe or of some other device has effects.
    struct stat node {};
    if (::stat(path.c_str(), &node) < 0) refuse(errno, path);
    if (!S_ISCHR(node.st_mode)) refuse(ENOTTY, path);
    const int descriptor = uninterrupted(
        [&] { return ::open(path.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC); });
    if (descriptor < 0) refuse(errno, path);
    return std::make_unique<LinuxSerialLine>(path, descriptor, is_pseudo_terminal(node), settings);
}

} // namespace pelvan
