// Bad requests and their answers on a line: what is sent may have a pause in it, and waiting for
// what must not come can be ended at any moment. The protocol's own exchanges go past this.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "serial/link.h"

namespace pelvan {

class LineTalk {
  public:
    /// `let_events_run` comes several times a second while nothing arrives; false ends the waiting.
    LineTalk(Link& link, std::int16_t channel, std::int16_t quiet_chars,
             std::function<bool()> let_events_run)
        : link_(link), channel_(channel), quiet_chars_(quiet_chars),
          let_events_run_(std::move(let_events_run)) {}

    /// Sends the parts with pauses between them, longer than any protocol allows, and returns the
    /// first reply; empty when none comes in time. Blocks for the pauses and up to `wait_ms`.
    [[nodiscard]] std::string ask(const std::vector<std::string>& parts, double wait_ms);
    /// How many bytes of its reply were dropped when the next part was sent.
    [[nodiscard]] std::size_t unread() const { return unread_; }
    /// Opens the port, so that the time of the first exchange is the controller's. What is wrong
    /// with it the exchange shows.
    void open() { static_cast<void>(link_.channels().open_port(channel_, true)); }

    // These hear the line that was used last.

    /// Waits so long, and forgets what comes.
    void rest(double ms);
    /// What has come and was not read yet.
    [[nodiscard]] std::string pending();
    /// What comes within this time while nothing is sent, to its end; empty for a silent line.
    [[nodiscard]] std::string listen_for(double ms);
    /// What comes until the line was silent for 250 ms; blocks up to a second.
    [[nodiscard]] std::string hear_out();

    /// Lets events run; false when all is to end.
    [[nodiscard]] bool goes_on() { return let_events_run_(); }
    /// Whether the port is closed or its line lost.
    [[nodiscard]] bool is_lost() const;
    /// Milliseconds that a character takes with the line's settings; 0 when they cannot be used.
    [[nodiscard]] double character_ms() const;
    /// The settings of the channel's port.
    [[nodiscard]] const std::string& settings() const;

  private:
    [[nodiscard]] std::string listen(double wait_ms, std::string heard);
    [[nodiscard]] std::string rest_of(std::string heard);

    Link& link_;
    std::int16_t channel_;
    std::int16_t quiet_chars_;
    std::function<bool()> let_events_run_;
    std::size_t unread_ = 0;
};

} // namespace pelvan
