// Run-time errors with the classic numbers. The platform layer throws them; the routines that trap
// errors act on the number, and whatever no routine traps ends the event handler that it came from
// (app/error_boundary.h). Nothing else in the program uses exceptions for flow.
#pragma once

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>

namespace pelvan {

namespace error_number {
inline constexpr int kIllegalCall = 5;
inline constexpr int kOverflow = 6;
inline constexpr int kSubscript = 9;
inline constexpr int kFileNotFound = 53;
inline constexpr int kDeviceInputOutput = 57;
inline constexpr int kFileExists = 58;
inline constexpr int kDiskFull = 61;
inline constexpr int kInputPastEnd = 62;
inline constexpr int kDeviceUnavailable = 68;
inline constexpr int kCommBufferFull = 69;
inline constexpr int kPermissionDenied = 70;
inline constexpr int kPathFileAccess = 75;
inline constexpr int kPathNotFound = 76;
inline constexpr int kInvalidPropertyValue = 380;
inline constexpr int kOpenNotAllowed = 8000;
inline constexpr int kInvalidPortNumber = 8002;
inline constexpr int kPortAlreadyOpen = 8005;
inline constexpr int kHardwareNotAvailable = 8010;
inline constexpr int kCannotSetState = 8015;
inline constexpr int kPortNotOpen = 8018;
inline constexpr int kCannotReadDevice = 8020;
} // namespace error_number

/// A failure with its classic number; `subject` is the file or device that it is about, if known.
class RunTimeError : public std::runtime_error {
  public:
    explicit RunTimeError(int number, std::string subject = {})
        : std::runtime_error("run-time error " + std::to_string(number) +
                             (subject.empty() ? "" : ": " + subject)),
          number_(number), subject_(std::move(subject)) {}

    [[nodiscard]] int number() const { return number_; }
    [[nodiscard]] const std::string& subject() const { return subject_; }

  private:
    int number_;
    std::string subject_;
};

/// Rounds halves to even; throws 6 (overflow) outside -32768..32767.
[[nodiscard]] std::int16_t int16_from(double value);

/// Rounds halves to even; throws 6 (overflow) outside the signed 32-bit range.
[[nodiscard]] std::int32_t int32_from(double value);

/// The index itself when it lies in 0..count-1, else throws 9 (subscript out of range).
[[nodiscard]] std::size_t checked_index(long index, std::size_t count);

/// Throws the run-time error that stands for a failed file call: 53, 61, 70, 75 or 76 by
/// `errno_value`.
[[noreturn]] void throw_file_error(int errno_value, const std::string& path);

} // namespace pelvan
