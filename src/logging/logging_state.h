// Data-logging slice of the session state.
#pragma once

#include <array>
#include <cstdint>
#include <string>

namespace pelvan {

inline constexpr std::size_t kLogBufferSize = 202;

struct LoggingState {
    /// Full path of the log file: always the text of `txt_LogFilename`.
    std::string gLogFileName;
    std::int32_t gLogIntervalSeconds = 0;
    /// Lines that are not in the file yet, from element 0.
    std::array<std::string, kLogBufferSize> gLogBuffer;
    /// Number of lines in `gLogBuffer`; -1: nothing was added since the last flush.
    std::int16_t gLogBufferCount = 0;
};

} // namespace pelvan
