// Packets of Tellura/AB: exchanges with a controller that answers anything, and packets of the
// simulated controller, which must be understood.
#include "protocols/tellura_ab/tellura_prot.h"
#include "scripted_link.h"
#include "simulator/line/device_text.h"
#include "simulator/line/simulator_registry.h"
#include "simulator/slaves/tellura_slave.h"
#include "text/bytes.h"

namespace pelvan::fuzz {
namespace {

void exchange(TelluraProt& protocol, const ScriptedLink& link, const std::string& packet) {
    const std::string reply = protocol.Exchange(packet);
    require(link.sent.size() <= 3, "a packet is sent three times at most");
    require(link.waited_ms <= 3 * 200 + 4 * 2000, "an exchange has an end");
    if (reply == kTelluraBad) return;
    require(link.received.find(reply) != std::string::npos, "a reply is what came");
    static_cast<void>(protocol.CheckReply(reply));
    static_cast<void>(protocol.ReadReply(reply));
}

void any_bytes(const TelluraProt& protocol, std::string_view bytes) {
    const bool whole = protocol.IsWhole(bytes);
    require(!whole || bytes.size() >= 2, "a message has two bytes at least");
    const TelluraReply reply = protocol.ReadReply(bytes);
    require(reply.status <= 255 && reply.data.size() <= bytes.size(), "data are what came");
    static_cast<void>(protocol.CheckReply(bytes));
    require(is_printable(TelluraProt::DisplayPacket(bytes)), "packets can be read");
}

std::string hexadecimal(std::string_view bytes) {
    std::string digits = hex_bytes(bytes);
    digits.erase(std::remove(digits.begin(), digits.end(), ' '), digits.end());
    return digits;
}

/// What the simulated controller answers to a request of the program's own.
void conversation(TelluraProt& protocol, Input& input) {
    const auto station =
        simulator::make_station(*simulator::parse_simulated_device("simulated:742"));
    simulator::TelluraSlave slave(*station);
    const bool write = input.flag();
    const std::string parameter = hexadecimal(
        {std::string{static_cast<char>(input.byte()), static_cast<char>(input.byte())}});
    const int count = input.byte();
    const std::string data = hexadecimal(input.rest());
    std::uint8_t device = 1;
    const auto request = protocol.BuildRequest(device, parameter, data, write, count);
    if (!request) return;
    const auto replies = slave.hear(request->packet);
    require(replies && !replies->empty(), "every request is acknowledged");
    std::string bytes;
    for (const simulator::Reply& reply : *replies)
        bytes += reply.bytes;
    require(protocol.IsWhole(bytes), "the reply is whole with its last byte");
    for (std::size_t size = 3; size < bytes.size(); ++size)
        if (protocol.IsWhole(bytes.substr(0, size)))
            require(false, "the reply is not whole before its last byte");
    const std::string packet = bytes.substr(2);
    require(protocol.CheckReply(packet), "the check fits");
    const TelluraReply reply = protocol.ReadReply(packet);
    if (!write && reply.status == 0)
        require(reply.data.size() == static_cast<std::size_t>(count), "as many bytes as asked for");
}

void run(Input& input) {
    testing::SerialRig& rig = idle_rig();
    ScriptedLink link(rig, input);
    TelluraProt protocol(link, rig.dialogs);
    protocol.set_check(input.flag() ? TelluraCheck::Crc : TelluraCheck::Bcc);
    switch (input.below(3)) {
    case 0:
        return exchange(protocol, link, std::string(input.piece()));
    case 1:
        return any_bytes(protocol, Exact(input.rest()).view());
    default:
        return conversation(protocol, input);
    }
}

const Target target("tellura_replies", run);

} // namespace
} // namespace pelvan::fuzz
