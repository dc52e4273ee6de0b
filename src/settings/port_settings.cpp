#include "settings/port_settings.h"

#include <algorithm>
#include <array>

#include "settings/port_devices.h"
#include "text/numbers.h"
#include "text/strings.h"

namespace pelvan {
namespace {

constexpr char kDesignerBaud[] = "19200";
constexpr char kDefaultMode[] = "1";
/// Added to the stored mode for XON/XOFF handshaking.
constexpr int kHandshakingModes = 3;

constexpr char kBadPort[] = " The Comm Port specified is not valid, data will not be saved";
constexpr char kBadBaud[] = " The Baud Rate specified is not valid, data will not be saved";
constexpr char kBadParity[] = " The Parity specified is not valid, data will not be saved";
constexpr char kBadDataBits[] = " The Data Bits specified is not valid, data will not be saved";

bool one_of(double value, std::initializer_list<int> allowed) {
    return std::any_of(allowed.begin(), allowed.end(), [=](int each) { return value == each; });
}

} // namespace

std::vector<std::string> ValidatePortSettings(const PortFields& fields) {
    std::vector<std::string> messages;
    const auto require = [&](bool holds, const char* message) {
        if (!holds) messages.emplace_back(message);
    };
    require(is_port_number(leading_number(fields.port)), kBadPort);
    require(one_of(leading_number(fields.baud), {300, 600, 1200, 2400, 4800, 9600, 19200, 38400}),
            kBadBaud);
    require(fields.parity.size() == 1 &&
                std::string("NnOoEe").find(fields.parity) != std::string::npos,
            kBadParity);
    require(one_of(leading_number(fields.data_bits), {7, 8}), kBadDataBits);
    // Kept as it is: wrong stop bits are reported with the words for the data bits.
    require(one_of(leading_number(fields.stop_bits), {1, 2}), kBadDataBits);
    return messages;
}

PortFields PortSettings::read(int channel) const {
    const SerialState& state = channels_.state();
    const auto i = static_cast<std::size_t>(channel);
    if (i >= state.gCommDevice.size()) return {"", kDesignerBaud, "", "", "", 0};
    const SerialPort& device = *state.gCommDevice[i];
    std::array<std::string, 4> parts;
    const auto pieces = split(device.Settings(), ',');
    std::copy_n(pieces.begin(), std::min(pieces.size(), parts.size()), parts.begin());
    const int fixed_lines = device.RTSEnable() ? 1 : 0;
    return {std::to_string(device.CommPort()),    parts[0], parts[1], parts[2], parts[3],
            state.gRtsToggle[i] ? 2 : fixed_lines};
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
    return write_keys(channel, fields.port,
                      fields.baud + "," + fields.parity + "," + fields.data_bits + "," +
                          fields.stop_bits,
                      std::to_string(fields.mode + (handshaking ? kHandshakingModes : 0)));
}

std::vector<int> PortSettings::missing_before(int channel) const {
    std::vector<int> missing;
    for (int each = 0; each < channel; ++each)
        if (ini_read_int(ini_key::kCommsSection, ini_key::comm_port(each), 0, config_.gIniFile) ==
            0)
            missing.push_back(each);
    return missing;
}

bool PortSettings::add(const std::vector<int>& missing) {
    return std::all_of(missing.begin(), missing.end(), [this](int channel) {
        return write_keys(channel, kDefaultPort, kDefaultSettings, kDefaultMode);
    });
}

} // namespace pelvan
