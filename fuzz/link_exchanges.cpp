// The link on a port whose bytes come at any time and whose calls fail: an exchange always ends,
// nothing that came is counted twice, and the claim of a tool holds.
#include <cmath>

#include "harness.h"
#include "protocols/modbus/whole_reply.h"
#include "serial/careful_exchange.h"
#include "support/serial_rig.h"

namespace pelvan::fuzz {
namespace {

constexpr const char* kOperations[] = {
    "InBufferCount", "Input", "Output", "discard", "wait", "PortOpen", "EscapeCommFunction"};
constexpr int kErrors[] = {57, 68, 69, 8002, 8005, 8010, 8015, 8018, 8020};

class Line {
  public:
    explicit Line(bool complete) {
        rig.tick.step_ms = 1;
        rig.build({"1;9600,N,8,1;1", "2;9600,N,8,1;2"});
        if (complete) rig.exchange_by("COMPLETE");
    }

    /// What happens to the port before, or while, it is used.
    void disturb(Input& input) {
        testing::FakeSerialPort& port = *rig.ports[channel];
        port.events.clear();
        port.outputs.clear();
        for (unsigned n = input.below(4); n > 0; --n) {
            const double after_ms = input.byte() * input.byte() / 8.0;
            port.arrive({after_ms, std::string(input.piece())});
        }
        const unsigned failures = input.below(8);
        for (unsigned n = failures < 3 ? failures : 0; n > 0; --n) {
            const char* const operation = kOperations[input.below(std::size(kOperations))];
            port.fail_next(operation, kErrors[input.below(std::size(kErrors))]);
        }
        port.line_lost = input.below(16) == 0;
    }

    testing::SerialRig rig;
    std::size_t channel = 0;
};

void exchange(Line& line, Input& input) {
    testing::SerialRig& rig = line.rig;
    line.channel = input.below(2);
    line.disturb(input);
    const auto channel = static_cast<std::int16_t>(line.channel);
    const std::string request("\1\3\0\0\0\1\x84\x0A", 8);
    const double timeout_ms = input.byte() * 10;
    const auto quiet = static_cast<std::int16_t>(input.below(40));
    const IsWhole whole = [&](std::string_view reply) {
        return is_whole_reply(request, Exact(reply).view());
    };
    const double begin = rig.tick.now();
    switch (input.below(4)) {
    case 0:
        static_cast<void>(rig.link.let_fall_silent());
        break;
    case 1:
        static_cast<void>(rig.link.receive_more(channel, static_cast<float>(timeout_ms), quiet));
        break;
    case 2:
        static_cast<void>(exchange_carefully(
            rig.link, {{channel, 1},
                       input.flag(),
                       input.flag(),
                       [&] {
                           return rig.link.transmit(channel, request,
                                                    static_cast<float>(timeout_ms), quiet, whole);
                       },
                       [&](const std::string& reply) {
                           return reply.empty() ? Fit::Missing
                                                : (whole(reply) ? Fit::Answers : Fit::Damaged);
                       }}));
        break;
    default:
        static_cast<void>(
            rig.link.transmit(channel, request, static_cast<float>(timeout_ms), quiet, whole));
    }
    // Twice the time-out and the quiet of three exchanges at most, and three silences.
    require(rig.tick.now() - begin <= 3 * (timeout_ms + quiet * 2 + 1000 + 300) + 3000,
            "an exchange has an end");
}

void run(Input& input) {
    Line line(input.flag());
    for (int n = 0; n < 4 && !input.empty(); ++n)
        exchange(line, input);
    require(line.rig.state.gTimerInUse.size() < 10, "countdowns are given back");
    require(line.rig.dialogs.shown.size() < 200, "messages have an end");
}

const Target target("link_exchanges", run);

} // namespace
} // namespace pelvan::fuzz
