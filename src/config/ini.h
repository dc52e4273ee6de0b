// The three routines through which every settings key of the program is read and written, and the
// names of those keys. The file is named by each caller: `gIniFile`, or a set file of data logging.
#pragma once

#include <cstdint>
#include <string>

namespace pelvan {

/// Configuration slice of the session state.
struct ConfigState {
    /// Full path of pelvan7.ini, set once before the channels are built.
    std::string gIniFile;
};

/// The key's integer, cut to 16 bits; the default when the key is missing.
[[nodiscard]] std::int16_t ini_read_int(const std::string& section, const std::string& key,
                                        std::int16_t default_value, const std::string& file);

/// The key's value, at most 254 characters; the default when the key is missing.
[[nodiscard]] std::string ini_read_string(const std::string& section, const std::string& key,
                                          const std::string& default_value,
                                          const std::string& file);

/// Creates or replaces the key. Nonzero on success; no caller looks at the result.
std::int16_t ini_write_string(const std::string& section, const std::string& key,
                              const std::string& value, const std::string& file);

namespace ini_key {
inline constexpr char kCommsSection[] = "COMMS CONTROLS";
inline constexpr char kDefaultProtocol[] = "DEFAULT PROTOCOL";
inline constexpr char kTimerOffset[] = "TIMER OFFSET";
inline constexpr char kDevicesSection[] = "SERIAL DEVICES";
inline constexpr char kYes[] = "YES";

/// "DEVICE 0 COMM PORT " and so on. The trailing space belongs to the key.
[[nodiscard]] std::string comm_port(int channel);
[[nodiscard]] std::string port_setting(int channel);
[[nodiscard]] std::string rts_mode(int channel);
/// "DEVICE 0 EXCHANGE".
[[nodiscard]] std::string exchange(int channel);
/// "DEVICE 0 ECHO".
[[nodiscard]] std::string echo(int channel);
/// "DEVICE 0 XONXOFF".
[[nodiscard]] std::string xon_xoff(int channel);
/// "PORT 3" in section "SERIAL DEVICES".
[[nodiscard]] std::string serial_device(int port_number);
} // namespace ini_key

} // namespace pelvan
