#include "simulator/slaves/full_slave.h"

#include "simulator/slaves/text_commands.h"

namespace pelvan::simulator {
namespace {

constexpr char kStx = 2;
constexpr char kEtx = 3;
constexpr char kEot = 4;
constexpr char kEnq = 5;
constexpr char kAck = 6;
constexpr char kLineFeed = 10;
constexpr char kNak = 21;
constexpr unsigned kMaxAddress = 32;

/// '0'..'9' for 0 to 9, 'A'..'W' for 10 to 32; 0 for a device that this protocol cannot address.
char address_character(unsigned address) {
    if (address > kMaxAddress) return 0;
    return static_cast<char>(address < 10 ? '0' + address : 'A' + address - 10);
}

bool is_address(char c) {
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'W');
}

/// Length of the message that the bytes begin with, 0 when there is none.
std::size_t message_length(std::string_view bytes) {
    if (bytes[0] == kEot || bytes[0] == kNak) return 1;
    if (bytes[0] == kStx) {
        const std::size_t end = bytes.find(kEtx);
        return end == std::string_view::npos ? 0 : end + 1;
    }
    if (bytes.size() < 2) return 0;
    const bool end_of_exchange = bytes[0] == kLineFeed && bytes[1] == kEot;
    const bool poll = is_address(bytes[0]) && bytes[1] == kEnq;
    return end_of_exchange || poll ? 2 : 0;
}

} // namespace

std::optional<std::vector<Reply>> FullSlave::hear(std::string_view bytes) {
    std::vector<std::string_view> messages;
    while (!bytes.empty()) {
        const std::size_t length = message_length(bytes);
        if (length == 0) return std::nullopt;
        messages.push_back(bytes.substr(0, length));
        bytes.remove_prefix(length);
    }
    std::vector<Reply> replies;
    for (const std::string_view message : messages) {
        Reply reply = obey(message);
        if (!reply.bytes.empty()) replies.push_back(std::move(reply));
    }
    return replies;
}

Reply FullSlave::obey(std::string_view message) {
    if (is_address(message[0])) return poll(message[0]);
    if (!selected_) return {};
    switch (message[0]) {
    case kStx:
        return select(message.substr(1, message.size() - 2));
    case kNak:
        return repeat();
    case kEot:
        return turn_round();
    default:
        selected_ = false;
        return {};
    }
}

Reply FullSlave::poll(char asked) {
    const char own = address_character(station_.address);
    selected_ = asked == own;
    response_.clear();
    if (!selected_) return {};
    const char other = address_character(station_.address % kMaxAddress + 1);
    return {ReplyKind::FullPoll, std::string{own, kAck}, std::string{other, kAck}};
}

Reply FullSlave::select(std::string_view command) {
    const TextResult result = run_text_command(station_, command);
    handed_over_ = false;
    response_.clear();
    if (!result.response.empty()) response_ = kStx + result.response + kEtx;
    return {
        ReplyKind::FullAck, std::string(1, result.error == text_error::kNone ? kAck : kNak), {}};
}

Reply FullSlave::turn_round() {
    // The second EOT says that the response has come through: it is not sent again.
    if (response_.empty() || handed_over_) return {};
    handed_over_ = true;
    return {ReplyKind::FullData, response_, {}};
}

Reply FullSlave::repeat() {
    // A host that asked for a repetition turns the line round once more, to read it again.
    handed_over_ = false;
    return {ReplyKind::FullData, response_, {}};
}

} // namespace pelvan::simulator
