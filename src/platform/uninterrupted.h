// System calls that a signal may interrupt.
#pragma once

#include <cerrno>

namespace pelvan {

/// The call's result; the call is repeated for as long as a signal interrupts it.
template <class Call> auto uninterrupted(Call call) {
    auto result = call();
    while (result < 0 && errno == EINTR)
        result = call();
    return result;
}

} // namespace pelvan
