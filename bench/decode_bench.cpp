// What decoding a full-length reply costs beside its CRC alone. The reply: function 3, 255 bytes,
// 125 words of random values. Each figure is the best of several rounds, taken in turn, so that
// other work on the machine falls out.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <functional>
#include <random>

#include "protocols/modbus/modbus.h"

namespace {

constexpr int kRounds = 25;
constexpr int kCallsARound = 4000;
constexpr std::size_t kDataBytes = 250;

struct Measurement {
    const char* name;
    std::function<std::size_t()> work;
    double best_ns = 1e12;
};

std::string random_reply(pelvan::Modbus& modbus, std::mt19937& random) {
    std::string frame = {1, 3, static_cast<char>(kDataBytes)};
    for (std::size_t i = 0; i < kDataBytes; ++i)
        frame += static_cast<char>(random());
    modbus.ModbusCrc(frame);
    frame += static_cast<char>(modbus.state().gCrcLow);
    frame += static_cast<char>(modbus.state().gCrcHigh);
    return frame;
}

/// Keeps the results alive.
volatile std::size_t sink = 0;

void run_round(Measurement& measurement) {
    const auto start = std::chrono::steady_clock::now();
    for (int call = 0; call < kCallsARound; ++call)
        sink = sink + measurement.work();
    const std::chrono::duration<double, std::nano> spent = std::chrono::steady_clock::now() - start;
    measurement.best_ns = std::min(measurement.best_ns, spent.count() / kCallsARound);
}

} // namespace

int main() {
    pelvan::ModbusState state;
    pelvan::Modbus modbus(state);
    std::mt19937 random(1);
    const std::string reply = random_reply(modbus, random);
    const std::string_view checked = std::string_view(reply).substr(0, reply.size() - 2);

    Measurement measurements[] = {
        {"bitwise CRC alone",
         [&] {
             modbus.ModbusCrc(checked);
             return static_cast<std::size_t>(state.gCrcLow);
         }},
        {"Decimal, CRC included", [&] { return modbus.ModbusDecodeDecimal(0, reply).size(); }},
        {"Hex, CRC included", [&] { return modbus.ModbusDecodeHex(0, reply).size(); }},
        {"SmartDec, CRC included",
         [&] { return modbus.ModbusDecodeSmartDecimal(0, reply).size(); }},
    };
    for (int round = 0; round < kRounds; ++round)
        for (Measurement& measurement : measurements)
            run_round(measurement);

    std::printf("reply of %zu bytes, best of %d rounds\n", reply.size(), kRounds);
    for (const Measurement& measurement : measurements)
        std::printf("%-24s %8.0f ns   %.2f x CRC\n", measurement.name, measurement.best_ns,
                    measurement.best_ns / measurements[0].best_ns);
    return 0;
}
