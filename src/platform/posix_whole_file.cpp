#include "platform/whole_file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <thread>

#include "platform/posix_file.h"

namespace pelvan {
namespace {

namespace fs = std::filesystem;

constexpr mode_t kNewFileMode = 0666;
constexpr mode_t kAnyWriteBit = 0222;
constexpr mode_t kPermissionBits = 07777;
constexpr int kMaxLinks = 40;

// The file that a chain of symbolic links ends in, whether it exists or not.
int follow_links(fs::path& path) {
    std::error_code error;
    for (int links = 0; fs::is_symlink(path, error); ++links) {
        if (links == kMaxLinks) return ELOOP;
        const auto target = fs::read_symlink(path, error);
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

/// Other writers hold the lock for one file's time on the disk; whoever holds it longer is stopped.
constexpr std::chrono::milliseconds kMaxLockWait{2000};
constexpr std::chrono::milliseconds kLockPoll{5};

/// Locks the directory among all programs that change files in it by way of this, until the file is
/// closed. Where the file system has no locks the change is made without.
int lock(PosixFile& directory, const std::string& path, bool& locked) {
    if (const int error = directory.open(path, O_RDONLY)) return error;
    const auto end = std::chrono::steady_clock::now() + kMaxLockWait;
    while (::flock(directory.descriptor(), LOCK_EX | LOCK_NB) != 0) {
        if (errno != EWOULDBLOCK && errno != EINTR) return 0;
        if (std::chrono::steady_clock::now() > end) return EBUSY;
        std::this_thread::sleep_for(kLockPoll);
    }
    locked = true;
    return 0;
}

bool is_temporary_name(const std::string& name) {
    const std::string_view prefix = PosixFile::kTemporaryPrefix;
    return name.size() == prefix.size() + PosixFile::kTemporaryLetters &&
           name.starts_with(prefix) &&
           std::all_of(name.begin() + static_cast<std::ptrdiff_t>(prefix.size()), name.end(),
                       [](unsigned char letter) { return std::isalnum(letter) != 0; });
}

/// Removes what a writer that was killed has left. With the lock held no other writer is at work.
void clear_leftovers(const std::string& directory) {
    std::error_code error;
    for (fs::directory_iterator it(directory, error), end; !error && it != end;
         it.increment(error)) {
        std::error_code ignored;
        if (is_temporary_name(it->path().filename().string()) && it->is_regular_file(ignored))
            fs::remove(it->path(), ignored);
    }
}

int replace(const fs::path& target, const std::string& directory, std::string_view bytes) {
    struct stat old {};
    bool exists = false;
    if (const int error = check_target(target.string(), old, exists)) return error;
    PosixFile file;
    std::string temporary;
    if (const int error = file.create_beside(directory, temporary)) return error;
    int error = fill(file, bytes, old, exists);
    if (error == 0 && std::rename(temporary.c_str(), target.c_str()) != 0) error = errno;
    if (error != 0) ::unlink(temporary.c_str());
    return error;
}

} // namespace

int read_whole_file(const std::string& path, std::string& bytes) {
    PosixFile file;
    if (const int error = file.open(path, O_RDONLY)) return error;
    struct stat status {};
    if (::fstat(file.descriptor(), &status) != 0) return errno;
    // A pipe or a device could keep us waiting, or never end.
    if (!S_ISREG(status.st_mode)) return EISDIR;
    return file.read_all(bytes);
}

int change_whole_file(const std::string& path, const FileChange& change) {
    fs::path target(path);
    if (const int error = follow_links(target)) return error;
    const std::string directory =
        target.has_parent_path() ? target.parent_path().string() : std::string(".");
    if (const int error = check_directory(directory)) return error;
    PosixFile parent;
    bool locked = false;
    if (const int error = lock(parent, directory, locked)) return error;
    if (locked) clear_leftovers(directory);

    std::string bytes;
    const int error = read_whole_file(target.string(), bytes);
    // A file that is there but cannot be read must not be taken for an empty one.
    if (error != 0 && error != ENOENT) return error;
    if (const int failure = replace(target, directory, change(bytes))) return failure;
    // The new name too must survive a loss of power; a directory that cannot tell is no failure.
    parent.sync();
    return 0;
}

} // namespace pelvan
