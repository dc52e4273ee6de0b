// One open file of a POSIX system. Failures are errno values, 0 for success; what they mean to the
// program is left to the callers.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace pelvan {

class PosixFile {
  public:
    /// Names of `create_beside`: the prefix and so many letters and digits.
    static constexpr char kTemporaryPrefix[] = ".pelvan";
    static constexpr std::size_t kTemporaryLetters = 6;

    PosixFile() = default;
    PosixFile(const PosixFile&) = delete;
    PosixFile& operator=(const PosixFile&) = delete;
    ~PosixFile() { close(); }

    /// `flags` as of open(2); never waits for the other end of a pipe.
    int open(const std::string& path, int flags);
    /// Creates a file of a new name in the directory, readable by its owner alone; the name is put
    /// into `path`.
    int create_beside(const std::string& directory, std::string& path);
    int write_all(std::string_view bytes);
    int read_all(std::string& bytes);
    /// Waits until the data is on the disk. Devices that cannot tell count as done.
    int sync();
    int size(std::uintmax_t& bytes) const;
    /// Cuts the file to so many bytes; what cannot be cut stays as it is.
    void truncate(std::uintmax_t bytes);
    int close();
    [[nodiscard]] int descriptor() const { return descriptor_; }

  private:
    int descriptor_ = -1;
};

} // namespace pelvan
