// For a handler whose steps must all be done whatever became of the one before.
#pragma once

#include <optional>

#include "platform/run_time_error.h"

namespace pelvan {

/// Keeps the first run-time error of several steps until all of them have run.
class DeferredError {
  public:
    template <class Step> void run(Step step) {
        try {
            step();
        } catch (const RunTimeError& error) {
            if (!first_) first_ = error;
        }
    }
    /// Throws the kept error; nothing when there was none.
    void raise() const {
        if (first_) throw RunTimeError(*first_);
    }

  private:
    std::optional<RunTimeError> first_;
};

} // namespace pelvan
