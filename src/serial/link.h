// The one exchange with a controller: open, discard, write, collect until the line is quiet, or, on
// channels that are set to it, until the reply's frame is complete (frame_exchange.h). Every tool
// has a link of its own, under its name; all share the channel table. A tool whose work must not be
// mixed with others' claims the lines for as long as it lasts. Replies are not parsed here.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <utility>

#include "serial/channel_port.h"
#include "serial/channel_table.h"
#include "serial/countdown.h"
#include "serial/outage.h"

namespace pelvan {

/// How waiting for silence ended.
struct Silence {
    /// False when bytes went on coming until the waiting ended.
    bool silent = true;
    /// Bytes that came meanwhile.
    std::size_t discarded = 0;
};

class Link {
  public:
    /// `user` names the tool where others are refused because of it.
    Link(ChannelTable& channels, CountdownPool& countdowns, Dialogs& dialogs, ErrorLog& log,
         std::string user = "another window")
        : channels_(channels), countdowns_(countdowns), dialogs_(dialogs),
          log_(log), user_{std::move(user)} {}
    Link(const Link&) = delete;
    Link& operator=(const Link&) = delete;
    virtual ~Link() = default;

    /// The lines for this tool alone, and no rebuild of the ports, for as long as the claim is
    /// held; an empty claim when another tool has them (`refusal`).
    LineClaim claim() { return channels_.line_use().claim(user_); }
    /// "The line is in use by Save/Restore Setup." while another tool has claimed the lines, else
    /// empty. Whoever can tell it better than a message box does looks here before `transmit`.
    [[nodiscard]] std::string refusal() const { return channels_.line_use().refusal(&user_); }

    [[nodiscard]] TickSource& tick() { return countdowns_.tick(); }
    /// The tool's name.
    [[nodiscard]] const std::string& user() const { return user_.name; }

    /// Sends the framed bytes and returns what arrives, empty when nothing does.
    ///
    /// Blocks, without yielding, up to `timeout_ms` plus the quiet pause (and the RTS hold). The
    /// reply ends after `quiet_chars` settle times without a byte. Errors of the port are logged
    /// and shown, never raised; an empty result is all that the caller sees of them. So is a line
    /// that another tool has claimed: `refusal` is shown, and the line is not touched.
    ///
    /// On a channel that is set to complete frames the reply ends when `is_whole` says so, else
    /// after the same pause (20 ms at least), and waiting sleeps.
    ///
    /// On a channel that is set to an echo no byte of it is in the result, which is empty when the
    /// echo differed from what was sent. `is_whole` tells a reply without an echo from that.
    virtual std::string transmit(std::int16_t channel, const std::string& command, float timeout_ms,
                                 std::int16_t quiet_chars, const IsWhole& is_whole = {});

    /// Collects what comes after the reply that `transmit` returned last, for answers that come in
    /// several parts; sends and discards nothing. Blocks and treats errors as `transmit` does.
    virtual std::string receive_more(std::int16_t channel, float timeout_ms,
                                     std::int16_t quiet_chars, const IsWhole& is_whole = {});

    /// Discards what comes on the line that `transmit` used last until it was silent for 250 ms,
    /// at most 1 s. For use after an attempt that timed out or whose reply was a late one, so that
    /// the next request does not take an answer to an earlier one for its own. Blocks; errors of
    /// the port are logged and end it, the next exchange meets and shows them.
    Silence let_fall_silent();

    /// The collector alone, for a port that was written to or that raised its receive event.
    /// `char_time` is the settle time in milliseconds. Raises the port's errors.
    std::string receive_reply(SerialPort& port, float char_time, float timeout_ms,
                              std::int16_t quiet_chars);

    /// Raised by `transmit` before its bytes go out, when the port is open for them: whoever shows
    /// that something is sent does it here. Whoever subscribes makes the exchange wait for it.
    Event<> sending;
    /// Raised by `transmit` when it finds a port open that earlier ones could not use. The remark
    /// says so too.
    Event<const Outage&> device_back;
    /// How often `transmit` has written to a port. Unchanged by one that found none open.
    [[nodiscard]] unsigned long writes() const { return writes_; }

