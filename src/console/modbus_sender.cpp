#include "console/modbus_sender.h"

#include "protocols/modbus/crc.h"
#include "protocols/modbus/whole_reply.h"

namespace pelvan {
namespace {

constexpr char kEchoOrAnswer[] =
    "The command itself came back: its echo, or the answer on a line that does not echo. "
    "A read tells which.";

} // namespace

void corrupt_last_byte(std::string& frame) {
    if (!frame.empty()) frame.back() = frame.back() == '\xFF' ? '\0' : '\xFF';
}

SendOutcome ModbusSender::send(const ModbusEntry& entry, const ModbusSendOptions& options) {
    return send_and_remark(link_, [&] { return send_once(entry, options); });
}

SendOutcome ModbusSender::send_once(const ModbusEntry& entry, const ModbusSendOptions& options) {
    using enum SendOutcome::Kind;
    std::string frame = build_request(modbus_, entry);
    if (is_refusal(frame)) return {Refused, frame, false, frame, std::nullopt};
    if (options.corrupt_crc) corrupt_last_byte(frame);
    // The request is rendered before the reply overwrites the numbers that decoding leaves behind.
    const std::string command = render(modbus_, options.format, 1, frame);
    ExchangeTimes times(link_.countdowns(), clock_);
    const CarefulReply heard = exchange(frame, times);
    if (!heard.sent) return times.not_sent(link_, command);
    const std::string& reply = heard.reply;
    const std::string response = response_line(modbus_, options.format, entry, reply);
    SendOutcome outcome{Done, response, false, {}, times.row(command, response)};
    if (reply.empty()) {
        // Nobody answers a broadcast, but an echo shows whether it went out.
        const bool went_out = link_.echo() == Echo::None || link_.echo() == Echo::Whole;
        outcome.accepted = is_broadcast(entry) && went_out;
        if (outcome.accepted) return outcome;
        outcome.kind = NoReply;
        if (link_.echo() == Echo::Whole && !link_.surely_echoes() && can_answer(frame, frame))
            outcome.remark = kEchoOrAnswer;
        return outcome;
    }
    outcome.objection = heard.unclear     ? kUnclearReply
                        : link_.cut_off() ? kCutReply
                                          : objection(frame, reply);
    outcome.accepted = outcome.objection.empty();
    if (outcome.accepted)
        outcome.status = times.status(frame.size(), reply.size());
    else if (heard.unclear || link_.cut_off() ||
             (has_valid_crc(reply) && !can_answer(frame, reply)))
        outcome.status = outcome.objection; // the reply itself does not show it
    else if (has_valid_crc(reply))
        outcome.status = "refused: " + exception_text(static_cast<unsigned char>(reply[2]));
    return outcome;
}

CarefulReply ModbusSender::exchange(const std::string& frame, ExchangeTimes& times) {
    CarefulRequest request;
    request.whom = {kModbusChannel, static_cast<unsigned char>(frame[0])};
    request.repeatable = is_read(frame);
    request.watches_stray_bytes = true;
    request.exchange = [&] {
        std::string reply = link_.transmit(
            kModbusChannel, frame, kModbusTimeoutMs, kModbusQuietChars,
            [&](std::string_view received) { return is_whole_reply(frame, received); });
        times.end();
        return reply;
    };
    request.fit = [&](const std::string& reply) {
        const bool is_broadcast = frame[0] == '\0';
        if (can_answer(frame, reply)) return has_valid_crc(reply) ? Fit::Answers : Fit::Damaged;
        return is_broadcast && reply.empty() ? Fit::Answers : Fit::Missing;
    };
    return exchange_carefully(link_, request);
}

} // namespace pelvan
