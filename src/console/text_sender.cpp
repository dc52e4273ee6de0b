#include "console/text_sender.h"

#include <algorithm>

#include "serial/careful_exchange.h"
#include "text/bytes.h"
#include "text/numbers.h"

namespace pelvan {
namespace {

constexpr std::int16_t kXonChannel = 2;
constexpr float kXonTimeoutMs = 2000;
constexpr std::int16_t kXonQuietChars = 1;
constexpr std::size_t kShownOfCut = 200; // bytes
constexpr char kXonRefusal[] = "ERROR";
constexpr char kDamagedResponse[] =
    "The response is damaged: characters of it may be missing, or not belong to it.";
constexpr char kSeveralLines[] = "The command has several lines: nothing was sent. Send one at a "
                                 "time, or all with File, Send Setup File.";
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

/// The acknowledgement of the command was not there in time; it may have been carried out.
bool lacks_acknowledgement(const std::string& result) {
    return result == kFullNoError;
}

bool owes_an_answer(const std::string& result) {
    return says_nothing_came(result) || lacks_acknowledgement(result);
}

bool is_text(std::string_view received) {
    return std::none_of(received.begin(), received.end(), [](unsigned char byte) {
        return byte < ' ' && byte != '\r' && byte != '\n' && byte != '\t';
    });
}

/// Of bytes that mean nothing one in a hundred ends a line, too.
bool is_line(std::string_view received) {
    return (received.ends_with('\r') || received.ends_with('\n')) && is_text(received);
}

bool is_command(const std::string& text) {
    return text.starts_with('?') || text.starts_with('=');
}

/// A line end would end the command for the controller, which carries out the rest as others. A box
/// of one line shows it as a blank.
bool has_several_lines(const std::string& command) {
    const std::size_t last = command.find_last_not_of("\r\n");
    return last != command.npos && command.find_first_of("\r\n") < last;
}

std::string full_objection(const std::string& command, const std::string& result) {
    if (lacks_acknowledgement(result))
        return "The command was not acknowledged in time. It may have been carried out.";
    if (result.empty() && !is_command(command)) return "The command begins with neither ? nor =.";
    return "The controller refused the command: " + result + ".";
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
    if (has_several_lines(entry.command))
        return {SendOutcome::Kind::Refused, kSeveralLines, false, kSeveralLines, {}};
    return send_and_remark(link_, [&] {
        return protocol == TextProtocol::Full ? send_full(entry) : send_xon(entry.command);
    });
}

SendOutcome TextSender::send_full(const TextEntry& entry) {
    ExchangeTimes times(link_.countdowns(), clock_);
    FullReply reply;
    CarefulRequest request;
    request.whom = {kFullChannel};
    request.repeatable = entry.command.starts_with('?');
    request.exchange = [&] {
        reply = full_.full_command(entry.command, address_number(entry.device_address),
                                   kFullCommandTimeoutMs);
        times.end();
        return reply.text;
    };
    request.fit = [&](const std::string& text) {
        return !reply.completed && owes_an_answer(text) ? Fit::Missing : Fit::Answers;
    };
    const CarefulReply heard = exchange_carefully(link_, request);
    if (!heard.sent) return times.not_sent(link_, printable(entry.command), printable(reply.text));
    std::string shown = printable(reply.text);
    if (reply.text.empty()) shown = is_command(entry.command) ? kNoData : kNoReadOrWrite;
    SendOutcome outcome{SendOutcome::Kind::Done, shown, false, {}, {}};
    outcome.row = times.row(printable(entry.command), shown);
    if (!reply.completed && says_nothing_came(reply.text)) {
        outcome.kind = SendOutcome::Kind::NoReply;
        return outcome;
    }
    outcome.accepted = reply.completed && !reply.damaged && !heard.unclear;
    if (outcome.accepted) {
        outcome.status = taken_text(times);
        return outcome;
    }
    outcome.objection = heard.unclear   ? kUnclearReply
                        : reply.damaged ? kDamagedResponse
                                        : full_objection(entry.command, reply.text);
    if (heard.unclear || reply.damaged || lacks_acknowledgement(reply.text))
        outcome.status = outcome.objection;
    return outcome;
}

SendOutcome TextSender::send_xon(const std::string& command) {
    ExchangeTimes times(link_.countdowns(), clock_);
    CarefulRequest request;
    request.whom = {kXonChannel};
    request.repeatable = command.starts_with('?');
    request.exchange = [&] {
        std::string reply =
            link_.transmit(kXonChannel, command + "\r", kXonTimeoutMs, kXonQuietChars, is_line);
        times.end();
        return reply;
    };
    request.fit = [this](const std::string& reply) {
        if (reply.empty() || link_.cut_off()) return Fit::Missing;
        return is_text(reply) ? Fit::Answers : Fit::Damaged; // listened behind
    };
    const CarefulReply heard = exchange_carefully(link_, request);
    if (!heard.sent) return times.not_sent(link_, printable(command));
    const std::string& reply = heard.reply;
    const bool cut = link_.cut_off() || heard.discarded > 0;
    std::string shown = cut ? printable(reply.substr(0, kShownOfCut)) + " ..." : printable(reply);
    if (reply.empty())
        shown = "No response from the controller.";
    else if (shown.empty())
        shown = kNoData;
    SendOutcome outcome{SendOutcome::Kind::Done, shown, false, {}, {}};
    outcome.row = times.row(printable(command), shown);
    if (reply.empty()) {
        outcome.kind = SendOutcome::Kind::NoReply;
        return outcome;
    }
    const bool refused = reply.starts_with(kXonRefusal);
    outcome.accepted = !refused && !heard.unclear && !cut;
    if (refused) outcome.objection = "The controller refused the command.";
    if (heard.unclear) outcome.status = outcome.objection = kUnclearReply;
    if (cut) outcome.status = outcome.objection = kCutReply;
    if (outcome.accepted) outcome.status = taken_text(times);
    return outcome;
}

} // namespace pelvan
