// The one exchange with a controller: open, discard, write, collect until the line is quiet. Every
// tool goes through it. Replies are not parsed here.
#pragma once

#include <string>

#include "serial/channel_table.h"
#include "serial/countdown.h"

namespace pelvan {

class Link {
  public:
    Link(ChannelTable& channels, CountdownPool& countdowns, Dialogs& dialogs, ErrorLog& log)
        : channels_(channels), countdowns_(countdowns), dialogs_(dialogs), log_(log) {}
    virtual ~Link() = default;

    /// Sends the framed bytes and returns what arrives, empty when nothing does.
    ///
    /// Blocks, without yielding, up to `timeout_ms` plus the quiet pause (and the RTS hold). The
    /// reply ends after `quiet_chars` settle times without a byte. Errors of the port are logged
    /// and shown, never raised; an empty result is all that the caller sees of them.
    virtual std::string transmit(std::int16_t channel, const std::string& command, float timeout_ms,
                                 std::int16_t quiet_chars);

    /// Collects what comes after the reply that `transmit` returned last, for answers that come in
    /// several parts; sends and discards nothing. Blocks and treats errors as `transmit` does.
    virtual std::string receive_more(std::int16_t channel, float timeout_ms,
                                     std::int16_t quiet_chars);

    /// The collector alone, for a port that was written to or that raised its receive event.
    /// `char_time` is the settle time in milliseconds. Raises the port's errors.
    std::string receive_reply(SerialPort& port, float char_time, float timeout_ms,
                              std::int16_t quiet_chars);

    [[nodiscard]] CountdownPool& countdowns() { return countdowns_; }
    [[nodiscard]] ChannelTable& channels() { return channels_; }

  private:
    ChannelTable& channels_;
    CountdownPool& countdowns_;
    Dialogs& dialogs_;
    ErrorLog& log_;
    std::int16_t last_port_ = 0; // index of the object that the last `transmit` used
};

} // namespace pelvan
