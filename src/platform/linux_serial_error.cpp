#include "platform/linux_serial_error.h"

#include <cerrno>

#include "platform/run_time_error.h"

namespace pelvan {
namespace {

int opening_error_number(int errno_value) {
    switch (errno_value) {
    // A missing device is an invalid port, not an unavailable one: the latter is retried for ever.
    case ENOENT:
    case ENOTDIR:
    case ELOOP:
    case ENAMETOOLONG:
    case EISDIR:
    case ENOTTY:
        return error_number::kInvalidPortNumber;
    case ENXIO:
    case ENODEV:
        return error_number::kDeviceUnavailable;
    case EBUSY:
    case EWOULDBLOCK:
        return error_number::kPortAlreadyOpen;
    case EMFILE:
    case ENFILE:
    case ENOMEM:
        return error_number::kDeviceInputOutput;
    default: // EACCES, EPERM, and EIO of a node without its hardware
        return error_number::kHardwareNotAvailable;
    }
}

} // namespace

int serial_error_number(SerialOperation operation, int errno_value) {
    switch (operation) {
    case SerialOperation::Open:
        return opening_error_number(errno_value);
    case SerialOperation::Settings:
        return error_number::kCannotSetState;
    case SerialOperation::ModemLines:
        if (errno_value == ENOTTY || errno_value == EINVAL) return 0;
        return error_number::kDeviceInputOutput;
    case SerialOperation::Read:
        return errno_value == EAGAIN ? 0 : error_number::kCannotReadDevice;
    case SerialOperation::Write:
        return error_number::kDeviceInputOutput;
    }
    return error_number::kDeviceInputOutput;
}

} // namespace pelvan
