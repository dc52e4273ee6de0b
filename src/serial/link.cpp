#include "serial/link.h"

#include <algorithm>

#include "platform/run_time_error.h"
#include "serial/trap.h"
#include "text/duration.h"

namespace pelvan {
namespace {

/// A controller that has said nothing for so long says nothing any more.
constexpr float kSilenceMs = 250;
constexpr float kMaxSilenceWaitMs = 1000;
constexpr double kSilenceCheckMs = 10; // between looks at the tick by who sleeps
/// How long after its time on the line an echo may come: adapters gather bytes.
constexpr double kEchoGraceMs = 100;

/// More than any device can send within a time-out of ten seconds; what follows stays in the port.
constexpr std::size_t kMaxReplyBytes = std::size_t{1} << 20;

/// Gives a countdown slot back however the collection ends; the pool would grow otherwise.
class CountdownSlot {
  public:
    CountdownSlot(CountdownPool& pool, float duration_ms)
        : pool_(pool), slot_(pool.start_countdown(duration_ms)) {}
    CountdownSlot(const CountdownSlot&) = delete;
    CountdownSlot& operator=(const CountdownSlot&) = delete;
    ~CountdownSlot() { pool_.stop_countdown(slot_); }
    [[nodiscard]] bool expired() { return pool_.countdown_expired(slot_); }

