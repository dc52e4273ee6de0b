#include "simulator/slaves/responder.h"

#include "simulator/slaves/checks.h"
#include "simulator/slaves/modbus_slave.h"
#include "simulator/slaves/xon_slave.h"

namespace pelvan::simulator {
namespace {

constexpr std::string_view kXonCharacter = "\x11";
constexpr std::string_view kXoffCharacter = "\x13";
constexpr std::size_t kMaxMessage = 1024;
constexpr double kForgetAfterMs = 20;
constexpr double kTypingMs = 10000; // a command line may be typed by hand

std::vector<Reply> modbus_replies(Station& station, const std::string& frame) {
    const std::string reply = modbus_reply(station.controller, station.address, frame);
    if (reply.empty()) return {};
    std::string other = reply.substr(0, reply.size() - 2);
    other[0] = as_char(station.address % 247 + 1);
    return {{ReplyKind::Modbus, reply, with_modbus_crc(std::move(other))}};
}

} // namespace

std::vector<Piece> Responder::receive(std::string_view bytes, double now_ms) {
    station_.controller.advance(now_ms);
    if (bytes == kXonCharacter || bytes == kXoffCharacter) return {}; // flow control, no message
    const bool typing = is_xon_beginning(heard_);
    if (now_ms - last_ms_ > (typing ? kTypingMs : kForgetAfterMs)) heard_.clear();
    last_ms_ = now_ms;
    heard_ += bytes;
    if (station_.controller.silent(now_ms) || heard_.size() > kMaxMessage) heard_.clear();
    std::vector<Piece> pieces;
    for (const Reply& reply : answer()) {
        for (Piece& piece : station_.faults.apply(reply))
            pieces.push_back(std::move(piece));
    }
    return pieces;
}

std::vector<Reply> Responder::answer() {
    // A fitting CRC is the surest mark, and only whole Modbus frames have one.
    if (modbus_crc_fits(heard_)) {
        const std::string frame = std::move(heard_);
        heard_.clear();
        return modbus_replies(station_, frame);
    }
    std::optional<std::vector<Reply>> replies = tellura_.hear(heard_);
    if (!replies) replies = full_.hear(heard_);
    if (!replies) replies = xon_replies(station_, heard_);
    if (!replies) return {};
    heard_.clear();
    return *replies;
}

} // namespace pelvan::simulator
