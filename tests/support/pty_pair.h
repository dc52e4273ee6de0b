// A pseudo-terminal: the test holds the master, the far end of the wire; the code under test opens
// the slave by its path as it would open a serial device.
#pragma once

#include <fcntl.h>
#include <poll.h>
#include <stdlib.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <stdexcept>
#include <string>

namespace pelvan::testing {

class PtyPair {
  public:
    enum class Slave { Close, KeepOpen };

    /// Raw in both directions. With a slave kept open the master does not see the end when the code
    /// under test closes its own.
    explicit PtyPair(Slave slave = Slave::Close)
        : master_(::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK)) {
        std::array<char, 64> name{};
        if (master_ < 0 || ::grantpt(master_) != 0 || ::unlockpt(master_) != 0 ||
            ::ptsname_r(master_, name.data(), name.size()) != 0)
            throw std::runtime_error("no pseudo-terminal");
        path_ = name.data();
        slave_ = ::open(path_.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
        termios attributes{};
        ::tcgetattr(slave_, &attributes);
        ::cfmakeraw(&attributes);
        ::tcsetattr(slave_, TCSANOW, &attributes);
        if (slave == Slave::Close) close_one(slave_);
    }
    PtyPair(PtyPair&&) = delete;
    ~PtyPair() {
        close_one(slave_);
        close_one(master_);
    }

    [[nodiscard]] const std::string& path() const { return path_; }
    [[nodiscard]] int master() const { return master_; }
    /// -1 unless it was to be kept open.
    [[nodiscard]] int slave() const { return slave_; }

    void send(const std::string& bytes) const {
        if (::write(master_, bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size()))
            throw std::runtime_error("the pseudo-terminal took not all bytes");
    }

    /// The next `count` bytes; fewer when they do not come within `timeout_ms`.
    [[nodiscard]] std::string receive(std::size_t count, int timeout_ms = 5000) const {
        std::string bytes(count, '\0');
        std::size_t done = 0;
        while (done < count) {
            pollfd watched{master_, POLLIN, 0};
            if (::poll(&watched, 1, timeout_ms) <= 0) break;
            const ssize_t got = ::read(master_, bytes.data() + done, count - done);
            if (got <= 0) break;
            done += static_cast<std::size_t>(got);
        }
        bytes.resize(done);
        return bytes;
    }

    /// What pulling the plug is to whoever holds the slave.
    void unplug() { close_one(master_); }

  private:
    static void close_one(int& descriptor) {
        if (descriptor >= 0) ::close(descriptor);
        descriptor = -1;
    }

    int master_;
    int slave_ = -1;
    std::string path_;
};

} // namespace pelvan::testing
