#include "badrequests/line_talk.h"

#include <algorithm>

#include "platform/serial_line.h"
#include "platform/tick.h"
#include "serial/other_parity.h"

namespace pelvan {
namespace {

/// How late an end is noticed at most; adapters deliver in lumps that are shorter.
constexpr double kSliceMs = 50;
constexpr int kMaxSlices = 20; // of somebody who never ends
constexpr double kMinPauseMs = 100;
constexpr double kPauseCharacters = 10; // Modbus takes 3.5 for an end
constexpr double kPendingMs = 1;
constexpr double kSilenceMs = 250; // who has said nothing for so long says nothing any more
constexpr double kMaxSilenceWaitMs = 1000;

} // namespace

std::string LineTalk::ask(const std::vector<std::string>& parts, double wait_ms) {
    const auto exchange = [this](const std::string& bytes, double timeout_ms) {
        return link_.transmit(channel_, bytes, static_cast<float>(timeout_ms), quiet_chars_);
    };
    std::string heard;
    unread_ = 0;
    for (std::size_t i = 0; i < parts.size(); ++i) {
        const bool last = i + 1 == parts.size();
        const double pause_ms =
            std::max(kMinPauseMs, kPauseCharacters * character_ms()) +
            static_cast<double>(parts[i].size()) * character_ms(); // these are on their way
        heard += exchange(parts[i], last ? std::min(kSliceMs, wait_ms) : pause_ms);
        if (i > 0) unread_ += link_.stray_bytes();
        if (is_lost()) return heard;
    }
    return rest_of(listen(wait_ms - kSliceMs, std::move(heard)));
}

/// The end of a slice may have cut what began in it.
std::string LineTalk::rest_of(std::string heard) {
    for (int i = 0; i < kMaxSlices && !heard.empty() && !is_lost(); ++i) {
        const std::string more =
            link_.receive_more(channel_, static_cast<float>(kSliceMs), quiet_chars_);
        if (more.empty()) break;
        heard += more;
    }
    return heard;
}

std::string LineTalk::listen(double wait_ms, std::string heard) {
    CountdownPool& ticks = link_.countdowns();
    const double begun = ticks.read_tick();
    while (heard.empty() && !is_lost() && let_events_run_()) {
        const double left_ms = wait_ms - tick_span(begun, ticks.read_tick());
        if (left_ms <= 0) break;
        heard = link_.receive_more(channel_, static_cast<float>(std::min(left_ms, kSliceMs)),
                                   quiet_chars_);
    }
    return heard;
}

void LineTalk::rest(double ms) {
    CountdownPool& ticks = link_.countdowns();
    const double begun = ticks.read_tick();
    while (tick_span(begun, ticks.read_tick()) < ms && !is_lost() && let_events_run_())
        static_cast<void>(link_.receive_more(channel_, static_cast<float>(kSliceMs), 1));
}

std::string LineTalk::pending() {
    return link_.receive_more(channel_, static_cast<float>(kPendingMs), 1);
}

std::string LineTalk::listen_for(double ms) {
    std::string heard = listen(ms, {});
    return heard.empty() ? heard : heard + hear_out();
}

std::string LineTalk::hear_out() {
    CountdownPool& ticks = link_.countdowns();
    const double begun = ticks.read_tick();
    std::string heard;
    for (;;) {
        const std::string more = listen(kSilenceMs, {});
        heard += more;
        if (more.empty() || tick_span(begun, ticks.read_tick()) >= kMaxSilenceWaitMs) return heard;
    }
}

bool LineTalk::is_lost() const {
    if (link_.channels().state().gCommDevice.empty()) return true;
    SerialPort& port = port_in_use(link_.channels(), channel_);
    return !port.PortOpen() || port.lost();
}

double LineTalk::character_ms() const {
    const auto line = parse_line_settings(settings());
    return line ? character_time_us(*line) / 1000 : 0;
}

const std::string& LineTalk::settings() const {
    return port_in_use(link_.channels(), channel_).Settings();
}

} // namespace pelvan
