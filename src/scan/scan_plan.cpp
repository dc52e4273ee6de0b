#include "scan/scan_plan.h"

#include <algorithm>
#include <cmath>

#include "protocols/full/full_protocol.h"
#include "protocols/tellura_ab/tellura_prot.h"
#include "serial/frame_exchange.h"
#include "text/numbers.h"

namespace pelvan {
namespace {

/// Address that controllers leave the factory with, and that the program itself falls back to.
constexpr int kFactoryAddress = 1;

// Bytes of a request; of Tellura/AB without doubled ones.
constexpr double kModbusRequest = 8;
constexpr double kFullRequest = 2;
constexpr double kXonRequest = 5;
constexpr double kTelluraRequest = 14;

bool is_text(ScanProtocol protocol) {
    return protocol == ScanProtocol::Full || protocol == ScanProtocol::Xon;
}

bool same_settings(const LineSettings& a, const LineSettings& b) {
    return settings_text(a) == settings_text(b);
}

/// Where the order comes from: the settings that the channel has now were right once; then 9600
/// baud without parity, 8 data bits and 1 stop bit, which channels and controllers have when nobody
/// chose anything, and the same format at the other rates (Modbus knows no other one here); then
/// the parities, even first, because the Modbus standard asks for it; then what is rare.
std::vector<LineSettings> settings_in_order(const ScanOptions& options) {
    if (options.fixed_settings) {
        const LineSettings line = options.present.value_or(LineSettings{});
        return {line.data_bits == 8 ? line : LineSettings{}};
    }
    std::vector<LineSettings> all;
    for (const int data : options.data_bits)
        for (const int stop : options.stop_bits)
            for (const char parity : options.parities)
                for (const int baud : options.baud_rates) {
                    LineSettings line;
                    line.baud_rate = baud;
                    line.parity = parity;
                    line.data_bits = data;
                    line.stop_bits = stop;
                    all.push_back(line);
                }
    if (!options.present) return all;
    const auto present = std::find_if(all.begin(), all.end(), [&](const LineSettings& line) {
        return same_settings(line, *options.present);
    });
    if (present != all.end())
        std::rotate(all.begin(), present, present + 1);
    else if (!options.only_chosen)
        all.insert(all.begin(), *options.present);
    return all;
}

/// From 1 up, and an address 0 last.
std::vector<int> addresses_of(ScanProtocol protocol, const ScanOptions& options) {
    int lowest = 1;
    int highest = kMaxScanAddress; // of Modbus, whose 0 is answered by nobody
    if (protocol == ScanProtocol::Xon) return {0};
    if (protocol == ScanProtocol::Full) {
        lowest = 0;
        highest = kFullMaxAddress;
    }
    if (protocol == ScanProtocol::Tellura) highest = kTelluraMaxAddress;
    std::vector<int> addresses;
    for (int address = std::max({lowest, options.first_address, 1});
         address <= std::min(highest, options.last_address); ++address)
        addresses.push_back(address);
    if (lowest == 0 && options.first_address <= 0 && options.last_address >= 0)
        addresses.push_back(0);
    return addresses;
}

enum class Round { Likely, Others, All };

std::vector<int> addresses_in(Round round, ScanProtocol protocol, const ScanOptions& options) {
    std::vector<int> addresses = addresses_of(protocol, options);
    const bool addressed = protocol != ScanProtocol::Xon;
    if (round == Round::All) return addresses;
    std::erase_if(addresses, [&](int address) {
        const bool likely = !addressed || address == kFactoryAddress;
        return likely != (round == Round::Likely);
    });
    return addresses;
}

void add_steps(std::vector<ScanStep>& plan, const LineSettings& line, Round round,
               const ScanOptions& options) {
    for (const ScanProtocol protocol : options.protocols) {
        if (line.data_bits != 8 && !is_text(protocol)) continue;
        ScanStep step{protocol, false, line, addresses_in(round, protocol, options)};
        if (step.addresses.empty()) continue;
        plan.push_back(step);
        step.crc = true;
        if (protocol == ScanProtocol::Tellura) plan.push_back(step);
    }
}

double request_bytes(ScanProtocol protocol) {
    switch (protocol) {
    case ScanProtocol::Full:
        return kFullRequest;
    case ScanProtocol::Xon:
        return kXonRequest;
    case ScanProtocol::Tellura:
        return kTelluraRequest;
    case ScanProtocol::Modbus:
        break;
    }
    return kModbusRequest;
}

} // namespace

const char* scan_protocol_name(ScanProtocol protocol) {
    constexpr const char* kNames[kScanProtocols] = {"Full", "Modbus", "Xon", "Tellura/AB"};
    return kNames[static_cast<int>(protocol)];
}

const std::vector<int>& scan_baud_rates() {
    static const std::vector<int> rates{9600, 19200, 38400, 4800, 2400, 1200, 600, 300};
    return rates;
}

/// The address of the factory is asked at every setting before any other address is: it takes
/// seconds, and is where a controller is that nobody has set up.
std::vector<ScanStep> plan_scan(const ScanOptions& options) {
    const std::vector<LineSettings> settings = settings_in_order(options);
    std::vector<Round> rounds{Round::Likely, Round::Others};
    if (settings.size() < 2) rounds = {Round::All};
    std::vector<ScanStep> plan;
    for (const Round round : rounds)
        for (const LineSettings& line : settings)
            add_steps(plan, line, round, options);
    return plan;
}

double silent_address_ms(const ScanStep& step, double patience_ms) {
    const ExchangeWay way = exchange_way("COMPLETE", settings_text(step.line));
    return request_bytes(step.protocol) * way.character_ms + patience_ms;
}

double estimated_ms(const std::vector<ScanStep>& plan, double patience_ms) {
    double ms = 0;
    for (const ScanStep& step : plan)
        ms += static_cast<double>(step.addresses.size()) * silent_address_ms(step, patience_ms) +
              kScanTailMs;
    return ms;
}

std::size_t probes_of(const std::vector<ScanStep>& plan) {
    std::size_t count = 0;
    for (const ScanStep& step : plan)
        count += step.addresses.size();
    return count;
}

std::string settings_text(const LineSettings& line) {
    return std::to_string(line.baud_rate) + "," + line.parity + "," +
           std::to_string(line.data_bits) + "," + plain_number(line.stop_bits);
}

std::string scan_time_text(double ms) {
    constexpr long kMinute = 60;
    const long seconds = std::max(std::lround(ms / 1000), 1L);
    const long minutes = seconds / kMinute;
    if (minutes == 0) return std::to_string(seconds) + " s";
    if (minutes < kMinute)
        return std::to_string(minutes) + " min " + std::to_string(seconds % kMinute) + " s";
    return std::to_string(minutes / kMinute) + " h " + std::to_string(minutes % kMinute) + " min";
}

} // namespace pelvan
