#include "config/ini.h"

#include "platform/sectioned_file.h"

namespace pelvan {
namespace {

constexpr std::size_t kBufferSize = 255;

std::string device_key(int channel, const char* rest) {
    return "DEVICE " + std::to_string(channel) + rest;
}

} // namespace

std::int16_t ini_read_int(const std::string& section, const std::string& key,
                          std::int16_t default_value, const std::string& file) {
    // Cut, not refused: 99999 in the file reads as -31073.
    return static_cast<std::int16_t>(GetPrivateProfileIntA(section, key, default_value, file));
}

std::string ini_read_string(const std::string& section, const std::string& key,
                            const std::string& default_value, const std::string& file) {
    return GetPrivateProfileStringA(section, key, default_value, kBufferSize, file);
}

std::int16_t ini_write_string(const std::string& section, const std::string& key,
                              const std::string& value, const std::string& file) {
    return WritePrivateProfileStringA(section, key, value, file) ? 1 : 0;
}

namespace ini_key {

std::string comm_port(int channel) {
    return device_key(channel, " COMM PORT ");
}
std::string port_setting(int channel) {
    return device_key(channel, " PORT SETTING ");
}
std::string rts_mode(int channel) {
    return device_key(channel, " RTS Mode ");
}
std::string exchange(int channel) {
    return device_key(channel, " EXCHANGE");
}
std::string echo(int channel) {
    return device_key(channel, " ECHO");
}
std::string xon_xoff(int channel) {
    return device_key(channel, " XONXOFF");
}
std::string serial_device(int port_number) {
    return "PORT " + std::to_string(port_number);
}

} // namespace ini_key
} // namespace pelvan
