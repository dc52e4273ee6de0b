// How one sending from the console ended, whatever the protocol, and the lines that the history
// gets of it.
#pragma once

#include <optional>
#include <string>

#include "console/history_document.h"
#include "platform/tick.h"
#include "serial/countdown.h"

namespace pelvan {

struct SendOutcome {
    enum class Kind { Refused, NoReply, Done };
    Kind kind = Kind::Refused;
    /// What the status line should say of it.
    std::string status;
    /// Whether the controller did what it was asked, as far as its reply says.
    bool accepted = false;
    /// Why nothing was sent, for whoever entered it.
    std::string refusal;
    /// The command and its reply; nothing when nothing was sent.
    std::optional<HistoryRow> row;
    /// Why a reply that came does not count as the controller's consent; empty when it does.
    std::string objection{};
};

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

  private:
    CountdownPool& ticks_;
    Clock& clock_;
    double begun_;
    long taken_ms_ = 0;
    std::string sent_at_;
    std::string received_at_;
};

} // namespace pelvan