  private:
    CountdownPool& pool_;
    std::int16_t slot_;
};

/// What `transmit` does after a trapped error.
Resume after_error(const RunTimeError& error, SerialPort& port, Dialogs& dialogs) {
    switch (error.number()) {
    case error_number::kDeviceInputOutput:
    case error_number::kCommBufferFull:
        port.set_PortOpen(false);
        port.set_PortOpen(true);
        return Resume::Next;
    case error_number::kDeviceUnavailable:
        return Resume::Retry;
    case error_number::kHardwareNotAvailable:
        return Resume::Next;
    default:
        show_error_message(dialogs, error.number(), error.subject());
        return Resume::Next;
    }
}

} // namespace

bool Link::refused() {
    const std::string sentence = refusal();
    if (!sentence.empty()) dialogs_.message_box(sentence);
    return !sentence.empty();
}

std::string Link::transmit(std::int16_t channel, const std::string& command, float timeout_ms,
                           std::int16_t quiet_chars, const IsWhole& is_whole) {
    if (refused()) return {};
    std::string reply;
    channels_.keep_ports([&] {
        reply = exchange(command, {channel, timeout_ms, quiet_chars, is_whole});
    });
    return reply;
}

ExchangeWay Link::way_of(std::int16_t channel) const {
    ExchangeWay way = channels_.exchange_way(channel);
    if (keeps_echo_) way.echo = false;
    return way;
}

std::string Link::exchange(const std::string& command, Reading reading) {
    const std::int16_t port_index = channels_.open_port(reading.channel, true);
    stray_bytes_ = channels_.stray_bytes();
    cut_off_ = device_lost_ = false;
    echo_ = Echo::None;
    if (port_index < 0) return {};
    last_port_ = port_index;
    last_channel_ = reading.channel;
    SerialState& state = channels_.state();
    // The flag, the settle time and the way are the channel's own; the port may be a twin's.
    const bool toggles = state.gRtsToggle[checked_index(reading.channel, kChannelLimit)];
    const float settle = state.gCharTime[checked_index(reading.channel, kChannelLimit)];
    const ExchangeWay way = way_of(reading.channel);
    LineRecord& record = channels_.line_record(port_index);
    ChannelPort heard(*state.gCommDevice[static_cast<std::size_t>(port_index)], record, way);
    SerialPort& port = heard.port();
    FrameExchange frames(port, countdowns_.tick(), record, way);

    note_outage(port);
    // Before the discarding: what comes while somebody is told is no part of the reply.
    if (port.PortOpen()) {
        ++writes_;
        sending.raise();
    }
    ErrorTrap trap(log_, dialogs_, "transmit");
    const auto guarded = [&](auto&& statement) {
        trap.run(statement,
                 [&](const RunTimeError& error) { return after_error(error, port, dialogs_); });
    };
    if (way.echo) guarded([&] { begin_echo(port, record.echo); });
    if (way.complete) {
        guarded([&] { stray_bytes_ = frames.keep_distance(); });
    } else {
        stray_bytes_ += waiting_bytes(port); // that came meanwhile
        guarded([&] { port.set_InBufferCount(0); });
    }
    if (toggles) guarded([&] { port.EscapeCommFunction(EscapeCode::SETRTS); });
    bool sent = true; // but for errors, which are told already
    const double begun_ms = countdowns_.tick().precise_ms();
    guarded([&] { sent = send_out(port, record, way, command, reading.timeout_ms); });
    if (way.complete) frames.sent(way.own_handshake ? 0 : command.size());
    if (toggles) {
        hold_rts(command.size(), settle, begun_ms, way);
        guarded([&] { port.EscapeCommFunction(EscapeCode::CLRRTS); });
    }
    std::string reply;
    if (sent) guarded([&] { reply = collect(port, frames, way, reading); });
    // RTS stays raised between exchanges; it is down only while a reply is awaited.
    if (toggles) guarded([&] { port.EscapeCommFunction(EscapeCode::SETRTS); });
    device_lost_ = port.lost();
    if (device_lost_) note_outage(port);
    return way.echo && sent && port.PortOpen() ? judged(std::move(reply), record.echo, reading)
                                               : reply;
}

void Link::note_outage(SerialPort& port) {
    Usage& usage = usage_[port.CommPort()];
    const double now_ms = countdowns_.tick().precise_ms();
    if (!port.PortOpen() || port.lost()) {
        if (!usage.gone_since_ms) usage.gone_since_ms = now_ms;
        return;
    }
    const bool was_open = std::exchange(usage.was_open, true);
    if (!usage.gone_since_ms) return;
    const Outage outage{now_ms - *std::exchange(usage.gone_since_ms, {}), was_open};
    if (remark_.empty()) remark_ = outage_sentence(outage);
    device_back.raise(outage);
}

/// What came of earlier echoes is looked at before it is said that the rest comes no more.
void Link::begin_echo(SerialPort& port, EchoFilter& echo) {
    if (port.PortOpen() && !port.lost()) static_cast<void>(port.InBufferCount());
    echo.begin(countdowns_.tick().precise_ms());
}

void Link::expect_echo(EchoFilter& echo, const std::string& command, const ExchangeWay& way) {
    const double wire_ms = static_cast<double>(command.size()) * way.character_ms;
    echo.sent(command, countdowns_.tick().precise_ms() + wire_ms + kEchoGraceMs);
}

std::string Link::judged(std::string reply, EchoFilter& echo, const Reading& reading) {
    const bool whole = reading.is_whole && reading.is_whole(reply);
    const bool counts = echo.judge(reply, whole, countdowns_.tick().precise_ms());
    echo_ = echo.echo();
    surely_echoes_ = echo.echoes();
    if (remark_.empty()) remark_ = echo.remark();
    return counts ? std::move(reply) : std::string();
}

void Link::hold_rts(std::size_t bytes, float settle, double begun_ms, const ExchangeWay& way) {
    float duration_ms = static_cast<float>(bytes) * settle;
    // Settle times are rounded, to none from 38400 baud on: RTS would fall while bytes go out.
    if (way.complete)
        duration_ms =
            std::max(duration_ms, static_cast<float>(bytes) * static_cast<float>(way.character_ms));
    // Sent byte by byte, most of them are out already.
    if (way.own_handshake)
        duration_ms -= static_cast<float>(countdowns_.tick().precise_ms() - begun_ms);
    if (way.complete)
        countdowns_.tick().sleep_for_ms(static_cast<double>(duration_ms));
    else
        countdowns_.wait(duration_ms);
}

/// False when the device had stopped it for too long.
bool Link::send_out(SerialPort& port, LineRecord& record, const ExchangeWay& way,
                    const std::string& command, float timeout_ms) {
    if (way.echo) expect_echo(record.echo, command, way);
    if (!way.own_handshake) {
        port.set_Output(command);
        return true;
    }
    const auto patience_ms = static_cast<double>(timeout_ms);
    const std::size_t out =
        record.handshake.send(port, countdowns_.tick(), command, {way.character_ms, patience_ms});
    if (out == command.size()) return true;
    remark_ = "The device has stopped the sending (XOFF) and not let it go on within " +
              time_span_text(patience_ms) + ": " + std::to_string(out) + " of " +
              std::to_string(command.size()) + " bytes were sent.";
    return false;
}

std::string Link::collect(SerialPort& port, FrameExchange& frames, const ExchangeWay& way,
                          const Reading& reading) {
    const float settle = channels_.state().gCharTime[checked_index(reading.channel, kChannelLimit)];
    Lumps& lumps = channels_.lumps(port.CommPort());
    if (!way.complete) {
        first_bytes_ = 0;
        std::string reply = receive_reply(port, settle, reading.timeout_ms, reading.quiet_chars);
        lumps.add({first_bytes_, 0});
        return reply;
    }
    const float quiet_ms = static_cast<float>(reading.quiet_chars) * settle;
    std::string reply = frames.collect(static_cast<double>(reading.timeout_ms),
                                       static_cast<double>(quiet_ms), reading.is_whole);
    lumps.add(frames.lumps());
    cut_off_ = frames.cut_off();
    return reply;
}

std::string Link::receive_more(std::int16_t channel, float timeout_ms, std::int16_t quiet_chars,
                               const IsWhole& is_whole) {
    if (refused()) return {};
    SerialState& state = channels_.state();
    const auto last = static_cast<std::size_t>(last_port_);
    if (last >= state.gCommDevice.size()) return {}; // the ports were rebuilt
    const ExchangeWay way = way_of(channel);
    LineRecord& record = channels_.line_record(last_port_);
    ChannelPort heard(*state.gCommDevice[last], record, way);
    SerialPort& port = heard.port();
    FrameExchange frames(port, countdowns_.tick(), record, way);
    ErrorTrap trap(log_, dialogs_, "transmit");
    std::string reply;
    channels_.keep_ports([&] {
        trap.run(
            [&] {
                reply = collect(port, frames, way, {channel, timeout_ms, quiet_chars, is_whole});
            },
            [&](const RunTimeError& error) { return after_error(error, port, dialogs_); });
    });
    return reply;
}

Silence Link::let_fall_silent() {
    const auto& devices = channels_.state().gCommDevice;
    const auto last = static_cast<std::size_t>(last_port_);
    if (last >= devices.size() || !devices[last]->PortOpen() || !refusal().empty()) return {};
    Silence result;
    ErrorTrap trap(log_, dialogs_, "transmit");
    ChannelPort heard(*devices[last], channels_.line_record(last_port_), way_of(last_channel_));
    trap.run([&] { discard_until_silent(heard.port(), result); },
             [](const RunTimeError&) { return Resume::Leave; });
    return result;
}

void Link::discard_until_silent(SerialPort& port, Silence& result) {
    const bool sleeps = channels_.exchange_way(last_channel_).complete;
    CountdownSlot overall(countdowns_, kMaxSilenceWaitMs);
    while (!overall.expired()) {
        CountdownSlot silence(countdowns_, kSilenceMs);
        while (port.InBufferCount() == 0) {
            if (silence.expired()) return;
            if (sleeps) port.wait_for_input(kSilenceCheckMs);
        }
        result.discarded += port.Input().size();
    }
    result.silent = false;
}

std::string Link::receive_reply(SerialPort& port, float char_time, float timeout_ms,
                                std::int16_t quiet_chars) {
    CountdownSlot overall(countdowns_, timeout_ms);
    const float quiet_ms = static_cast<float>(quiet_chars) * char_time;
    std::string reply;
    bool more = cut_off_ = false;
    while (reply.empty() && !overall.expired()) {
        while ((more = port.InBufferCount() >= 1) && reply.size() < kMaxReplyBytes &&
               !overall.expired()) {
            const bool first = reply.empty();
            reply += port.Input();
            if (first) first_bytes_ = reply.size();
            countdowns_.wait(quiet_ms);
        }
    }
    cut_off_ = more && !reply.empty();
    return reply;
}

} // namespace pelvan
