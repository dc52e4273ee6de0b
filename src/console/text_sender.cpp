#include "console/text_sender.h"

#include "text/bytes.h"
#include "text/numbers.h"

namespace pelvan {
namespace {

constexpr std::int16_t kXonChannel = 2;
constexpr float kXonTimeoutMs = 2000;
constexpr std::int16_t kXonQuietChars = 1;
constexpr char kXonRefusal[] = "ERROR";
constexpr char kNoData[] = "(an empty reply)";
constexpr char kNoReadOrWrite[] = "Acknowledged; neither a read nor a write";

/// -1, which is no device's address, for a text that is no small whole number.
std::int16_t address_number(const std::string& text) {
    const double value = is_numeric(text) ? leading_number(text) : -1;
    const bool whole = value >= 0 && value <= 999 && value == static_cast<int>(value);
    return whole ? static_cast<std::int16_t>(value) : std::int16_t{-1};
}

bool says_nothing_came(const std::string& result) {
    return result == kFullNotConnected || result == kFullNotReceived ||
           result == kFullNakNotReceived || result == kFullNoErrorCode;
}

std::string taken_text(const ExchangeTimes& times) {
    return "Done in " + std::to_string(times.taken_ms()) + " ms";
}

} // namespace

std::string printable(std::string_view text) {
    while (!text.empty() && (text.back() == '\r' || text.back() == '\n'))
        text.remove_suffix(1);
    return ascii_in_brackets(text);
}

SendOutcome TextSender::send(TextProtocol protocol, const TextEntry& entry) {
    return protocol == TextProtocol::Full ? send_full(entry) : send_xon(entry.command);
}

SendOutcome TextSender::send_full(const TextEntry& entry) {
    ExchangeTimes times(link_.countdowns(), clock_);
    const FullReply reply = full_.full_command(entry.command, address_number(entry.device_address),
                                               kFullCommandTimeoutMs);
    times.end();
    std::string shown = printable(reply.text);
    if (reply.text.empty()) shown = entry.command.starts_with('?') ? kNoData : kNoReadOrWrite;
    SendOutcome outcome{SendOutcome::Kind::Done, shown, reply.completed, {}, {}};
    if (outcome.accepted)
        outcome.status = taken_text(times);
    else if (says_nothing_came(reply.text))
        outcome.kind = SendOutcome::Kind::NoReply;
    outcome.row = times.row(printable(entry.command), shown);
    return outcome;
}

SendOutcome TextSender::send_xon(const std::string& command) {
    ExchangeTimes times(link_.countdowns(), clock_);
    const std::string reply =
        link_.transmit(kXonChannel, command + "\r", kXonTimeoutMs, kXonQuietChars);
    times.end();
    std::string shown = printable(reply);
    if (reply.empty())
        shown = "No response from the controller.";
    else if (shown.empty())
        shown = kNoData;
    SendOutcome outcome{SendOutcome::Kind::Done, shown, false, {}, {}};
    if (reply.empty()) {
        outcome.kind = SendOutcome::Kind::NoReply;
    } else if (!reply.starts_with(kXonRefusal)) {
        outcome.accepted = true;
        outcome.status = taken_text(times);
    }
    outcome.row = times.row(printable(command), shown);
    return outcome;
}

} // namespace pelvan
