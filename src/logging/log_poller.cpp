#include "logging/log_poller.h"

#include "logging/row_value.h"
#include "platform/run_time_error.h"
#include "protocols/modbus/crc.h"
#include "protocols/modbus/whole_reply.h"
#include "serial/careful_exchange.h"

namespace pelvan {
namespace {

constexpr float kRefused = -99999;
constexpr char kRefusedText[] = "-99999";

Fit fit_of(const std::string& request, const std::string& reply) {
    if (!can_answer(request, reply)) return Fit::Missing;
    return has_valid_crc(reply) ? Fit::Answers : Fit::Damaged;
}

RowState state_of(const std::string& text) {
    if (is_exception_text(text)) {
        // A reply with a wrong check says "ERROR!" and is no exception of the controller's.
        return RowState::Exception;
    }
    return begins_with_number(text) ? RowState::Answered : RowState::Nothing;
}

} // namespace

void LogPoller::begin_pass() {
    values_ = {0, kValueListEnd, kValueListEnd};
}

LogReading LogPoller::poll(const LogRow& row) {
    std::int16_t function = 0;
    if (row.command == log_command::kRead32) {
        function = int16_from(log_command::kReadHoldingRegisters);
        values_ = {0, 2, kValueListEnd};
    } else {
        function = int16_from(row.command);
        // Any other command can only come from a set file: it is sent with whatever the previous
        // row asked for.
        if (row.command >= log_command::kReadCoils &&
            row.command <= log_command::kReadInputRegisters)
            values_ = {0, 1, kValueListEnd};
    }
    const std::string frame =
        modbus_.ModbusBuildRequest(function, row.address, row.start_register, values_);
    LogReading reading;
    if (is_refusal(frame)) {
        reading.value = kRefusedText;
        modbus_.state().gReplyValues[1] = kRefused;
    } else {
        reading = exchange(frame);
    }
    if (is_exception_text(reading.value)) reading.value = exception_value(reading.value);
    if (row.command == log_command::kRead32) reading.value = join_32_bit(reading.value);
    // The marks are scaled like any value: a refused row with one decimal place shows -9999.9.
    reading.value = scaled_value(reading.value, row.decimals);
    return reading;
}

LogReading LogPoller::exchange(const std::string& frame) {
    CarefulRequest request;
    request.whom = {kModbusChannel, static_cast<unsigned char>(frame[0])};
    request.repeatable = is_read(frame);
    request.watches_stray_bytes = true;
    request.exchange = [&] {
        return link_.transmit(
            kModbusChannel, frame, kModbusTimeoutMs, kModbusQuietChars,
            [&](std::string_view received) { return is_whole_reply(frame, received); });
    };
    request.fit = [&](const std::string& reply) { return fit_of(frame, reply); };
    const CarefulReply heard = exchange_carefully(link_, request);
    // Always this decoder, whatever format the console shows. Its pass over the request leaves the
    // same marks in the reply values as on the console.
    static_cast<void>(modbus_.ModbusDecodeSmartDecimal(1, frame));
    LogReading reading;
    reading.value = modbus_.ModbusDecodeSmartDecimal(0, heard.reply);
    reading.after_strays = heard.after_strays;
    const bool is_whole = begins_with_number(reading.value) || is_exception_text(reading.value);
    const bool is_own = can_answer(frame, heard.reply) && !heard.unclear;
    if (is_own) reading.state = state_of(reading.value);
    // What a late reply says is no value of this row. A damaged one is told in the decoder's words.
    if (is_whole && !is_own) reading.value.clear();
    return reading;
}

} // namespace pelvan
