// Commands of the Full protocol to a controller that answers anything.
#include "protocols/full/full_protocol.h"
#include "scripted_link.h"
#include "simulator/line/device_text.h"
#include "simulator/line/simulator_registry.h"
#include "simulator/slaves/full_slave.h"

namespace pelvan::fuzz {
namespace {

/// Without faults a message of the simulated controller is whole with its last byte.
void whole_messages(const std::string& command) {
    const auto station =
        simulator::make_station(*simulator::parse_simulated_device("simulated:742"));
    simulator::FullSlave slave(*station);
    for (const std::string& sent :
         {std::string("1\5"), "\2" + command + "\3", std::string("\4"), std::string("\x15")})
        for (const simulator::Reply& reply :
             slave.hear(sent).value_or(std::vector<simulator::Reply>{}))
            require(ends_full_message(reply.bytes), "a message is whole with its last byte");
}

void run(Input& input) {
    testing::SerialRig& rig = idle_rig();
    ScriptedLink link(rig, input);
    FullProtocol full(link, rig.dialogs);
    constexpr const char* kCommands[] = {"? SP1", "= SP1 100", "", "?", "=", "SP1"};
    const unsigned choice = input.below(8);
    const std::string command = choice < 6 ? kCommands[choice] : std::string(input.piece());
    const auto address = static_cast<std::int16_t>(static_cast<int>(input.byte()) - 100);
    if (choice == 7 && is_printable(command)) whole_messages(command);
    const FullReply reply = full.full_command(command, address, kFullCommandTimeoutMs);

    require(!link.sent.empty() && link.sent.size() <= 10, "a command has an end");
    require(link.waited_ms <= 20000, "a command waits for seconds");
    const bool selected = link.sent.size() > 1;
    require(!selected || link.sent.back() == "\n\4", "who was selected is released");
    require(selected || reply.text == kFullNotConnected, "who does not answer is not asked");
    const bool reads = command.starts_with('?');
    require(!reply.completed || reads || command.starts_with('='), "other commands do nothing");
    if (reply.completed && reads)
        require(link.received.find(reply.text) != std::string::npos, "data are what came");
}

const Target target("full_replies", run);

} // namespace
} // namespace pelvan::fuzz
