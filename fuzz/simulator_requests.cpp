// A simulated controller that hears anything, at any time, in all its protocols. Without faults
// what it says to Modbus requests is whole by the program's own rules.
#include "harness.h"
#include "protocols/modbus/whole_reply.h"
#include "simulator/line/device_text.h"
#include "simulator/line/simulator_registry.h"
#include "simulator/line/wire.h"
#include "simulator/slaves/checks.h"

namespace pelvan::fuzz {
namespace {

namespace sim = pelvan::simulator;

constexpr const char* kDevices[] = {
    "simulated:742",
    "simulated:730",
    "simulated:742,speed=3600,refuse=4012>500",
    "simulated:742,lost=.1,flip=.2,crc=.2,gap=.2,noise=.2,late=.1,other=.1,queue=1,delay=30",
    "simulated:742,lost_ack=.3,nak=.3,no_etx=.3,xoff=.5,seed=9",
};
constexpr unsigned kWithoutFaults = 3;

/// Words of requests that lead to the rarer parts.
std::string request_of(Input& input) {
    constexpr unsigned kRegisters[] = {0,    300,  4000, 4001, 4002, 4003, 4007, 4040, 4050,
                                       4100, 4101, 4102, 1789, 1415, 1602, 4121, 4122, 65535};
    std::string request{'\1', static_cast<char>(input.below(18))};
    const unsigned choice = input.byte();
    const bool known = choice < 2 * std::size(kRegisters);
    const unsigned number = known ? kRegisters[choice / 2] : input.word();
    request += {static_cast<char>(number >> 8U), static_cast<char>(number)};
    const unsigned value = (choice & 1U) != 0 ? input.below(50) : input.word();
    request += {static_cast<char>(value >> 8U), static_cast<char>(value)};
    request += input.piece();
    return sim::with_modbus_crc(std::move(request));
}

std::string bytes_of(Input& input) {
    switch (input.below(6)) {
    case 0:
        return std::string(input.piece());
    case 1:
        return "\2" + std::string(input.piece()) + "\3";
    case 2:
        return std::string(input.piece()) + "\r";
    case 3:
        return input.flag() ? "1\5" : "\4";
    default:
        return request_of(input);
    }
}

double time_step(Input& input) {
    constexpr double kUnits[] = {0.1, 1, 1, 10, 100, 1000, 60000, 3600000};
    const double unit = kUnits[input.below(8)];
    return input.byte() * unit;
}

/// One after another, and each alone on the line.
void request_by_request(sim::Station& station, Input& input) {
    sim::Responder responder(station);
    double now = 0;
    while (!input.empty()) {
        now += 30 + time_step(input);
        const std::string request = bytes_of(input);
        std::string reply;
        for (const sim::Piece& piece : responder.receive(Exact(request).view(), now))
            reply += piece.bytes;
        if (!sim::modbus_crc_fits(request) || reply.empty()) continue;
        require(is_whole_reply(request, reply), "a request has its whole reply");
    }
}

/// As lines have it: bytes that come while a reply is under way.
void on_the_wire(const std::shared_ptr<sim::Station>& station, Input& input) {
    sim::Wire wire(station, 1.04);
    double now = 0;
    std::size_t arrived = 0;
    std::size_t written = 0;
    while (!input.empty()) {
        const std::string bytes = bytes_of(input);
        wire.host_writes(bytes, now);
        written += bytes.size();
        now += time_step(input);
        arrived += wire.arrived(now).size();
        require(wire.next_ms() == -1 || wire.next_ms() > now, "what is due has come");
    }
    require(arrived <= 300 * (written + 1), "replies are as long as frames can be");
}

void run(Input& input) {
    const unsigned choice = input.below(2 * std::size(kDevices));
    const auto station = sim::make_station(*sim::parse_simulated_device(kDevices[choice / 2]));
    if (choice / 2 < kWithoutFaults && choice % 2 == 0)
        request_by_request(*station, input);
    else
        on_the_wire(station, input);
    for (const auto& [number, reg] : station->controller.table().all()) {
        const bool within = reg.value >= reg.min && reg.value <= reg.max;
        require(within || reg.value == reg.preset || reg.access == sim::Access::ReadOnly,
                "a register that can be written keeps its limits");
    }
}

const Target target("simulator_requests", run);

} // namespace
} // namespace pelvan::fuzz
