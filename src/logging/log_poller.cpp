#include "logging/log_poller.h"

#include "logging/row_value.h"
#include "platform/run_time_error.h"
#include "protocols/modbus/crc.h"
#include "protocols/modbus/whole_reply.h"

namespace pelvan {
namespace {

constexpr float kRefused = -99999;
constexpr char kRefusedText[] = "-99999";
/// A port over the network takes its time to say no. One of this machine says it at once, and may
/// be there for the next row.
constexpr double kSlowRefusalMs = 100;
constexpr std::size_t kCrcAt = 6; // in a read
constexpr int kSilentToSibling = 2;

Fit fit_of(const std::string& request, const std::string& reply) {
    if (!can_answer(request, reply)) return Fit::Missing;
    return has_valid_crc(reply) ? Fit::Answers : Fit::Damaged;
}

/// The request's own answer; nothing for any other reply.
std::string answer_in(const std::string& request, const CarefulReply& heard) {
    const bool counts = !heard.unclear && fit_of(request, heard.reply) == Fit::Answers;
    return counts ? heard.reply : std::string();
}

/// The same read by the sibling of its function: of inputs instead of outputs, or the other way
/// round. Neither its data nor its refusal can be taken for an answer to the read itself.
std::string by_sibling(const std::string& request) {
    std::string other = request.substr(0, kCrcAt);
    other[1] = static_cast<char>(other[1] % 2 == 0 ? other[1] - 1 : other[1] + 1);
    const unsigned crc = modbus_crc(other);
    return other + static_cast<char>(crc & 0xFFU) + static_cast<char>(crc >> 8U);
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
    ahead_.begin();
    gave_up_ = false;
}

LogReading LogPoller::poll(const LogRow& row, int neighbours) {
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
        reading = read(frame, neighbours);
    }
    if (is_exception_text(reading.value)) reading.value = exception_value(reading.value);
    if (row.command == log_command::kRead32) reading.value = join_32_bit(reading.value);
    // The marks are scaled like any value: a refused row with one decimal place shows -9999.9.
    reading.value = scaled_value(reading.value, row.decimals);
    return reading;
}

std::string LogPoller::transmit(const std::string& frame, float more_ms) {
    return link_.transmit(
        kModbusChannel, frame, kModbusTimeoutMs + more_ms, kModbusQuietChars,
        [&](std::string_view received) { return is_whole_reply(frame, received); });
}

/// A controller that is silent to the sibling twice, and answers nothing else meanwhile that was
/// not asked for, does not know it; whether it is slow shows by then.
bool LogPoller::in_step(const std::string& frame) {
    int& silences = silences_[frame[0]];
    if (silences == kSilentToSibling) return true;
    const std::string other = by_sibling(frame);
    const std::string reply = transmit(other, 0);
    const bool silent = reply.empty() && link_.let_fall_silent().discarded == 0;
    silences = silent ? silences + 1 : 0;
    return silent ? silences == kSilentToSibling : fit_of(other, reply) == Fit::Answers;
}

CarefulReply LogPoller::exchange(const std::string& frame, float more_ms) {
    CarefulRequest request;
    request.whom = {kModbusChannel, static_cast<unsigned char>(frame[0])};
    request.repeatable = is_read(frame);
    request.watches_stray_bytes = true;
    // Late answers of whoever is doubtful are dealt with.
    LateAnswers& late = link_.channels().late_answers();
    const bool expects = late.doubtful(request.whom, link_.countdowns().read_tick());
    bool beside = false;
    request.exchange = [&] {
        std::string reply = transmit(frame, more_ms);
        beside = beside || (!expects && bytes_beside_answer(frame, reply) >= kShortestReply);
        if (link_.stray_bytes() > 0) silences_.erase(frame[0]);
        return reply;
    };
    if (request.repeatable) request.in_step = [&] { return in_step(frame); };
    request.fit = [&](const std::string& reply) {
        const Fit fit = fit_of(frame, reply);
        if (fit == Fit::Missing && !reply.empty()) silences_.erase(frame[0]);
        return fit;
    };
    CarefulReply heard = try_port(request);
    heard.after_strays = heard.after_strays || beside;
    return heard;
}

CarefulReply LogPoller::try_port(const CarefulRequest& request) {
    CarefulReply heard;
    heard.sent = false;
    if (gave_up_) return heard;
    const double begun_ms = link_.tick().precise_ms();
    heard = exchange_carefully(link_, request);
    gave_up_ = !heard.sent && link_.tick().precise_ms() - begun_ms >= kSlowRefusalMs;
    return heard;
}

CarefulReply LogPoller::exchange_with_neighbours(const std::string& frame, int neighbours) {
    bool strays = false;
    CarefulReply heard;
    ahead_.fetch(frame, neighbours, [&](const std::string& all, float more_ms) {
        heard = exchange(all, more_ms);
        strays = strays || heard.after_strays;
        return answer_in(all, heard);
    });
    if (!heard.sent) return heard; // the port's errors are told once a row
    if (auto held = ahead_.take(frame)) {
        heard.reply = std::move(*held);
    } else {
        heard = exchange(frame);
        const bool other = is_read(frame) && answer_in(frame, heard).empty();
        if (other && ahead_.came_late(heard.reply.size() + heard.discarded))
            heard = exchange(frame);
        ahead_.sent(frame, answer_in(frame, heard));
    }
    heard.after_strays = heard.after_strays || strays;
    return heard;
}

LogReading LogPoller::read(const std::string& frame, int neighbours) {
    const CarefulReply heard =
        neighbours > 0 ? exchange_with_neighbours(frame, neighbours) : exchange(frame);
    // Always this decoder, whatever format the console shows. Its pass over the request leaves the
    // same marks in the reply values as on the console.
    static_cast<void>(modbus_.ModbusDecodeSmartDecimal(1, frame));
    LogReading reading;
    reading.value = modbus_.ModbusDecodeSmartDecimal(0, heard.reply);
    reading.after_strays = heard.after_strays || heard.unclear;
    const bool is_whole = begins_with_number(reading.value) || is_exception_text(reading.value);
    const bool is_own = can_answer(frame, heard.reply) && !heard.unclear;
    if (is_own) reading.state = state_of(reading.value);
    // What a late reply says is no value of this row. A damaged one is told in the decoder's words.
    reading.of_another = is_whole && !is_own;
    if (reading.of_another) reading.value.clear();
    return reading;
}

} // namespace pelvan
