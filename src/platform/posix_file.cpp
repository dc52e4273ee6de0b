#include "platform/posix_file.h"

#include <fcntl.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "platform/uninterrupted.h"

namespace pelvan {
namespace {

constexpr mode_t kNewFileMode = 0666;

} // namespace

int PosixFile::open(const std::string& path, int flags) {
    close();
    descriptor_ = ::open(path.c_str(), flags | O_CLOEXEC | O_NOCTTY | O_NONBLOCK, kNewFileMode);
    return descriptor_ >= 0 ? 0 : errno;
}

int PosixFile::create_beside(const std::string& directory, std::string& path) {
    close();
    path = directory + "/" + kTemporaryPrefix + std::string(kTemporaryLetters, 'X');
    descriptor_ = ::mkostemp(path.data(), O_CLOEXEC);
    return descriptor_ >= 0 ? 0 : errno;
}

int PosixFile::write_all(std::string_view bytes) {
    while (!bytes.empty()) {
        const auto written =
            uninterrupted([&] { return ::write(descriptor_, bytes.data(), bytes.size()); });
        if (written <= 0) return written < 0 ? errno : ENOSPC;
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
    return 0;
}

int PosixFile::read_all(std::string& bytes) {
    constexpr std::size_t kChunk = 65536;
    bytes.clear();
    for (;;) {
        const std::size_t size = bytes.size();
        bytes.resize(size + kChunk);
        const auto got =
            uninterrupted([&] { return ::read(descriptor_, bytes.data() + size, kChunk); });
        const int error = got < 0 ? errno : 0;
        bytes.resize(size + (got > 0 ? static_cast<std::size_t>(got) : 0));
        if (got <= 0) return error;
    }
}

int PosixFile::sync() {
    if (::fsync(descriptor_) == 0 || errno == EINVAL || errno == ENOTSUP) return 0;
    return errno;
}

int PosixFile::size(std::uintmax_t& bytes) const {
    struct stat status {};
    if (::fstat(descriptor_, &status) != 0) return errno;
    bytes = static_cast<std::uintmax_t>(status.st_size);
    return 0;
}

void PosixFile::truncate(std::uintmax_t bytes) {
    [[maybe_unused]] const int ignored = ::ftruncate(descriptor_, static_cast<off_t>(bytes));
}

int PosixFile::close() {
    if (descriptor_ < 0) return 0;
    const int descriptor = descriptor_;
    descriptor_ = -1;
    return ::close(descriptor) == 0 || errno == EINTR ? 0 : errno;
}

} // namespace pelvan
