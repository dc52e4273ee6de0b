#include "console/send_outcome.h"

#include "serial/errors.h"

namespace pelvan {
namespace {

/// "16:30:05.250"
std::string moment_text(const LocalTime& time) {
    const std::string thousandths = std::to_string(1000 + time.millisecond % 1000);
    return time_text(time) + "." + thousandths.substr(1);
}

} // namespace

ExchangeTimes::ExchangeTimes(CountdownPool& ticks, Clock& clock)
    : ticks_(ticks), clock_(clock), begun_(ticks.read_tick()), sent_at_(moment_text(clock.now())) {}

void ExchangeTimes::end() {
    // Unsigned, so that a tick that wrapped meanwhile gives the right span.
    taken_ms_ = static_cast<long>(static_cast<std::uint32_t>(ticks_.read_tick()) -
                                  static_cast<std::uint32_t>(begun_));
    received_at_ = moment_text(clock_.now());
}

std::string ExchangeTimes::status(std::size_t bytes_sent, std::size_t bytes_received) const {
    return std::to_string(bytes_sent) + " bytes sent, " + std::to_string(bytes_received) +
           " received, " + std::to_string(taken_ms_) + " ms";
}

HistoryRow ExchangeTimes::row(std::string command, std::string response) const {
    return {sent_at_, std::move(command), received_at_, std::move(response)};
}

} // namespace pelvan
