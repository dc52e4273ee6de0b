#include "logging/logging_status.h"

#include "serial/errors.h"
#include "text/numbers.h"

namespace pelvan {
namespace {

std::string seconds_text(double ms, double step) {
    return plain_number(round_half_even(ms / step) * step / 1000) + " s";
}

std::string last_pass_text(const LoggingStatus& status) {
    if (!status.last_pass) return {};
    std::string text = "Last pass " + time_text(status.last_pass->begun) + ", " +
                       seconds_text(status.last_pass->took_ms, 10);
    if (status.last_pass->took_ms > status.interval_seconds * 1000.0)
        text += " (longer than the interval)";
    return text + ". ";
}

std::string next_pass_text(const LoggingStatus& status) {
    if (!status.running) return "Logging is stopped.";
    if (status.tick_ms == 0) return "Next pass: never, TIMER OFFSET is 0.";
    const std::int32_t ticks = status.interval_seconds - status.ticks;
    if (ticks <= 0)
        return "Next pass: never, the interval is not longer than the " +
               plain_number(status.ticks) + " ticks counted already.";
    return "Next pass in " + seconds_text(static_cast<double>(ticks) * status.tick_ms, 1000) +
           (status.rows_in_use == 0 ? ", without any row." : ".");
}

} // namespace

std::string status_text(const LoggingStatus& status) {
    return last_pass_text(status) + next_pass_text(status) +
           " Lines waiting: " + plain_number(status.lines_waiting) + "." +
           (status.skipped_passes > 0
                ? " Passes skipped: " + plain_number(status.skipped_passes) + "."
                : "");
}

} // namespace pelvan
