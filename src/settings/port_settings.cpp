#include "settings/port_settings.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "settings/port_users.h"
#include "text/numbers.h"
#include "text/strings.h"

namespace pelvan {
namespace {

constexpr char kDefaultSettings[] = "9600,N,8,1";
constexpr int kDefaultMode = 1;
/// Added to the stored mode for XON/XOFF handshaking.
constexpr int kHandshakingModes = 3;

constexpr char kBadPort[] = " The Comm Port specified is not valid, data will not be saved";
constexpr char kBadBaud[] = " The Baud Rate specified is not valid, data will not be saved";
constexpr char kBadParity[] = " The Parity specified is not valid, data will not be saved";
constexpr char kBadDataBits[] = " The Data Bits specified is not valid, data will not be saved";

PortFields fields_of(const std::string& port, const std::string& settings, int mode) {
    PortFields fields{port, "", "", "", "", mode};
    set_settings(fields, settings);
    return fields;
}

bool one_of(double value, std::initializer_list<int> allowed) {
    return std::any_of(allowed.begin(), allowed.end(), [=](int each) { return value == each; });
}

} // namespace

std::string settings_text(const PortFields& fields) {
    return fields.baud + "," + fields.parity + "," + fields.data_bits + "," + fields.stop_bits;
}

void set_settings(PortFields& fields, const std::string& settings) {
    std::vector<std::string> pieces = split(settings, ',');
    pieces.resize(4);
    fields.baud = pieces[0];
    fields.parity = pieces[1];
    fields.data_bits = pieces[2];
    fields.stop_bits = pieces[3];
}

std::vector<PortField> wrong_fields(const PortFields& fields) {
    std::vector<PortField> wrong;
    const auto require = [&](bool holds, PortField field) {
        if (!holds) wrong.push_back(field);
    };
    require(is_port_number(leading_number(fields.port)), PortField::Port);
    require(one_of(leading_number(fields.baud), {300, 600, 1200, 2400, 4800, 9600, 19200, 38400}),
            PortField::Baud);
    require(fields.parity.size() == 1 &&
                std::string("NnOoEe").find(fields.parity) != std::string::npos,
            PortField::Parity);
    require(one_of(leading_number(fields.data_bits), {7, 8}), PortField::DataBits);
    require(one_of(leading_number(fields.stop_bits), {1, 2}), PortField::StopBits);
    return wrong;
}

std::vector<std::string> ValidatePortSettings(const PortFields& fields) {
    // Kept as it is: wrong stop bits are reported with the words for the data bits.
    constexpr std::array kMessages{kBadPort, kBadBaud, kBadParity, kBadDataBits, kBadDataBits};
    std::vector<std::string> messages;
    for (const PortField field : wrong_fields(fields))
        messages.emplace_back(kMessages[static_cast<std::size_t>(field)]);
    return messages;
}

std::optional<PortFields> PortSettings::read(int channel) const {
    if (static_cast<std::size_t>(channel) < channels_.state().gCommDevice.size())
        return table_fields(static_cast<std::size_t>(channel));
    if (!configured(channel)) return std::nullopt;
    const auto value = [&](const std::string& key) {
        return ini_read_string(ini_key::kCommsSection, key, "", config_.gIniFile);
    };
    const double mode = leading_number(value(ini_key::rts_mode(channel)));
    return fields_of(value(ini_key::comm_port(channel)), value(ini_key::port_setting(channel)),
                     one_of(mode, {0, 1, 2, 3, 4, 5}) ? static_cast<int>(mode) % kHandshakingModes
                                                      : 0);
}

PortFields PortSettings::table_fields(std::size_t channel) const {
    const SerialState& state = channels_.state();
    const SerialPort& device = *state.gCommDevice[channel];
    const int fixed_lines = device.RTSEnable() ? 1 : 0;
    return fields_of(std::to_string(device.CommPort()), device.Settings(),
                     state.gRtsToggle[channel] ? 2 : fixed_lines);
}

bool PortSettings::configured(int channel) const {
    return ini_read_int(ini_key::kCommsSection, ini_key::comm_port(channel), 0, config_.gIniFile) !=
           0;
}

PortFields PortSettings::fields_on(int number, int other_than) const {
    for (int channel = 0; channel < static_cast<int>(kChannelLimit); ++channel) {
        const auto fields = channel == other_than ? std::nullopt : read(channel);
        if (fields && std::trunc(leading_number(fields->port)) == number) return *fields;
    }
    return fields_of(std::to_string(number), kDefaultSettings, kDefaultMode);
}

PortFields PortSettings::proposal(int channel, const PortDevices& devices) const {
    return fields_on(devices.proposed_number(), channel);
}

std::string PortSettings::sharing(int channel, const PortFields& fields) const {
    const double number = leading_number(fields.port);
    std::vector<int> others;
    std::string differing;
    for (int i = 0; i < static_cast<int>(kChannelLimit); ++i) {
        const auto other = i == channel ? std::nullopt : read(i);
        if (!other || std::trunc(leading_number(other->port)) != std::trunc(number)) continue;
        others.push_back(i);
        if (settings_text(*other) != settings_text(fields))
            differing = " " + protocol_name(i) + " has " + settings_text(*other) +
                        ", so each command closes the port of the other protocol.";
    }
    if (others.empty() || !is_port_number(number)) return {};
    return protocol_names(others) + (others.size() == 1 ? " uses" : " use") + " this port too." +
           differing;
}

bool PortSettings::write_keys(int channel, const std::string& port, const std::string& settings,
                              const std::string& mode) const {
    const std::string& file = config_.gIniFile;
    // Nobody is told of a failed writing: reading back shows it.
    const auto write = [&](const std::string& key, const std::string& value) {
        ini_write_string(ini_key::kCommsSection, key, value, file);
        return ini_read_string(ini_key::kCommsSection, key, "", file) == trim(value);
    };
    const bool port_stands = write(ini_key::comm_port(channel), port);
    const bool settings_stand = write(ini_key::port_setting(channel), settings);
    return write(ini_key::rts_mode(channel), mode) && port_stands && settings_stand;
}

bool PortSettings::store(int channel, const PortFields& fields, bool handshaking) {
    return write_keys(channel, fields.port, settings_text(fields),
                      std::to_string(fields.mode + (handshaking ? kHandshakingModes : 0)));
}

std::vector<int> PortSettings::missing_before(int channel) const {
    std::vector<int> missing;
    for (int each = 0; each < channel; ++each)
        if (!configured(each)) missing.push_back(each);
    return missing;
}

std::string PortSettings::gap_question(int channel, const std::vector<int>& missing) {
    const bool one = missing.size() == 1;
    return protocol_name(channel) + " can be used only when the " + protocol_names(missing) +
           (one ? " protocol has" : " protocols have") + " a port too. Give " +
           (one ? "it" : "them") + " port " + std::to_string(kDefaultPort) + "?";
}

bool PortSettings::add(const std::vector<int>& missing) {
    // Other settings would take the port from whoever has it, with every command.
    const PortFields fields = fields_on(kDefaultPort, missing.front());
    return std::all_of(missing.begin(), missing.end(), [&](int channel) {
        return write_keys(channel, fields.port, settings_text(fields), std::to_string(fields.mode));
    });
}

} // namespace pelvan
