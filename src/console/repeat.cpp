#include "console/repeat.h"

#include <algorithm>
#include <cmath>

#include "platform/scope_guard.h"
#include "text/numbers.h"

namespace pelvan {
namespace {

std::string tenths(double ms) {
    return plain_number(std::round(ms * 10) / 10);
}

} // namespace

std::string RepeatCounts::text() const {
    std::string text = std::to_string(replies.count) +
                       (replies.count == 1 ? " reply, " : " replies, ") +
                       count_text(static_cast<std::size_t>(failures), "failure");
    if (replies.count > 0)
        text += "; " + tenths(replies.minimum) + " to " + tenths(replies.maximum) + " ms, mean " +
                tenths(replies.mean()) + " ms";
    return text;
}

void Repeat::start(SendOnce send, double interval_ms) {
    send_ = std::move(send);
    interval_ms_ = std::clamp(interval_ms, kMinIntervalMs, kMaxIntervalMs);
    time_.start(tick_.timeGetTime(), 0);
    due_ms_ = 0;
    counts_ = {};
}

void Repeat::stop() {
    send_ = nullptr;
}

std::string Repeat::paused() const {
    return running() ? link_.channels().line_use().refusal(nullptr) : std::string();
}

double Repeat::wait_ms() {
    return std::max(0.0, due_ms_ - now());
}

std::optional<SendOutcome> Repeat::tick() {
    // A tick may come in a box of the exchange before.
    if (!running() || sending_ || now() < due_ms_) return std::nullopt;
    std::optional<SendOutcome> outcome;
    if (paused().empty()) outcome = exchange();
    // The next moment of the interval that is still to come.
    due_ms_ = (std::floor(now() / interval_ms_) + 1) * interval_ms_;
    return outcome;
}

SendOutcome Repeat::exchange() {
    const SendOnce send = send_; // may be stopped meanwhile
    std::string message;
    SendOutcome outcome;
    {
        const MessageRouter::Diversion kept(messages_, [&message](const std::string& text) {
            if (message.empty()) message = text; // the others follow from it
        });
        sending_ = true;
        const ScopeGuard done([this] { sending_ = false; });
        outcome = send();
    }
    if (outcome.kind == SendOutcome::Kind::Refused)
        stop();
    else
        count(outcome, message);
    return outcome;
}

void Repeat::count(const SendOutcome& outcome, const std::string& message) {
    if (outcome.accepted) {
        counts_.replies.add(outcome.row ? static_cast<double>(outcome.row->taken_ms) : 0.0);
        return;
    }
    ++counts_.failures;
    counts_.last_failure = outcome.objection.empty() ? outcome.status : outcome.objection;
    if (!message.empty()) counts_.last_failure = message;
}

} // namespace pelvan
