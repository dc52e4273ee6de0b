// How far the logging is, as numbers and as the sentences that both front ends show.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "logging/log_poller.h"
#include "platform/tick.h"

namespace pelvan {

struct LoggingStatus {
    struct Pass {
        LocalTime begun;
        double took_ms = 0;
    };
    std::optional<Pass> last_pass;
    bool running = false;
    int tick_ms = 0;
    std::int32_t ticks = 0; // since the last pass
    std::int32_t interval_seconds = 0;
    int lines_waiting = 0;
    int skipped_passes = 0; // another tool had the line
    int rows_in_use = 0;
};

/// The last pass, its length, the next pass, and the lines that wait in the buffer.
[[nodiscard]] std::string status_text(const LoggingStatus& status);

} // namespace pelvan
