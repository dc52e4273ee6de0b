#include "simulator/line/linux_pty.h"

#include <fcntl.h>
#include <pty.h>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>

namespace pelvan::simulator {
namespace {

/// Where a symbolic link leads; empty when there is none.
std::string target_of(const std::string& path) {
    std::array<char, 256> target{};
    const ssize_t length = ::readlink(path.c_str(), target.data(), target.size());
    return length > 0 ? std::string(target.data(), static_cast<std::size_t>(length)) : "";
}

bool is_pseudo_terminal(const std::string& device) {
    const std::string directory = "/dev/pts/";
    return device.starts_with(directory) && device.size() > directory.size() &&
           device.find_first_not_of("0123456789", directory.size()) == std::string::npos;
}

} // namespace

Pty::Pty() {
    // A new pseudo-terminal would echo, edit lines and rewrite CR.
    termios settings{};
    ::cfmakeraw(&settings);
    ::cfsetspeed(&settings, B9600);
    settings.c_cflag |= CREAD | CLOCAL;
    settings.c_cc[VMIN] = 1;
    if (::openpty(&master_, &slave_, nullptr, &settings, nullptr) != 0) return;
    ::fcntl(master_, F_SETFD, FD_CLOEXEC);
    ::fcntl(slave_, F_SETFD, FD_CLOEXEC);
    ::fcntl(master_, F_SETFL, O_NONBLOCK);
    std::array<char, 128> name{};
    if (::ttyname_r(slave_, name.data(), name.size()) == 0) path_ = name.data();
}

Pty::~Pty() {
    if (master_ >= 0) ::close(master_);
    if (slave_ >= 0) ::close(slave_);
}

std::string PtyLink::make() {
    struct stat status {};
    if (::lstat(path_.c_str(), &status) == 0) {
        // Left behind by a simulation that was killed; anything else is somebody's own.
        if (!S_ISLNK(status.st_mode) || !is_pseudo_terminal(target_of(path_)))
            return path_ + " exists and is no link to a pseudo-terminal";
        ::unlink(path_.c_str());
    }
    made_ = ::symlink(target_.c_str(), path_.c_str()) == 0;
    return made_ ? "" : path_ + ": " + std::strerror(errno);
}

PtyLink::~PtyLink() {
    if (made_ && target_of(path_) == target_) ::unlink(path_.c_str());
}

} // namespace pelvan::simulator
