// How failures of the system's serial calls become run-time errors: one table, by what was being
// done. Internal to the serial devices of Linux.
#pragma once

namespace pelvan {

enum class SerialOperation {
    Open,       // path look-up, opening, locking, first look at the attributes
    Settings,   // taking over speed and character format
    ModemLines, // driving RTS and DTR
    Read,
    Write, // also discarding what arrived
};

/// The run-time error number for `errno_value`; 0 where it is no error at all (nothing to read, a
/// line without modem wires).
[[nodiscard]] int serial_error_number(SerialOperation operation, int errno_value);

} // namespace pelvan
