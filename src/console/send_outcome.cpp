#include "console/send_outcome.h"

#include "text/date_time.h"

namespace pelvan {

ExchangeTimes::ExchangeTimes(CountdownPool& ticks, Clock& clock)
    : ticks_(ticks), clock_(clock), begun_(ticks.read_tick()), sent_at_(time_ms_text(clock.now())) {
}

void ExchangeTimes::end() {
    taken_ms_ = static_cast<long>(tick_span(begun_, ticks_.read_tick()));
    received_at_ = time_ms_text(clock_.now());
}

std::string ExchangeTimes::status(std::size_t bytes_sent, std::size_t bytes_received) const {
    return std::to_string(bytes_sent) + " bytes sent, " + std::to_string(bytes_received) +
           " received, " + std::to_string(taken_ms_) + " ms";
}

HistoryRow ExchangeTimes::row(std::string command, std::string response) const {
    return {sent_at_, std::move(command), received_at_, std::move(response), taken_ms_};
}

SendOutcome ExchangeTimes::not_sent(const Link& link, const std::string& command,
                                    const std::string& response) const {
    const std::string refusal = link.refusal();
    const std::string reason =
        refusal.empty() ? "Not sent: the port is not open." : "Not sent. " + refusal;
    return {SendOutcome::Kind::NotSent,
            reason,
            false,
            {},
            row(command, response.empty() ? reason : response)};
}

SendOutcome send_and_remark(Link& link, const std::function<SendOutcome()>& send) {
    static_cast<void>(link.take_remark()); // of earlier exchanges
    SendOutcome outcome = send();
    const bool no_reply = outcome.kind == SendOutcome::Kind::NoReply;
    const std::string remark = link.take_remark();
    if (!remark.empty())
        outcome.remark = remark;
    else if (outcome.remark.empty() && no_reply && link.echo() == Echo::Whole)
        outcome.remark = "The echo of the command came, but no answer.";
    // That nothing came would be wrong, and what came is in the remark.
    if (no_reply && link.echo() == Echo::Differs) outcome.status.clear();
    if (!outcome.remark.empty() && !outcome.status.empty())
        outcome.status += outcome.status.ends_with('.') ? " " : ". ";
    outcome.status += outcome.remark;
    return outcome;
}

} // namespace pelvan