    /// What was wrong with the line in the exchanges since this was asked last, in sentences; the
    /// first of it, empty when nothing was.
    [[nodiscard]] std::string take_remark() { return std::exchange(remark_, {}); }
    /// What became of the echo in the last `transmit`; `None` on a channel that is set to none.
    [[nodiscard]] Echo echo() const { return echo_; }
    /// Whether the line of the last `transmit` that expected an echo has proved to give one.
    [[nodiscard]] bool surely_echoes() const { return surely_echoes_; }
    /// While it lives, echoes are left in what comes: for whoever tests for them.
    class EchoKept {
      public:
        explicit EchoKept(Link& link) : link_(link) { link_.keeps_echo_ = true; }
        EchoKept(const EchoKept&) = delete;
        EchoKept& operator=(const EchoKept&) = delete;
        ~EchoKept() { link_.keeps_echo_ = false; }

      private:
        Link& link_;
    };

    /// Whether the reply that was collected last ended because its time or its room did, and not
    /// with a pause or its frame: bytes were still coming.
    [[nodiscard]] bool cut_off() const { return cut_off_; }

    /// Whether the device went in the last `transmit`: what came may be a part of the reply.
    [[nodiscard]] bool device_lost() const { return device_lost_; }

    /// How many bytes stood unread when the last `transmit` began: an answer that came too late or
    /// twice.
    [[nodiscard]] std::size_t stray_bytes() const { return stray_bytes_; }

    [[nodiscard]] CountdownPool& countdowns() { return countdowns_; }
    [[nodiscard]] ChannelTable& channels() { return channels_; }

  private:
    [[nodiscard]] bool refused();
    struct Reading {
        std::int16_t channel;
        float timeout_ms;
        std::int16_t quiet_chars;
        const IsWhole& is_whole;
    };
    std::string exchange(const std::string& command, Reading reading);
    void note_outage(SerialPort& port);
    [[nodiscard]] ExchangeWay way_of(std::int16_t channel) const;
    void begin_echo(SerialPort& port, EchoFilter& echo);
    void expect_echo(EchoFilter& echo, const std::string& command, const ExchangeWay& way);
    [[nodiscard]] std::string judged(std::string reply, EchoFilter& echo, const Reading& reading);
    [[nodiscard]] std::string collect(SerialPort& port, FrameExchange& frames,
                                      const ExchangeWay& way, const Reading& reading);
    void hold_rts(std::size_t bytes, float settle, double begun_ms, const ExchangeWay& way);
    [[nodiscard]] bool send_out(SerialPort& port, LineRecord& record, const ExchangeWay& way,
                                const std::string& command, float timeout_ms);
    void discard_until_silent(SerialPort& port, Silence& result);

    ChannelTable& channels_;
    CountdownPool& countdowns_;
    Dialogs& dialogs_;
    ErrorLog& log_;
    LineUser user_;
    std::size_t stray_bytes_ = 0;
    unsigned long writes_ = 0;
    bool keeps_echo_ = false;
    bool cut_off_ = false;
    bool device_lost_ = false;
    Echo echo_ = Echo::None;
    bool surely_echoes_ = false;
    std::string remark_;
    struct Usage {
        bool was_open = false;
        std::optional<double> gone_since_ms; // by the precise time
    };
    std::map<std::int16_t, Usage> usage_; // by port number
    // A number that has never opened may stand for another device then.
    Subscription rebuilding_ = channels_.before_rebuild.subscribe(
        [this] { std::erase_if(usage_, [](const auto& each) { return !each.second.was_open; }); });
    std::size_t first_bytes_ = 0;   // that came at once, of the last reply that a pause ended
    std::int16_t last_channel_ = 0; // of the last `transmit`
    std::int16_t last_port_ = 0;    // index of the object that it used
};

} // namespace pelvan
