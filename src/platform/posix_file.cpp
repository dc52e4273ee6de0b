#include "platform/posix_file.h"

#include <fcntl.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>

#include "platform/uninterrupted.h"
#include "platform/whole_file.h"

namespace pelvan {
namespace {

constexpr mode_t kNewFileMode = 0666;
constexpr mode_t kAnyWriteBit = 0222;
constexpr mode_t kPermissionBits = 07777;
constexpr int kMaxLinks = 40;

// The file that a chain of symbolic links ends in, whether it exists or not.
int follow_links(std::filesystem::path& path) {
    std::error_code error;
    for (int links = 0; std::filesystem::is_symlink(path, error); ++links) {
        if (links == kMaxLinks) return ELOOP;
        const auto target = std::filesystem::read_symlink(path, error);
        if (error) return error.value();
        path = path.parent_path() / target;
    }
    return 0;
}

int check_writable(const std::string& path, const struct stat& status) {
    if ((status.st_mode & kAnyWriteBit) == 0) return EACCES;
    return ::access(path.c_str(), W_OK) == 0 ? 0 : errno;
}

// Fills in the status of the file to replace, or that of a file which is still to be created.
int check_target(const std::string& path, struct stat& status, bool& exists) {
    exists = ::stat(path.c_str(), &status) == 0;
    if (exists) return S_ISREG(status.st_mode) ? check_writable(path, status) : EISDIR;
    return errno == ENOENT ? 0 : errno;
}

int check_directory(const std::string& path) {
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0) return errno;
    return S_ISDIR(status.st_mode) ? check_writable(path, status) : ENOTDIR;
}

mode_t mode_of_new_file() {
    const mode_t mask = ::umask(0);
    ::umask(mask);
    return kNewFileMode & ~mask;
}

int give_mode(int descriptor, const struct stat& old, bool exists) {
    if (exists && old.st_uid != ::geteuid()) {
        // Keep the owner if permitted; otherwise the file becomes ours.
        [[maybe_unused]] const int ignored = ::fchown(descriptor, old.st_uid, old.st_gid);
    }
    const mode_t mode = exists ? (old.st_mode & kPermissionBits) : mode_of_new_file();
    return ::fchmod(descriptor, mode) == 0 ? 0 : errno;
}

int fill(PosixFile& file, std::string_view bytes, const struct stat& old, bool exists) {
    if (const int error = file.write_all(bytes)) return error;
    if (const int error = give_mode(file.descriptor(), old, exists)) return error;
    if (const int error = file.sync()) return error;
    return file.close();
}

} // namespace

int PosixFile::open(const std::string& path, int flags) {
    close();
    descriptor_ = ::open(path.c_str(), flags | O_CLOEXEC | O_NOCTTY | O_NONBLOCK, kNewFileMode);
    return descriptor_ >= 0 ? 0 : errno;
}

int PosixFile::create_beside(const std::string& directory, std::string& path) {
    close();
    path = directory + "/.pelvanXXXXXX";
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

int read_whole_file(const std::string& path, std::string& bytes) {
    PosixFile file;
    if (const int error = file.open(path, O_RDONLY)) return error;
    struct stat status {};
    if (::fstat(file.descriptor(), &status) != 0) return errno;
    // A pipe or a device could keep us waiting, or never end.
    if (!S_ISREG(status.st_mode)) return EISDIR;
    return file.read_all(bytes);
}

int replace_whole_file(const std::string& path, std::string_view bytes) {
    std::filesystem::path target(path);
    if (const int error = follow_links(target)) return error;
    const std::string directory =
        target.has_parent_path() ? target.parent_path().string() : std::string(".");
    struct stat old {};
    bool exists = false;
    if (const int error = check_target(target.string(), old, exists)) return error;
    if (const int error = check_directory(directory)) return error;

    PosixFile file;
    std::string temporary;
    if (const int error = file.create_beside(directory, temporary)) return error;
    int error = fill(file, bytes, old, exists);
    if (error == 0 && std::rename(temporary.c_str(), target.c_str()) != 0) error = errno;
    if (error != 0) {
        ::unlink(temporary.c_str());
        return error;
    }
    // The new name too must survive a loss of power; a directory that cannot tell is no failure.
    PosixFile parent;
    if (parent.open(directory, O_RDONLY) == 0) parent.sync();
    return 0;
}

} // namespace pelvan
