#include "listen/listen_monitor.h"

#include <algorithm>

#include "listen/timed_port.h"
#include "platform/serial_line.h"
#include "platform/text_file.h"
#include "serial/outage.h"
#include "text/bytes.h"

namespace pelvan {
namespace {

/// Settle times of silence that end a burst.
constexpr std::int16_t kQuietChars = 4;
/// How often a device that has gone is looked for.
constexpr double kLookEveryMs = 250;
/// A port over the network may take its time to say no, and nothing else happens meanwhile: so many
/// times as long is it left alone then.
constexpr double kPauseBehindLook = 20;

} // namespace

ListenMonitor::ListenMonitor(Link& link, Modbus& modbus, ListenState& state, Clock& clock,
                             std::string directory)
    : link_(link), modbus_(modbus), state_(state), clock_(clock), directory_(std::move(directory)) {
    choose_timeout(0); // never 0, which would end every burst before its first byte
}

void ListenMonitor::ListenStart(std::int16_t channel) {
    if (state_.gListening) ListenStop(); // the port of another channel must not go on calling
    state_.gListenDevice = nullptr;
    // Opening could close the port of whoever works on the line.
    const std::string refusal = link_.channels().line_use().refusal(nullptr);
    if (!refusal.empty()) return end("Not listening. " + refusal);
    link_.channels().keep_ports([this, channel] {
        close_lost(channel);
        begin_listening(channel);
    });
}

void ListenMonitor::begin_listening(std::int16_t channel) {
    state_.gListening = true;
    state_.gListenStarted = cut_burst_ = false;
    try {
        open_channel(channel);
    } catch (const RunTimeError&) {
        end("Not listening: there is no such channel.");
        throw;
    }
    SerialPort& port = *state_.gListenDevice;
    if (!port.PortOpen()) return end("Not listening: the port could not be opened.");
    line_errors_.begin(port);
    hear_port(port);
    tell_listening();
}

void ListenMonitor::hear_port(SerialPort& port) {
    received_ = port.OnComm.subscribe([this] {
        if (state_.gListening) ListenProcessEvent();
    });
    port.set_RThreshold(1);
}

void ListenMonitor::tell_listening(const std::string& note) {
    if (gone_)
        return status_changed.raise("Listening waits: the device is gone since " + gone_->time +
                                    ". It goes on when the device is back.");
    const SerialPort& port = *state_.gListenDevice;
    status_changed.raise("Listening on channel " + std::to_string(state_.gListenChannel) +
                         ", port " + std::to_string(port.CommPort()) + ", " + port.Settings() +
                         "." + note);
}

/// What arrives meanwhile are answers to the tool that has the lines, and collecting one would keep
/// that tool from its next request.
void ListenMonitor::claim_changed() {
    if (!state_.gListening) return;
    const std::string refusal = link_.channels().line_use().refusal(nullptr);
    if (waiting_ == !refusal.empty()) return;
    waiting_ = !waiting_;
    state_.gListenDevice->set_RThreshold(waiting_ ? 0 : 1);
    if (waiting_)
        status_changed.raise("Listening waits. " + refusal);
    else
        tell_listening();
}

void ListenMonitor::open_channel(std::int16_t channel) {
    SerialState& serial = link_.channels().state();
    state_.gListenCharTime = serial.gCharTime[checked_index(channel, kChannelLimit)];
    // A channel that is not built becomes 0, and a channel that shares its port is listened on
    // through the object that has the port open.
    const std::int16_t port_index = link_.channels().open_port(channel);
    state_.gListenDevice = serial.gCommDevice[checked_index(port_index, serial.gCommDevice.size())];
    state_.gListenChannel = channel;
}

/// A port whose line went while nobody listened is open all the same, and would not be opened
/// again.
void ListenMonitor::close_lost(std::int16_t channel) {
    const auto& devices = link_.channels().state().gCommDevice;
    if (devices.empty()) return;
    const std::size_t known = channel >= 0 ? static_cast<std::size_t>(channel) : devices.size();
    const std::int16_t number = devices[known < devices.size() ? known : 0]->CommPort();
    for (SerialPort* device : devices)
        if (device->CommPort() == number && device->lost()) device->set_PortOpen(false);
}

void ListenMonitor::ListenStop() {
    if (state_.gListening) end("Not listening.");
}

void ListenMonitor::end(const std::string& status) {
    state_.gListening = false;
    traffic_.finish();
    waiting_ = false;
    gone_.reset();
    if (state_.gListenDevice) state_.gListenDevice->set_RThreshold(0);
    status_changed.raise(status);
}

void ListenMonitor::ports_rebuilt() {
    if (state_.gListening) end("Listening stopped: the ports were set up anew.");
    state_.gListenDevice = nullptr;
}

void ListenMonitor::port_closing(const SerialPort& port) {
    if (state_.gListening && state_.gListenDevice == &port)
        end("Listening stopped: another channel took the port over.");
}

void ListenMonitor::ListenProcessEvent() {
    SerialPort& port = *state_.gListenDevice;
    port.set_RThreshold(0);
    CountdownPool& ticks = link_.countdowns();
    const bool begins = !state_.gListenStarted;
    if (begins) begin_session();
    const double start = ticks.read_tick();
    if (const auto bytes = collect(port)) {
        note_flow();
        return take_in(start, *bytes);
    }
    if (begins) state_.gListenStarted = false; // a loss is no burst
    lose_device(port);
}

/// Once, because on a busy line some bursts end and others do not.
void ListenMonitor::note_flow() {
    if (cut_burst_ || !link_.cut_off()) return;
    cut_burst_ = true;
    tell_listening(" Bytes came without a pause, so that a burst was cut.");
}

void ListenMonitor::take_in(double start, const std::string& bytes) {
    CountdownPool& ticks = link_.countdowns();
    const double spent = tick_span(start, ticks.read_tick());
    std::optional<RunTimeError> log_failure;
    // Deliberate: only what arrives on the Modbus channel is shown and logged; on the other
    // channels the bursts are counted and nothing else.
    if (state_.gListenChannel == kModbusChannel) {
        const std::string line = render(bytes);
        log_failure = log(line);
        line_added.raise(line, record(start, spent, bytes));
    }
    statistics_.add(start, ticks.read_tick());
    line_errors_.look(*state_.gListenDevice);
    state_.gListenDevice->set_RThreshold(1);
    // Last, for it may fail, and the burst counts and the listening goes on all the same.
    hit_counted.raise();
    if (log_failure) throw RunTimeError(*log_failure);
}

/// Closed: a line that is held makes the system give an adapter that comes back another name.
void ListenMonitor::lose_device(SerialPort& port) {
    port.set_PortOpen(false);
    const double now = link_.countdowns().read_tick();
    gone_ = Gone{now, now, kLookEveryMs, time_text(clock_.now())};
    tell_listening();
}

/// Nobody is asked or told in a box: listening may go on for days without anybody watching.
void ListenMonitor::look_for_device() {
    const double now = link_.countdowns().read_tick();
    if (waiting_ || tick_span(gone_->looked_tick, now) < gone_->pause_ms) return;
    SerialPort* const port = reopened();
    if (port == nullptr) {
        gone_->looked_tick = link_.countdowns().read_tick();
        const double took = tick_span(now, gone_->looked_tick);
        gone_->pause_ms = std::max(kLookEveryMs, kPauseBehindLook * took);
        return;
    }
    const double away = tick_span(gone_->tick, now);
    gone_.reset();
    state_.gListenDevice = port;
    line_errors_.look(*port);
    hear_port(*port);
    tell_listening(" " + outage_sentence({away}));
}

/// The port that stands for the device again: another tool's command may have opened it, too.
SerialPort* ListenMonitor::reopened() {
    SerialPort& own = *state_.gListenDevice;
    for (SerialPort* port : link_.channels().state().gCommDevice)
        if (port->CommPort() == own.CommPort() && port->Settings() == own.Settings() &&
            port->PortOpen() && !port->lost())
            return port;
    try {
        own.set_PortOpen(false);
        own.set_PortOpen(true);
        return &own;
    } catch (const RunTimeError&) {
        return nullptr; // still away
    }
}

/// Required: the last hit tick stays, so the first gap of a session is measured from the last burst
/// of the session before it, and that of the first session from 0.
void ListenMonitor::begin_session() {
    const double now = link_.countdowns().read_tick();
    statistics_.begin(now);
    state_.gListenStarted = true;
    burst_times_.start(now, clock_.now());
    traffic_.start();
}

void ListenMonitor::settle() {
    if (!state_.gListening) return;
    SerialPort& port = *state_.gListenDevice;
    if (gone_)
        look_for_device();
    else if (port.lost() || (!port.PortOpen() && !waiting_))
        lose_device(port); // another tool's command has met the loss
    else
        line_errors_.look(port);
    if (state_.gListenStarted) traffic_.settle(burst_times_.moment(link_.countdowns().read_tick()));
}

/// Nothing when the device is gone.
std::optional<std::string> ListenMonitor::collect(SerialPort& port) {
    lumps_.clear();
    TimedPort timed(port, [this](std::size_t bytes) {
        const std::size_t before = lumps_.empty() ? 0 : lumps_.back().end;
        lumps_.push_back({link_.countdowns().read_tick(), before + bytes});
    });
    try {
        return link_.receive_reply(timed, state_.gListenCharTime, state_.gListenTimeout,
                                   kQuietChars);
    } catch (const RunTimeError&) {
        if (port.lost()) return {};
        end("Listening stopped: the port failed.");
        // A port that is lost stays open until it is closed: closed here, the next start opens it.
        port.set_PortOpen(false);
        throw;
    }
}

std::string ListenMonitor::render(const std::string& bytes) {
    const std::int16_t is_request = options.direction == ListenDirection::ToDevice ? 1 : 0;
    switch (options.format) {
    case ListenFormat::Hex:
        return modbus_.ModbusDecodeHex(is_request, bytes);
    case ListenFormat::Raw:
        return decimal_bytes(bytes);
    case ListenFormat::Decimal:
        break;
    }
    return modbus_.ModbusDecodeDecimal(is_request, bytes);
}

/// A log that cannot be written is switched off and its error handed back, so that neither the line
/// nor the counts suffer and the message comes once.
std::optional<RunTimeError> ListenMonitor::log(const std::string& line) {
    if (!options.log_to_file) return std::nullopt;
    try {
        ListenLogLine(line);
        ++logged_lines_;
    } catch (const RunTimeError& error) {
        options.log_to_file = false;
        status_changed.raise("Logging switched off: listenlog.txt cannot be written.");
        return error;
    }
    return std::nullopt;
}

void ListenMonitor::ListenLogLine(const std::string& line) {
    append_line(log_path(), line);
}

std::string ListenMonitor::log_path() const {
    return path_in(directory_, kLogFileName);
}

void ListenMonitor::set_log_to_file(bool on) {
    options.log_to_file = on;
    logged_lines_ = 0;
}

/// The last byte was there one quiet pause before the collector was content, or sooner, as the wire
/// needs no longer for so many bytes.
Burst ListenMonitor::record(double start_tick, double spent_ms, const std::string& bytes) {
    const double quiet = static_cast<double>(kQuietChars) * state_.gListenCharTime;
    const double length = std::min(std::max(spent_ms - quiet, 0.0), wire_time(bytes.size()));
    Burst burst = burst_times_.add(start_tick, length, bytes);
    hear(start_tick, burst, length, bytes);
    return burst;
}

/// What was read at one moment came after what was read before, and needed its time on the wire.
void ListenMonitor::hear(double start_tick, const Burst& burst, double length_ms,
                         const std::string& bytes) {
    double start = burst.start_ms;
    std::size_t begin = 0;
    for (const Lump& lump : lumps_) {
        const std::string_view piece = std::string_view(bytes).substr(begin, lump.end - begin);
        const double read = burst.start_ms + tick_span(start_tick, lump.tick);
        if (begin > 0) start = std::max(start, read - wire_time(piece.size()));
        const double end = lump.end == bytes.size() ? burst.start_ms + length_ms : read;
        traffic_.hear(start, std::max(start, end), piece);
        start = std::max(start, end);
        begin = lump.end;
    }
}

double ListenMonitor::wire_time(std::size_t bytes) const {
    const auto settings = parse_line_settings(state_.gListenDevice->Settings());
    return settings ? static_cast<double>(bytes) * character_time_us(*settings) / 1000 : 0;
}

void ListenMonitor::choose_timeout(int index) {
    state_.gListenTimeout = kListenTimeoutsMs[checked_index(index, kListenTimeoutsMs.size())];
}

void ListenMonitor::clear() {
    statistics_.clear();
    traffic_.clear();
    if (state_.gListening) line_errors_.begin(*state_.gListenDevice);
}

} // namespace pelvan
