// The Modbus functions that the system speaks, and their families: functions of one family share
// the layout of their frames. Used by the builder and the decoders.
#pragma once

namespace pelvan {

enum class FunctionFamily {
    kUnknown,
    kReadBits,
    kReadWords,
    kWriteSingle,
    kLoopBack,
    kWriteMultiple
};

/// The family of a function code; `kUnknown` for a function that the system does not speak.
[[nodiscard]] constexpr FunctionFamily function_family(int function) {
    switch (function) {
    case 1:
    case 2:
        return FunctionFamily::kReadBits;
    case 3:
    case 4:
        return FunctionFamily::kReadWords;
    case 5:
    case 6:
        return FunctionFamily::kWriteSingle;
    case 8:
        return FunctionFamily::kLoopBack;
    case 15:
    case 16:
        return FunctionFamily::kWriteMultiple;
    default:
        return FunctionFamily::kUnknown;
    }
}

[[nodiscard]] constexpr bool is_known_function(int function) {
    return function_family(function) != FunctionFamily::kUnknown;
}

[[nodiscard]] constexpr bool is_write_multiple(int function) {
    return function_family(function) == FunctionFamily::kWriteMultiple;
}

} // namespace pelvan
