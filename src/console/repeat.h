// Sends one command again and again at an interval and counts what comes of it. Whoever runs it
// calls `tick` when it is due; the line is free for others in between, and while a tool has claimed
// it nothing is sent. No control here: the console and the terminal's `send` share it.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "console/send_outcome.h"
#include "platform/message_router.h"
#include "platform/tick.h"
#include "serial/link.h"
#include "text/time_summary.h"

namespace pelvan {

/// Sends one command, the same with every call.
using SendOnce = std::function<SendOutcome()>;

struct RepeatCounts {
    TimeSummary replies; // those that count as the command's answer, from sending to their end
    long failures = 0;
    std::string last_failure; // why

    [[nodiscard]] long sent() const { return replies.count + failures; }
    /// "12 replies, 1 failure; 24 to 31 ms, mean 25.3 ms".
    [[nodiscard]] std::string text() const;
};

class Repeat {
  public:
    static constexpr double kMinIntervalMs = 100;
    static constexpr double kMaxIntervalMs = 3'600'000;

    Repeat(Link& link, TickSource& tick, MessageRouter& messages)
        : link_(link), tick_(tick), messages_(messages) {}

    /// From now on, the first time at once.
    void start(SendOnce send, double interval_ms);
    void stop();
    [[nodiscard]] bool running() const { return static_cast<bool>(send_); }

    /// Sends when that is due and nobody has claimed the line; nothing otherwise. What the port has
    /// to say becomes the reason of a failure instead of a box that would hold the rest. A command
    /// that is refused ends the repeating. Blocks for one exchange.
    std::optional<SendOutcome> tick();

    /// Milliseconds until `tick` has something to do. A moment that an exchange or a claim took is
    /// left out: the sendings stay on their interval.
    [[nodiscard]] double wait_ms();
    /// Who has the line while that keeps this from sending; else empty.
    [[nodiscard]] std::string paused() const;
    /// Since the last start.
    [[nodiscard]] const RepeatCounts& counts() const { return counts_; }

  private:
    [[nodiscard]] double now() { return time_.at(tick_.timeGetTime()); }
    [[nodiscard]] SendOutcome exchange();
    void count(const SendOutcome& outcome, const std::string& message);

    Link& link_;
    TickSource& tick_;
    MessageRouter& messages_;
    SendOnce send_;
    SteadyTime time_;
    double interval_ms_ = 0;
    double due_ms_ = 0;
    bool sending_ = false;
    RepeatCounts counts_;
};

} // namespace pelvan
