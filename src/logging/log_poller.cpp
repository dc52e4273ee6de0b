#include "logging/log_poller.h"

#include "logging/row_value.h"
#include "platform/run_time_error.h"

namespace pelvan {
namespace {

constexpr float kRefused = -99999;
constexpr char kRefusedText[] = "-99999";
constexpr unsigned char kExceptionBit = 0x80;

unsigned char byte_at(const std::string& frame, std::size_t at) {
    return static_cast<unsigned char>(frame[at]);
}

/// Whether the reply is the asked controller's to such a request; another one came too late for an
/// earlier request.
bool belongs(const std::string& request, const std::string& reply) {
    return reply.size() > 1 && reply[0] == request[0] &&
           (byte_at(reply, 1) & ~kExceptionBit) == byte_at(request, 1);
}

RowState state_of(const std::string& request, const std::string& reply, const std::string& text) {
    if (!belongs(request, reply)) return RowState::Nothing;
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
    const std::string reply =
        link_.transmit(kModbusChannel, frame, kModbusTimeoutMs, kModbusQuietChars);
    // Always this decoder, whatever format the console shows. Its pass over the request leaves the
    // same marks in the reply values as on the console.
    static_cast<void>(modbus_.ModbusDecodeSmartDecimal(1, frame));
    LogReading reading;
    reading.value = modbus_.ModbusDecodeSmartDecimal(0, reply);
    reading.state = state_of(frame, reply, reading.value);
    const bool is_whole = begins_with_number(reading.value) || is_exception_text(reading.value);
    // What a late reply says is no value of this row. A damaged one is told in the decoder's words.
    if (is_whole && !belongs(frame, reply)) reading.value.clear();
    // The answer may still come, and must not be taken for that to the next request.
    if (reading.state == RowState::Nothing) link_.let_fall_silent();
    return reading;
}

} // namespace pelvan
