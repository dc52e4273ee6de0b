#include "serial/channel_table.h"

#include <array>
#include <utility>

#include "config/device_map.h"
#include "network/network_address.h"
#include "platform/run_time_error.h"
#include "platform/serial_line.h"
#include "serial/channel_port.h"
#include "serial/trap.h"
#include "text/numbers.h"

namespace pelvan {
namespace {

constexpr std::size_t kMinSettingsLength = 9;
constexpr std::size_t kMaxSettingsLength = 11;
constexpr char kDefaultSettings[] = "9600,N,8,1";
constexpr char kNoPortData[] = "NO PORT DATA";
constexpr double kSettleNumerator = 15000;
constexpr std::int16_t kXonXoff = 1;
constexpr char kByProgram[] = "PROGRAM";

struct ModemMode {
    bool dtr;
    bool rts;
    std::int16_t handshaking;
    bool rts_toggle;
};

/// Row = value of a channel's " RTS Mode " key. The settings window knows rows 0 to 2 as
/// "RTS/DTR Clear", "RTS/DTR Set" and "RTS Toggle"; rows 3 to 5 are the same with XON/XOFF.
constexpr std::array<ModemMode, 6> kModemModes{{
    {false, false, 0, false},
    {true, true, 0, false},
    {true, false, 0, true},
    {false, false, 1, false},
    {true, true, 1, false},
    {true, false, 1, true},
}};

struct PortErrorText {
    int number;
    const char* text;
};

/// Texts of `open_port` for the port object's own errors; 8017 has none and gets the general
/// message.
constexpr std::array kPortErrorTexts{
    PortErrorText{8000, "OPERATION NOT VALID WHILE THE PORT IS OPEN"},
    PortErrorText{8001, "TIMEOUT VALUE MUST BE GREATER THAN ZERO"},
    PortErrorText{8002, "INVALID PORT NUMBER"},
    PortErrorText{8003, "PROPERTY AVAILABLE ONLY AT RUNTIME"},
    PortErrorText{8004, "PROPERTY IS READONLY AT RUNTIME"},
    PortErrorText{8005, "PORT ALREADY OPEN"},
    PortErrorText{8006, "THE DEVICE IDENTIFIER IS INVALID OR UNSUPPORTED"},
    PortErrorText{8007, "THE DEVICE'S BAUD RATE IS UNSUPPORTED"},
    PortErrorText{8008, "THE SPECIFIED BYTE SIZE IS INVALID"},
    PortErrorText{8009, "THE DEFAULT PARAMETERS ARE IN ERROR"},
    PortErrorText{8010, "THE HARDWARE IS NOT AVAILABLE(LOCKED BY ANOTHER DEVICE)"},
    PortErrorText{8011, "THE FUNCTION CANNOT ALLOCATE THE QUEUES"},
    PortErrorText{8012, "THE DEVICE IS NOT OPEN"},
    PortErrorText{8013, "THE DEVICE IS ALREADY OPEN"},
    PortErrorText{8014, "COULD NOT ENABLE COMM NOTIFICATION"},
    PortErrorText{8015, "COULD NOT SET COMM STATE"},
    PortErrorText{8016, "COULD NOT SET COMM EVENT MASK"},
    PortErrorText{8018, "OPERATION VALID ONLY WHEN THE PORT IS OPEN"},
    PortErrorText{8019, "DEVICE BUSY"},
    PortErrorText{8020, "ERROR READING COMM DEVICE"},
};

bool is_wrong_length(const std::string& settings) {
    return settings.size() < kMinSettingsLength || settings.size() > kMaxSettingsLength;
}

/// What `open_port` does after a trapped error of the port with this number.
Resume after_open_error(const RunTimeError& error, std::int16_t port_number, Dialogs& dialogs) {
    if (error.number() == error_number::kDeviceUnavailable) {
        const MessageAnswer answer = dialogs.message_box(
            "Cannot open comm port #" + std::to_string(port_number) + ", it is not available",
            "WARNING");
        // Tried again after every acknowledgement. Where nobody is there to give one, the
        // statement is tried again with the next exchange.
        return answer == MessageAnswer::Skip ? Resume::Leave : Resume::Retry;
    }
    for (const PortErrorText& row : kPortErrorTexts) {
        if (row.number != error.number()) continue;
        dialogs.message_box(row.text);
        return Resume::Leave;
    }
    show_error_message(dialogs, error.number(), error.subject());
    return Resume::Next;
}

/// Opens a port that is closed, or whose line is gone: it may have come back. Until a lost one has,
/// opening it raises 8020, which says better what has happened than what an opening says.
void open_or_reopen(SerialPort& port, LineRecord& record) {
    if (port.lost()) {
        record.lost = true;
        port.set_PortOpen(false);
    }
    if (port.PortOpen()) return;
    try {
        port.set_PortOpen(true);
        record.lost = false;
        record.handshake = {}; // whoever had stopped the sending may be another by now
        record.unread_by_handshake.clear();
        record.unread_by_echo.clear();
    } catch (const RunTimeError& error) {
        const bool away = error.number() == error_number::kInvalidPortNumber ||
                          error.number() == error_number::kDeviceUnavailable;
        if (record.lost && away)
            throw RunTimeError(error_number::kCannotReadDevice, error.subject());
        throw;
    }
}

} // namespace

std::vector<ChannelText> channel_texts(const ConfigState& config) {
    std::vector<ChannelText> channels;
    const auto text = [&](const std::string& key) {
        return ini_read_string(ini_key::kCommsSection, key, {}, config.gIniFile);
    };
    for (int n = 0; n < static_cast<int>(kChannelLimit); ++n) {
        ChannelText channel{n, text(ini_key::comm_port(n)), text(ini_key::port_setting(n)), {}};
        if (channel.port.empty() || channel.port == "0") break;
        if (is_wrong_length(channel.settings))
            channel.fault =
                std::string("not 9 to 11 characters, so ") + kDefaultSettings + " is used";
        else if (!parse_line_settings(channel.settings))
            channel.fault = "not understood, so the port will not open";
        channels.push_back(std::move(channel));
    }
    return channels;
}

void frm_Comms::load() {
    if (com_Device.empty()) extend();
}

void frm_Comms::unload() {
    if (!com_Device.empty()) element_changed.raise(nullptr);
    com_Device.clear();
}

SerialPort& frm_Comms::extend() {
    com_Device.push_back(factory_());
    SerialPort& created = *com_Device.back();
    element_changed.raise(&created);
    return created;
}

bool ChannelTable::init_comms() {
    if (const std::string refusal = line_use_.refusal(nullptr); !refusal.empty()) {
        dialogs_.message_box(refusal);
        return false;
    }
    rebuild_wanted_ = true;
    while (keepers_ == 0 && std::exchange(rebuild_wanted_, false)) {
        ++keepers_;
        const ScopeGuard leave([this] { --keepers_; });
        rebuild();
    }
    return true;
}

/// An error of a rebuild that was put off has nobody left to be raised to.
void ChannelTable::follow_up_rebuild() {
    if (keepers_ > 0 || !std::exchange(rebuild_wanted_, false)) return;
    ErrorTrap trap(log_, dialogs_, "init_comms");
    trap.run([this] { init_comms(); },
             [this](const RunTimeError& error) {
                 show_error_message(dialogs_, error.number(), error.subject());
                 return Resume::Leave;
             });
}

void ChannelTable::rebuild() {
    before_rebuild.raise();
    state_.gCommDevice.clear();
    ways_ = {};
    records_ = {};
    comms_.unload();
    comms_.load();
    int n = 0;
    while (build_channel(n))
        ++n;
    if (n > 0) return;
    state_.gCommDevice.push_back(comms_.com_Device.front().get());
    define_comms_control(0, 2, kDefaultSettings, "1");
    set_settle_time(0, kDefaultSettings);
}

bool ChannelTable::build_channel(int n) {
    std::int16_t port = 0;
    for (;;) {
        port = ini_read_int(ini_key::kCommsSection, ini_key::comm_port(n), 0, config_.gIniFile);
        if (port == 0) return false;
        if (is_port_number(port)) break;
        // Required: the same key is read again, so the message comes back after every
        // acknowledgement until somebody mends the file. Where nobody is there any more to give
        // one, the list ends.
        if (dialogs_.message_box("Port number is not valid in 'sub init_comms*'") ==
            MessageAnswer::Skip)
            return false;
    }
    std::string settings = ini_read_string(ini_key::kCommsSection, ini_key::port_setting(n),
                                           kNoPortData, config_.gIniFile);
    const std::string rts_mode = ini_read_string(ini_key::kCommsSection, ini_key::rts_mode(n),
                                                 kNoPortData, config_.gIniFile);
    if (is_wrong_length(settings)) {
        dialogs_.message_box("Port settings are not valid in 'sub init_comms**'");
        settings = kDefaultSettings;
    }
    // A fifth channel is refused before it exists: the table stays at channels 0 to 3.
    static_cast<void>(checked_index(n, kChannelLimit));
    SerialPort& device = n == 0 ? *comms_.com_Device.front() : comms_.extend();
    state_.gCommDevice.push_back(&device);
    define_comms_control(static_cast<std::int16_t>(n), port, settings, rts_mode);
    set_settle_time(n, settings);
    set_way(n, device, settings);
    return true;
}

void ChannelTable::set_way(int channel, SerialPort& device, const std::string& settings) {
    const auto choice = [this](const std::string& key) {
        return ini_read_string(ini_key::kCommsSection, key, {}, config_.gIniFile);
    };
    ExchangeWay& way = ways_[static_cast<std::size_t>(channel)];
    way = pelvan::exchange_way(choice(ini_key::exchange(channel)), settings,
                               choice(ini_key::echo(channel)));
    const auto behind = device_for_port(device.CommPort(), config_.gIniFile);
    if (behind && is_network(*behind)) way.silence_ms = kNetworkSilenceMs;
    // What another device delivered says nothing of this one.
    Seen& seen = seen_[device.CommPort()];
    if (seen.device != behind.value_or("")) seen = {behind.value_or(""), {}};
    if (device.Handshaking() == kXonXoff && choice(ini_key::xon_xoff(channel)) == kByProgram) {
        device.set_Handshaking(0);
        way.own_handshake = true;
    }
}

const ExchangeWay& ChannelTable::exchange_way(std::int16_t channel) const {
    return ways_[checked_index(channel, ways_.size())];
}

LineRecord& ChannelTable::line_record(std::int16_t port_index) {
    return records_[checked_index(port_index, records_.size())];
}

void ChannelTable::set_settle_time(int channel, const std::string& settings) {
    const double baud_rate = leading_number(settings.substr(0, settings.find(',')));
    // Without a usable baud rate the port refuses to open (8015); no settle time is ever waited.
    const double settle = baud_rate > 0 ? round_half_even(kSettleNumerator / baud_rate) : 0;
    state_.gCharTime[checked_index(channel, kChannelLimit)] =
        settle <= 32767 ? static_cast<std::int16_t>(settle) : std::int16_t{0};
}

void ChannelTable::define_comms_control(std::int16_t channel, std::int16_t port,
                                        const std::string& settings, const std::string& rts_mode) {
    if (!is_port_number(port)) {
        dialogs_.message_box("port_number% can only be (1 to 16) in sub define_comms_control");
        return;
    }
    const int highest = static_cast<int>(state_.gCommDevice.size()) - 1;
    if (channel < 0 || channel > highest) {
        dialogs_.message_box("comms_control% can only be (0 to " + std::to_string(highest) +
                             ") in sub define_comms_control");
        return;
    }
    SerialPort& device = *state_.gCommDevice[static_cast<std::size_t>(channel)];
    device.set_CommPort(port);
    device.set_Settings(settings);
    apply_mode(channel, rts_mode);
}

void ChannelTable::apply_mode(std::int16_t channel, const std::string& rts_mode) {
    const double value = leading_number(rts_mode);
    for (std::size_t row = 0; row < kModemModes.size(); ++row) {
        if (value != static_cast<double>(row)) continue;
        SerialPort& device = *state_.gCommDevice[static_cast<std::size_t>(channel)];
        device.set_DTREnable(kModemModes[row].dtr);
        device.set_RTSEnable(kModemModes[row].rts);
        device.set_Handshaking(kModemModes[row].handshaking);
        state_.gRtsToggle[static_cast<std::size_t>(channel)] = kModemModes[row].rts_toggle;
    }
}

std::int16_t ChannelTable::open_port(std::int16_t& channel, bool for_exchange) {
    std::int16_t target = -1;
    keep_ports([&] {
        if (channel < 0 || channel >= static_cast<int>(state_.gCommDevice.size())) {
            dialogs_.message_box(
                "This device/protocol has not been initialized. Check Pelvax6.ini.");
            channel = 0;
        }
        target = open_target(channel, for_exchange);
    });
    return target;
}

std::int16_t ChannelTable::open_target(std::int16_t channel, bool for_exchange) {
    const auto& devices = state_.gCommDevice;
    std::int16_t target = channel;
    std::int16_t port_number = 0;
    stray_bytes_ = 0;
    ErrorTrap trap(log_, dialogs_, "open_port");
    const auto table = [&](const RunTimeError& error) {
        return after_open_error(error, port_number, dialogs_);
    };
    SerialPort* port = nullptr;
    const auto choose = [&] {
        target = settle_twins(channel);
        port = devices[checked_index(target, devices.size())];
        port_number = port->CommPort();
    };
    if (!trap.run(choose, table)) return target;
    if (!port) return -1;
    LineRecord& record = line_record(target);
    if (!trap.run([&] { open_or_reopen(*port, record); }, table)) return target;
    const ExchangeWay& way = exchange_way(channel);
    if (for_exchange && way.complete) return target;
    ChannelPort heard(*port, record, way);
    stray_bytes_ = waiting_bytes(heard.port());
    trap.run([&] { heard.port().set_InBufferCount(0); }, table);
    return target;
}

std::int16_t ChannelTable::settle_twins(std::int16_t channel) {
    const auto& devices = state_.gCommDevice;
    const SerialPort& wanted = *devices[checked_index(channel, devices.size())];
    std::int16_t target = channel;
    bool shared = false;
    for (std::size_t i = 0; i < devices.size(); ++i) {
        SerialPort& other = *devices[i];
        const bool twin = &other != &wanted && other.CommPort() == wanted.CommPort();
        if (!twin || !other.PortOpen()) continue;
        if (shared || other.Settings() != wanted.Settings()) {
            before_close.raise(other);
            other.set_PortOpen(false);
        } else {
            target = static_cast<std::int16_t>(i);
            shared = true;
        }
    }
    return target;
}

} // namespace pelvan
