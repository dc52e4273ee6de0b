// Lines on their way into the log file: gathered in the session's buffer, appended to the file in
// one go. When to flush, and when the count starts again, is DataLogger's business.
#pragma once

#include "logging/logging_state.h"
#include "platform/dialogs.h"

namespace pelvan {

class LogBuffer {
  public:
    LogBuffer(LoggingState& state, Dialogs& dialogs) : state_(state), dialogs_(dialogs) {}

    /// 9 (subscript out of range) for the 203rd line; what the buffer holds stays.
    void append(const std::string& line);

    /// Appends the waiting lines to `gLogFileName`; they are on the disk when it returns true. The
    /// count is left as it is: flushing again writes the same lines again. On a file error shows
    /// the warning and returns false.
    bool FlushLogBuffer();

    /// Drops as many of the oldest lines as it takes to hold that many more.
    void make_room(std::size_t lines);

    [[nodiscard]] int waiting() const;

  private:
    LoggingState& state_;
    Dialogs& dialogs_;
};

} // namespace pelvan
