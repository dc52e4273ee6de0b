// What exchanges that end with the reply's frame take, beside a libmodbus client on the same
// pseudo-terminal in the same run: the two ask in turn, and a slave in a thread answers at once.
// The distance that a request keeps from the bytes before it is part of our time and of no use of
// libmodbus'. A processor that has slept for the distance, and with it whoever answers, takes
// longer to wake: what libmodbus takes after a sleep as long is the measure of like with like, and
// stands beside what it takes when it asks without any distance. Then a save of
// registers from a slave at the pace of the line, with the share of the processor that it takes.
// Prints medians, 95th percentiles and the load of the machine.
#include <modbus.h>

#include <array>
#include <cstring>
#include <vector>

#include "modbus_line.h"
#include "protocols/modbus/whole_reply.h"

namespace {

using namespace pelvan;
using namespace pelvan::bench;

constexpr int kExchanges = 400;
constexpr int kInTurn = 20;
constexpr int kRegisters = 500;
constexpr int kReadRegisters = 10;     // of the exchanges
constexpr double kAllowedFactor = 1.2; // of libmodbus' time

struct Times {
    std::vector<double> ms;
    void add(SteadyClock::time_point begun) { ms.push_back(since_ms(begun)); }
    double at(std::size_t percent) {
        std::sort(ms.begin(), ms.end());
        return ms[std::min(ms.size() * percent / 100, ms.size() - 1)];
    }
};

void compare(int baud_rate) {
    testing::PtyPair line(testing::PtyPair::Slave::KeepOpen);
    const Slave slave(line, 0);
    modbus_t* const other = modbus_new_rtu(line.path().c_str(), baud_rate, 'N', 8, 1);
    // First, because our port keeps others out.
    if (!other || modbus_set_slave(other, 1) != 0 || modbus_connect(other) != 0) return;
    Program program(line, baud_rate, "COMPLETE");
    const std::string request = sealed({1, 3, 0, 0, 0, kReadRegisters});
    Times ours, theirs, after_distance;
    const Milliseconds distance(program.table.exchange_way(kModbusChannel).distance_ms);
    int wrong = 0;
    const auto ask = [&] {
        const auto begun = SteadyClock::now();
        const std::string reply = program.link.transmit(
            kModbusChannel, request, kModbusTimeoutMs, kModbusQuietChars,
            [&](std::string_view received) { return is_whole_reply(request, received); });
        ours.add(begun);
        return is_whole_reply(request, reply);
    };
    const auto ask_by_other = [&](Times& times) {
        std::array<std::uint16_t, kReadRegisters> values{};
        const auto begun = SteadyClock::now();
        const int count = modbus_read_registers(other, 0, kReadRegisters, values.data());
        times.add(begun);
        return count == kReadRegisters;
    };
    for (int i = 0; i < kExchanges / kInTurn; ++i) {
        for (int k = 0; k < kInTurn; ++k)
            wrong += ask() ? 0 : 1;
        for (int k = 0; k < kInTurn; ++k)
            wrong += ask_by_other(theirs) ? 0 : 1;
        for (int k = 0; k < kInTurn; ++k) {
            std::this_thread::sleep_for(distance);
            wrong += ask_by_other(after_distance) ? 0 : 1;
        }
    }
    modbus_close(other);
    modbus_free(other);
    std::printf("%6d baud: distance %.3f ms, %d of %d failed\n", baud_rate, distance.count(), wrong,
                3 * kExchanges);
    for (const std::size_t percent : {50U, 95U}) {
        std::printf("  %2zu %%: %.3f ms\n", percent, ours.at(percent));
        const auto judge = [&](const char* what, Times& measure) {
            const double limit = kAllowedFactor * measure.at(percent) + distance.count();
            std::printf("        %s %.3f ms, allowed %.3f ms: %s\n", what, measure.at(percent),
                        limit, ours.at(percent) <= limit ? "met" : "not met");
        };
        judge("libmodbus after as long a distance", after_distance);
        judge("libmodbus without any distance    ", theirs);
    }
}

void save(int baud_rate, const char* way) {
    const TimedSave save = time_save(baud_rate, way, kRegisters);
    std::printf(
        "save of %d registers, %d baud, %s: %.1f s, bytes alone %.1f s, processor %.2f %%%s\n",
        kRegisters, baud_rate, way, save.taken_ms / 1000,
        kRegisters * 10.0 / baud_rate * (kRequestBytes + 7),
        100 * save.processor_ms / save.taken_ms, save.completed ? "" : ", NOT COMPLETE");
}

} // namespace

int main(int argc, char** argv) {
    print_load();
    for (const int baud_rate : {9600, 19200, 38400})
        compare(baud_rate);
    save(9600, "COMPLETE");
    save(38400, "COMPLETE");
    if (argc > 1 && std::string(argv[1]) == "quiet") save(9600, "QUIET");
    print_load();
}
