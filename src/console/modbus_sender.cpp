#include "console/modbus_sender.h"

namespace pelvan {

void corrupt_last_byte(std::string& frame) {
    if (!frame.empty()) frame.back() = frame.back() == '\xFF' ? '\0' : '\xFF';
}

SendOutcome ModbusSender::send(const ModbusEntry& entry, const ModbusSendOptions& options) {
    using enum SendOutcome::Kind;
    std::string frame = build_request(modbus_, entry);
    if (is_refusal(frame)) return {Refused, frame, false, frame, std::nullopt};
    if (options.corrupt_crc) corrupt_last_byte(frame);
    // The request is rendered before the reply overwrites the numbers that decoding leaves behind.
    const std::string command = render(modbus_, options.format, 1, frame);
    ExchangeTimes times(link_.countdowns(), clock_);
    const std::string reply =
        link_.transmit(kModbusChannel, frame, kModbusTimeoutMs, kModbusQuietChars);
    times.end();
    const std::string response = response_line(modbus_, options.format, entry, reply);
    SendOutcome outcome{Done, response, false, {}, times.row(command, response)};
    if (reply.empty()) {
        outcome.accepted = is_broadcast(entry);
        if (!outcome.accepted) outcome.kind = NoReply;
    } else if (is_valid_answer(frame, reply)) {
        outcome.accepted = true;
        outcome.status = times.status(frame.size(), reply.size());
    }
    return outcome;
}

} // namespace pelvan
