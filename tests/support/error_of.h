// The number of the run-time error that an action ends in.
#pragma once

#include "platform/run_time_error.h"

namespace pelvan::testing {

/// 0 when the action ends well.
template <class Action> int error_of(Action action) {
    try {
        action();
    } catch (const RunTimeError& error) {
        return error.number();
    }
    return 0;
}

} // namespace pelvan::testing
