// How one sending from the console ended, whatever the protocol, and the lines that the history
// gets of it.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "console/history_document.h"
#include "platform/tick.h"
#include "serial/countdown.h"
#include "serial/link.h"

namespace pelvan {

struct SendOutcome {
    /// Refused as an entry; not sent, because no port was open; sent without or with a reply.
    enum class Kind { Refused, NotSent, NoReply, Done };
    Kind kind = Kind::Refused;
    /// What the status line should say of it.
    std::string status;
    /// Whether the controller did what it was asked, as far as its reply says.
    bool accepted = false;
    /// Why the entry is refused, for whoever entered it.
    std::string refusal;
    /// The command and its reply, or why there is none; nothing for a refused entry.
    std::optional<HistoryRow> row;
    /// Why a reply that came does not count as the controller's consent; empty when it does.
    std::string objection{};
    /// What was wrong with the line meanwhile, in sentences; empty when nothing was.
    std::string remark{};
};

/// What to say of a reply that was cut off: it began too late, or the line sends without end.
inline constexpr char kCutReply[] =
    "Bytes were still coming when the waiting ended: what came until then is no answer.";

/// Sends once through the link and adds to the outcome what was wrong with the line.
[[nodiscard]] SendOutcome send_and_remark(Link& link, const std::function<SendOutcome()>& send);

/// Notes when a command leaves and when its reply is there.
class ExchangeTimes {
  public:
    /// The command leaves now.
    ExchangeTimes(CountdownPool& ticks, Clock& clock);

    /// The reply is there now, or none is waited for any longer.
    void end();

    [[nodiscard]] long taken_ms() const { return taken_ms_; }
    /// "8 bytes sent, 7 received, 25 ms".
    [[nodiscard]] std::string status(std::size_t bytes_sent, std::size_t bytes_received) const;
    /// Both lines with their times.
    [[nodiscard]] HistoryRow row(std::string command, std::string response) const;

    /// The outcome of a command that never reached a port; the status says why. `response` is what
    /// the protocol itself says of it, the reason where that is nothing.
    [[nodiscard]] SendOutcome not_sent(const Link& link, const std::string& command,
                                       const std::string& response = {}) const;

  private:
    CountdownPool& ticks_;
    Clock& clock_;
    double begun_;
    long taken_ms_ = 0;
    std::string sent_at_;
    std::string received_at_;
};

} // namespace pelvan
