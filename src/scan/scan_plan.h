// What a scan of a bus tries, and in which order: the most likely settings first, so that a lost
// controller is found long before everything has been tried. Nothing here touches a port.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/serial_line.h"

namespace pelvan {

/// Their numbers are those of their channels.
enum class ScanProtocol { Full, Modbus, Xon, Tellura };
inline constexpr int kScanProtocols = 4;

/// "Full", "Modbus", "Xon" or "Tellura/AB".
[[nodiscard]] const char* scan_protocol_name(ScanProtocol protocol);

/// How long a controller may take to begin its answer. Those in use need up to 50 ms, and an
/// adapter may keep bytes for 16 ms more. 247 silent Modbus addresses take 25.5 s so at 9600 baud,
/// 8 ms of each being the request and 4 ms the distance; a controller that takes longer is found
/// all the same, because an answer that comes late is looked into.
inline constexpr int kScanPatienceMs = 90;
inline constexpr int kMinScanPatienceMs = 10;
inline constexpr int kMaxScanPatienceMs = 2000;

inline constexpr int kMaxScanAddress = 247;

/// The rates that a channel can have, the most likely ones first.
[[nodiscard]] const std::vector<int>& scan_baud_rates();

struct ScanOptions {
    std::int16_t port = 1;
    /// What DTR and RTS do: 0 clear, 1 set, 2 RTS is raised for sending alone.
    int line_mode = 1;
    /// What the port has now is tried before all others, also when it is not among the choices: a
    /// line that works must not be said to have no controller.
    std::optional<LineSettings> present = {};
    bool only_chosen = false; // not then
    /// Rate and format are those of a server on the way, whatever is asked for: once is enough.
    bool fixed_settings = false;
    /// Bytes come over a network, with pauses that are none on the line.
    bool over_network = false;
    /// In the order in which they are tried at one setting.
    std::vector<ScanProtocol> protocols = {ScanProtocol::Modbus, ScanProtocol::Full,
                                           ScanProtocol::Xon, ScanProtocol::Tellura};
    std::vector<int> baud_rates = {9600, 19200, 38400, 4800};
    std::string parities = "NEO";
    std::vector<int> stop_bits = {1};
    /// 7 is for Full and Xon alone: frames of the others are bytes.
    std::vector<int> data_bits = {8};
    /// As far as a protocol has them; Xon has none and is asked once a setting.
    int first_address = 0;
    int last_address = kMaxScanAddress;
    double patience_ms = kScanPatienceMs;
    bool stops_at_first = false;
};

/// Addresses that one protocol asks at one setting.
struct ScanStep {
    ScanProtocol protocol = ScanProtocol::Modbus;
    /// Of Tellura/AB: packets end with a CRC instead of a BCC.
    bool crc = false;
    LineSettings line;
    std::vector<int> addresses;
};

/// Everything that the options ask for; empty when nothing fits them.
[[nodiscard]] std::vector<ScanStep> plan_scan(const ScanOptions& options);

/// What one silent address takes, from one request to the next.
[[nodiscard]] double silent_address_ms(const ScanStep& step, double patience_ms);
/// How long the line is listened to behind the last address of a step, for late answers.
inline constexpr double kScanTailMs = 250;

/// How long a scan takes when nobody answers.
[[nodiscard]] double estimated_ms(const std::vector<ScanStep>& plan, double patience_ms);
[[nodiscard]] std::size_t probes_of(const std::vector<ScanStep>& plan);

/// "9600,N,8,1".
[[nodiscard]] std::string settings_text(const LineSettings& line);
/// "45 s", "7 min 10 s", "2 h 5 min"; less than a second is "1 s".
[[nodiscard]] std::string scan_time_text(double ms);

} // namespace pelvan
