// The number of the run-time error that an action ends in.
#pragma once

#include <functional>

#include "platform/run_time_error.h"

namespace pelvan::testing {

/// 0 when the action ends well. A member function takes its object and arguments behind it.
template <class Action, class... Arguments> int error_of(Action action, Arguments&&... arguments) {
    try {
        static_cast<void>(std::invoke(action, std::forward<Arguments>(arguments)...));
    } catch (const RunTimeError& error) {
        return error.number();
    }
    return 0;
}

} // namespace pelvan::testing
