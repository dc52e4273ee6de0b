#include "scan/scan_line.h"

#include <algorithm>
#include <utility>

namespace pelvan {
namespace {

constexpr double kSliceMs = 10;
constexpr double kMaxSilences = 4; // so long a silence is waited for
constexpr int kToggle = 2;         // line mode

std::string_view without_echo(const std::string& request, std::string_view bytes) {
    return bytes.starts_with(request) ? bytes.substr(request.size()) : bytes;
}

} // namespace

ScanLine::ScanLine(std::unique_ptr<SerialPort> port, TickSource& tick, const ScanOptions& options,
                   std::function<bool()> go_on)
    : port_(std::move(port)), tick_(tick), toggles_(options.line_mode == kToggle),
      over_network_(options.over_network), go_on_(std::move(go_on)) {
    port_->set_CommPort(options.port);
    port_->set_DTREnable(options.line_mode != 0);
    port_->set_RTSEnable(options.line_mode == 1);
    // Without XON/XOFF, in Xon too: one byte of noise would stop all that is sent.
    port_->set_Handshaking(0);
}

void ScanLine::open(const LineSettings& settings) {
    const std::string text = settings_text(settings);
    if (port_->PortOpen() && port_->Settings() == text) return;
    if (port_->PortOpen()) port_->set_PortOpen(false);
    port_->set_Settings(text);
    way_ = exchange_way("COMPLETE", text);
    if (over_network_) way_.silence_ms = kNetworkSilenceMs;
    record_ = {};
    port_->set_PortOpen(true);
}

bool ScanLine::go_on() {
    if (!stopped_) stopped_ = !go_on_();
    return !stopped_;
}

void ScanLine::rest(double ms) {
    const double until_ms = tick_.precise_ms() + ms;
    for (;;) {
        const double left_ms = until_ms - tick_.precise_ms();
        if (left_ms > 0) tick_.sleep_for_ms(std::min(left_ms, kSliceMs));
        // Nobody is asked shortly before the end, which must not come late.
        if (left_ms <= kSliceMs) return;
        if (left_ms > 2 * kSliceMs && !go_on()) return;
    }
}

void ScanLine::send(FrameExchange& frames, const std::string& bytes) {
    if (toggles_) port_->EscapeCommFunction(EscapeCode::SETRTS);
    port_->set_Output(bytes);
    frames.sent(bytes.size());
    if (!toggles_) return;
    rest(wire_ms(bytes));
    port_->EscapeCommFunction(EscapeCode::CLRRTS);
}

std::string ScanLine::collect(FrameExchange& frames, double until_ms, const IsWhole& is_whole) {
    for (;;) {
        const double left_ms = std::max(until_ms - tick_.precise_ms(), 0.0);
        std::string bytes = frames.collect(std::min(left_ms, kSliceMs), 0, is_whole);
        if (!bytes.empty()) arrived_ms_ = record_.last_byte_ms;
        if (!bytes.empty() || left_ms <= 0 || !go_on()) return bytes;
    }
}

Heard ScanLine::ask(ScanProbe& probe, int address, double patience_ms) {
    // Other controllers are no measure for what comes too soon, nor for how long a reply is.
    record_.fastest_ms = 0;
    record_.last_reply = 0;
    FrameExchange frames(*port_, tick_, record_, way_);
    rest(record_.last_byte_ms + way_.distance_ms - tick_.precise_ms());
    if (!go_on()) return {{}, 0, false};
    if (port_->InBufferCount() > 0) return {collect(frames, tick_.precise_ms(), {}), 0, false};
    send(frames, probe.request(address));
    sent_ms_ = record_.last_byte_ms;
    return await(probe, address, patience_ms);
}

Heard ScanLine::await(ScanProbe& probe, int address, double patience_ms) {
    FrameExchange frames(*port_, tick_, record_, way_);
    const std::string request = probe.request(address);
    const double until_ms = sent_ms_ + patience_ms;
    const IsWhole is_whole = [&](std::string_view received) {
        const std::string_view bytes = without_echo(request, received);
        return !go_on() || (probe.checked() && probe.answer(address, bytes).has_value());
    };
    std::string bytes = collect(frames, until_ms, is_whole);
    // Two-wire converters hear what they send; the answer follows in its own time.
    if (bytes == request) bytes += collect(frames, until_ms, is_whole);
    Heard heard{std::string(without_echo(request, bytes))};
    echoes_ = echoes_ || heard.bytes.size() < bytes.size();
    const double taken_ms = record_.last_byte_ms - sent_ms_ - wire_ms(heard.bytes);
    heard.reply_ms = std::max(taken_ms, 0.0);
    if (const std::string closing = probe.closing();
        !closing.empty() && (stopped_ || !heard.bytes.empty())) {
        send(frames, closing);
        // The closing of the port would throw away what is not out yet.
        if (stopped_) tick_.sleep_for_ms(wire_ms(closing));
    }
    return heard;
}

std::string ScanLine::listen(double ms) {
    FrameExchange frames(*port_, tick_, record_, way_);
    return collect(frames, tick_.precise_ms() + ms, [this](std::string_view) { return !go_on(); });
}

bool ScanLine::fall_silent(std::string& taken, double silence_ms) {
    silence_ms = std::max(silence_ms, way_.silence_ms);
    const double end_ms = tick_.precise_ms() + kMaxSilences * silence_ms;
    double until_ms = tick_.precise_ms() + silence_ms;
    while (go_on()) {
        const double now_ms = tick_.precise_ms();
        if (port_->InBufferCount() > 0) {
            if (now_ms >= end_ms) return false;
            taken += port_->Input();
            arrived_ms_ = now_ms;
            until_ms = now_ms + silence_ms;
        } else if (now_ms >= until_ms) {
            break;
        } else {
            port_->wait_for_input(std::min(kSliceMs, until_ms - now_ms));
        }
    }
    return true;
}

} // namespace pelvan
