#include "platform/run_time_error.h"

#include <cerrno>

#include "text/numbers.h"

namespace pelvan {
namespace {

template <class Integer> Integer rounded(double value, double lowest, double highest) {
    const double whole = round_half_even(value);
    if (!(whole >= lowest && whole <= highest)) throw RunTimeError(error_number::kOverflow);
    return static_cast<Integer>(whole);
}

int file_error_number(int errno_value) {
    switch (errno_value) {
    case ENOENT:
        return error_number::kFileNotFound;
    case ENOSPC:
    case EDQUOT:
    case EFBIG:
        return error_number::kDiskFull;
    case EACCES:
    case EPERM:
    case EROFS:
        return error_number::kPermissionDenied;
    case ENOTDIR:
    case ELOOP:
    case ENAMETOOLONG:
        return error_number::kPathNotFound;
    default:
        return error_number::kPathFileAccess;
    }
}

} // namespace

std::int16_t int16_from(double value) {
    return rounded<std::int16_t>(value, -32768, 32767);
}

std::int32_t int32_from(double value) {
    return rounded<std::int32_t>(value, -2147483648.0, 2147483647.0);
}

std::size_t checked_index(long index, std::size_t count) {
    if (index < 0 || static_cast<std::size_t>(index) >= count)
        throw RunTimeError(error_number::kSubscript);
    return static_cast<std::size_t>(index);
}

void throw_file_error(int errno_value, const std::string& path) {
    throw RunTimeError(file_error_number(errno_value), path);
}

} // namespace pelvan
