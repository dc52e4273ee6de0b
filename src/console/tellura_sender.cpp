#include "console/tellura_sender.h"

#include "serial/careful_exchange.h"
#include "text/bytes.h"
#include "text/numbers.h"

namespace pelvan {
namespace {

/// 0, which every use refuses, for a text that is no whole number from 0 to 255.
std::uint8_t small_number(const std::string& text) {
    const double value = is_numeric(text) ? leading_number(text) : 0;
    const bool fits = value >= 0 && value <= 255 && value == static_cast<int>(value);
    return fits ? static_cast<std::uint8_t>(value) : std::uint8_t{0};
}

std::string without_spaces(const std::string& text) {
    std::string out;
    for (const char c : text)
        if (c != ' ') out += c;
    return out;
}

} // namespace

std::optional<TelluraPacket> TelluraSender::build(const TelluraEntry& entry, std::string& refusal) {
    const MessageRouter::Diversion kept(messages_,
                                        [&refusal](const std::string& text) { refusal = text; });
    protocol_.set_check(entry.check);
    std::uint8_t address = small_number(entry.device_address);
    return protocol_.BuildRequest(address, entry.parameter_address, without_spaces(entry.data),
                                  entry.write, small_number(entry.byte_count));
}

SendOutcome TelluraSender::send(const TelluraEntry& entry) {
    return send_and_remark(link_, [&] { return send_once(entry); });
}

SendOutcome TelluraSender::send_once(const TelluraEntry& entry) {
    SendOutcome outcome{SendOutcome::Kind::Refused, "Nothing was sent", false, {}, {}};
    const auto request = build(entry, outcome.refusal);
    if (!request) return outcome;
    ExchangeTimes times(link_.countdowns(), clock_);
    CarefulRequest careful;
    careful.whom = {kTelluraChannel};
    careful.repeatable = !entry.write;
    careful.exchange = [&] {
        std::string reply = protocol_.Exchange(request->packet);
        times.end();
        return reply;
    };
    careful.fit = [](const std::string& reply) {
        return reply == kTelluraBad ? Fit::Missing : Fit::Answers;
    };
    const CarefulReply heard = exchange_carefully(link_, careful);
    const std::string& reply = heard.reply;
    std::string line = TelluraProt::DisplayPacket(reply);
    if (!heard.sent)
        return times.not_sent(link_, TelluraProt::DisplayPacket(request->packet), line);
    judge(reply, entry.write, line, outcome);
    if (heard.unclear) {
        outcome.accepted = false;
        outcome.status = kUnclearReply;
    }
    if (outcome.accepted)
        outcome.status = times.status(request->packet.size(), reply.size());
    else
        outcome.objection = outcome.status;
    outcome.row = times.row(TelluraProt::DisplayPacket(request->packet), line);
    return outcome;
}

/// Judges a reply and puts what it says behind its bytes.
void TelluraSender::judge(const std::string& reply, bool write, std::string& line,
                          SendOutcome& outcome) {
    if (reply == kTelluraBad) {
        outcome.kind = SendOutcome::Kind::NoReply;
        outcome.status = line;
        return;
    }
    outcome.kind = SendOutcome::Kind::Done;
    if (!protocol_.CheckReply(reply)) {
        const bool bcc = protocol_.check() == TelluraCheck::Bcc;
        line += bcc ? "  <--BCC ERROR!" : "  <--CRC ERROR!";
        outcome.status = "The reply came damaged: its check does not fit";
        return;
    }
    const TelluraReply said = protocol_.ReadReply(reply);
    if (said.status != 0) {
        outcome.status = "Refused with status " + hex_text(said.status, 2);
        line += "  " + outcome.status;
        return;
    }
    if (!said.data.empty())
        line += "  Data: " + hex_bytes(said.data);
    else
        line += write ? "  Written" : "  No data";
    outcome.accepted = true;
}

} // namespace pelvan
