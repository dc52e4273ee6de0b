#include <algorithm>
#include <cmath>

#include "listen/listen_form.h"
#include "platform/serial_line.h"
#include "platform/text_file.h"
#include "text/numbers.h"

namespace pelvan {
namespace {

/// Settle times of silence that end a burst.
constexpr std::int16_t kQuietChars = 4;
constexpr int kLineLimit = 10000;
constexpr float kFirstMinimumGapMs = 10000;
/// Stands for a time of 0, by which nothing can be divided.
constexpr double kNearlyNothing = 0.0001;
constexpr double kMsPerMinute = 60000;
constexpr double kMsPerSecond = 1000;

enum Format { kDecimal, kHex, kRawBytes };
constexpr int kToDevice = 0;

std::string raw_text(const std::string& bytes) {
    std::string out;
    for (const char byte : bytes) {
        if (!out.empty()) out += ' ';
        out += std::to_string(static_cast<unsigned char>(byte));
    }
    return out;
}

} // namespace

void frm_Listen::ListenStart(std::int16_t channel) {
    if (state_.gListening) ListenStop(); // the port of another channel must not go on calling
    state_.gListenDevice = nullptr;
    SerialState& serial = link_.channels().state();
    close_lost(channel);
    state_.gListening = true;
    state_.gListenStarted = false;
    state_.gListenCharTime = serial.gCharTime[checked_index(channel, kChannelLimit)];
    // A channel that is not built becomes 0, and a channel that shares its port is listened on
    // through the object that has the port open.
    const std::int16_t port_index = link_.channels().open_port(channel);
    SerialPort& port = *serial.gCommDevice[checked_index(port_index, serial.gCommDevice.size())];
    state_.gListenDevice = &port;
    state_.gListenChannel = channel;
    if (!port.PortOpen()) {
        ListenStop();
        lbl_Status.set_Caption("Not listening: the port could not be opened.");
        return;
    }
    lbl_Status.set_Caption("Listening on channel " + std::to_string(channel) + ", port " +
                           std::to_string(port.CommPort()) + ", " + port.Settings() + ".");
    port.OnComm = [this] {
        if (state_.gListening) ListenProcessEvent();
    };
    port.set_RThreshold(1);
}

/// A port whose line went while nobody listened is open all the same, and would not be opened anew.
void frm_Listen::close_lost(std::int16_t channel) {
    const auto& devices = link_.channels().state().gCommDevice;
    if (devices.empty()) return;
    const std::size_t known = channel >= 0 ? static_cast<std::size_t>(channel) : devices.size();
    const std::int16_t number = devices[known < devices.size() ? known : 0]->CommPort();
    for (SerialPort* device : devices)
        if (device->CommPort() == number && device->lost()) device->set_PortOpen(false);
}

void frm_Listen::ListenStop() {
    if (state_.gListening) lbl_Status.set_Caption("Not listening.");
    state_.gListening = false;
    if (state_.gListenDevice) state_.gListenDevice->set_RThreshold(0);
}

void frm_Listen::ports_rebuilt() {
    const bool listened = state_.gListening;
    ListenStop();
    state_.gListenDevice = nullptr;
    if (listened) lbl_Status.set_Caption("Listening stopped: the ports were set up anew.");
}

void frm_Listen::port_closing(const SerialPort& port) {
    if (!state_.gListening || state_.gListenDevice != &port) return;
    ListenStop();
    lbl_Status.set_Caption("Listening stopped: another channel took the port over.");
}

void frm_Listen::ListenProcessEvent() {
    SerialPort& port = *state_.gListenDevice;
    port.set_RThreshold(0);
    CountdownPool& ticks = link_.countdowns();
    if (!state_.gListenStarted) begin_session();
    const double start = ticks.read_tick();
    const std::string text = collect(port);
    const double spent = tick_span(start, ticks.read_tick());
    std::optional<RunTimeError> log_failure;
    const Burst* burst = nullptr;
    // Deliberate: only what the Modbus channel hears is shown and logged; on the other channels the
    // bursts are counted and nothing else.
    if (state_.gListenChannel == kModbusChannel) {
        log_failure = show_burst(text);
        burst = &record(start, spent, text);
    }
    count_hit(start);
    port.set_RThreshold(1);
    // Last, for it may fail, and the burst counts and the listening goes on all the same.
    if (burst && traffic_changed) traffic_changed(burst);
    if (log_failure) throw RunTimeError(*log_failure);
}

void frm_Listen::begin_session() {
    ListenStats& stats = state_.gListenStats;
    stats.hit_count = 0;
    stats.spare = 0;
    stats.minimum_gap = kFirstMinimumGapMs;
    // Required: the last hit tick stays, so the first gap of a session is measured from the last
    // burst of the session before it, and that of the first session from 0.
    const double now = link_.countdowns().read_tick();
    stats.start_tick = static_cast<float>(now);
    state_.gListenStarted = true;
    traffic_.start(now, services_.clock.now());
}

std::string frm_Listen::collect(SerialPort& port) {
    try {
        return link_.receive_reply(port, state_.gListenCharTime, state_.gListenTimeout,
                                   kQuietChars);
    } catch (const RunTimeError&) {
        // A port that is lost stays open until it is closed: closed here, the next start opens it.
        ListenStop();
        port.set_PortOpen(false);
        lbl_Status.set_Caption("Listening stopped: the port failed.");
        throw;
    }
}

/// Adds the line; a log that cannot be written is switched off and its error handed back, so that
/// neither the line nor the counts suffer and the message comes once.
std::optional<RunTimeError> frm_Listen::show_burst(const std::string& text) {
    // Required: the list is emptied when it holds more than 10,000 lines, so it may hold 10,001.
    if (lst_CommsCommand.ListCount() > kLineLimit) clear_list();
    const std::string line = render(text);
    std::optional<RunTimeError> failure;
    if (Loglistenlist.Checked()) {
        try {
            ListenLogLine(line);
        } catch (const RunTimeError& error) {
            failure = error;
            Loglistenlist.set_Checked(false);
            lbl_Status.set_Caption("Logging switched off: listenlog.txt cannot be written.");
        }
    }
    lst_CommsCommand.AddItem(line);
    lst_CommsCommand.set_ListIndex(lst_CommsCommand.ListCount() - 1);
    return failure;
}

std::string frm_Listen::render(const std::string& text) {
    const std::int16_t is_request = opt_DataDirection.Value() == kToDevice ? 1 : 0;
    switch (opt_DataFormat.Value()) {
    case kHex:
        return modbus_.ModbusDecodeHex(is_request, text);
    case kRawBytes:
        return raw_text(text);
    default:
        return modbus_.ModbusDecodeDecimal(is_request, text);
    }
}

void frm_Listen::ListenLogLine(const std::string& line) {
    append_line(path_in(services_.application_directory, kLogFileName), line);
}

/// The last byte was there one quiet pause before the collector was content, or sooner, as the wire
/// needs no longer for so many bytes.
const Burst& frm_Listen::record(double start_tick, double spent_ms, const std::string& text) {
    const double quiet = static_cast<double>(kQuietChars) * state_.gListenCharTime;
    const double length = std::min(std::max(spent_ms - quiet, 0.0), wire_time(text.size()));
    const Burst& burst = traffic_.add(start_tick, length, text);
    lst_Times.AddItem(burst_note(burst));
    lst_Times.set_ListIndex(lst_Times.ListCount() - 1);
    return burst;
}

double frm_Listen::wire_time(std::size_t bytes) const {
    const auto settings = parse_line_settings(state_.gListenDevice->Settings());
    return settings ? static_cast<double>(bytes) * character_time_us(*settings) / 1000 : 0;
}

void frm_Listen::count_hit(double start_tick) {
    ListenStats& stats = state_.gListenStats;
    const double end = link_.countdowns().read_tick();
    stats.hit_count += 1;
    const double hit_time = end - start_tick;
    double elapsed = end - static_cast<double>(stats.start_tick);
    if (elapsed == 0) elapsed = kNearlyNothing;
    txt_HitCount.set_Text(plain_number(stats.hit_count));
    txt_TotalHitTime.set_Text(plain_single(elapsed / kMsPerSecond));
    txt_HitsPerMinute.set_Text(plain_number(kMsPerMinute / elapsed * stats.hit_count));
    txt_LastHitTime.set_Text(plain_single(hit_time));

    const double average = leading_number(txt_HitsPerMinute.Text());
    if (leading_number(txt_MaxHits.Text()) < average && stats.hit_count > 1)
        txt_MaxHits.set_Text(plain_number(std::floor(average)));

    const double gap = start_tick - static_cast<double>(stats.last_hit_tick);
    if (gap < static_cast<double>(stats.minimum_gap) && stats.hit_count > 1) {
        stats.minimum_gap = static_cast<float>(gap == 0 ? kNearlyNothing : gap);
        txt_BurstHitRate.set_Text(
            plain_number(std::floor(kMsPerMinute / static_cast<double>(stats.minimum_gap))));
    }
    stats.last_hit_tick = static_cast<float>(start_tick);
}

} // namespace pelvan
